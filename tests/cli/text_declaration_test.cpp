// What charset XML and HTML texts declare.

#include "cli/text/text_declaration.h"

#include <gtest/gtest.h>

namespace ksv_cli_tests {
namespace {

using ksv_cli::declaredCharset;

TEST(TextDeclaration, is_that_of_an_XML_declaration_in_front) {
  EXPECT_EQ(declaredCharset("<?xml version='1.0' encoding='EUC-JP'?>"), "euc-jp");
  EXPECT_EQ(declaredCharset("<?xml version=\"1.0\"\n encoding = \"Shift_JIS\" ?>"), "shift_jis");
  EXPECT_EQ(declaredCharset("<?xml version='1.0'?><a encoding='EUC-JP'/>"), std::nullopt);
  EXPECT_EQ(declaredCharset(" <?xml version='1.0' encoding='EUC-JP'?>"), std::nullopt);
  EXPECT_EQ(declaredCharset("<?xml version='1.0' encoding=EUC-JP?>"), std::nullopt);
  EXPECT_EQ(declaredCharset("<?xml version='1.0' encoding='EUC-JP"), std::nullopt);
}

TEST(TextDeclaration, is_that_of_a_meta_element) {
  EXPECT_EQ(declaredCharset("<html><META CHARSET=euc-jp>"), "euc-jp");
  EXPECT_EQ(declaredCharset("<meta charset=\"koi8-r\"/>"), "koi8-r");
  EXPECT_EQ(declaredCharset("<meta http-equiv='Content-Type' content='text/html; charset=gbk'>"),
            "gbk");
  EXPECT_EQ(declaredCharset("<meta name='a' content='b'><meta charset='big5'>"), "big5");
}

TEST(TextDeclaration, is_not_what_merely_looks_like_one) {
  EXPECT_EQ(declaredCharset("charset=euc-jp"), std::nullopt);
  EXPECT_EQ(declaredCharset("<!-- <meta charset='gbk'> --><p>charset=gbk</p>"), std::nullopt);
  EXPECT_EQ(declaredCharset("<!-- <meta charset='gbk'>"), std::nullopt);
  EXPECT_EQ(declaredCharset("<metadata charset='gbk'>"), std::nullopt);
  EXPECT_EQ(declaredCharset("<meta charset='gbk"), std::nullopt);
  EXPECT_EQ(declaredCharset("<meta charset=>"), std::nullopt);
  EXPECT_EQ(declaredCharset(""), std::nullopt);
}

}  // namespace
}  // namespace ksv_cli_tests
