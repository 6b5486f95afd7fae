// What charset XML and HTML texts declare.

#include <gtest/gtest.h>

#include "kit/judge/declared_charset.h"

namespace ksv_cli_tests {
namespace {

using ksv_kit::judge::declaredInMarkup;

TEST(TextDeclaration, is_that_of_an_XML_declaration_in_front) {
  EXPECT_EQ(declaredInMarkup("<?xml version='1.0' encoding='EUC-JP'?>"), "euc-jp");
  EXPECT_EQ(declaredInMarkup("<?xml version=\"1.0\"\n encoding = \"Shift_JIS\" ?>"), "shift_jis");
  EXPECT_EQ(declaredInMarkup("<?xml version='1.0'?><a encoding='EUC-JP'/>"), std::nullopt);
  EXPECT_EQ(declaredInMarkup(" <?xml version='1.0' encoding='EUC-JP'?>"), std::nullopt);
  EXPECT_EQ(declaredInMarkup("<?xml version='1.0' encoding=EUC-JP?>"), std::nullopt);
  EXPECT_EQ(declaredInMarkup("<?xml version='1.0' encoding='EUC-JP"), std::nullopt);
}

TEST(TextDeclaration, is_that_of_a_meta_element) {
  EXPECT_EQ(declaredInMarkup("<html><META CHARSET=euc-jp>"), "euc-jp");
  EXPECT_EQ(declaredInMarkup("<meta charset=\"koi8-r\"/>"), "koi8-r");
  EXPECT_EQ(declaredInMarkup("<meta http-equiv='Content-Type' content='text/html; charset=gbk'>"),
            "gbk");
  EXPECT_EQ(declaredInMarkup("<meta name='a' content='b'><meta charset='big5'>"), "big5");
}

TEST(TextDeclaration, is_not_what_merely_looks_like_one) {
  EXPECT_EQ(declaredInMarkup("charset=euc-jp"), std::nullopt);
  EXPECT_EQ(declaredInMarkup("<!-- <meta charset='gbk'> --><p>charset=gbk</p>"), std::nullopt);
  EXPECT_EQ(declaredInMarkup("<!-- <meta charset='gbk'>"), std::nullopt);
  EXPECT_EQ(declaredInMarkup("<metadata charset='gbk'>"), std::nullopt);
  EXPECT_EQ(declaredInMarkup("<meta charset='gbk"), std::nullopt);
  EXPECT_EQ(declaredInMarkup("<meta charset=>"), std::nullopt);
  EXPECT_EQ(declaredInMarkup(""), std::nullopt);
}

}  // namespace
}  // namespace ksv_cli_tests
