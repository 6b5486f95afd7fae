#include "charset_names.h"

#include <gtest/gtest.h>

namespace ksv_cli_tests {
namespace {

using ksv_cli::ByteOrder;
using ksv_cli::CharsetNames;
using ksv_cli::UnicodeForm;

const std::vector<std::string> kDirectory = {"utf-8",           "utf-16",    "iso-10646-ucs-2",
                                             "iso-10646-ucs-4", "shift_jis", "windows31j",
                                             "shift_jis-2004",  "example"};

std::string resolved(const std::string& name) {
  const auto choice = CharsetNames(kDirectory).find(name);
  if (!choice) return "unknown";
  return choice->display + (choice->order == ByteOrder::kLittle ? " little"
                            : choice->order == ByteOrder::kBig  ? " big"
                                                                : "");
}

TEST(CharsetNames, finds_names_and_aliases_without_regard_to_case) {
  EXPECT_EQ(resolved("Shift_JIS"), "Shift_JIS");
  EXPECT_EQ(resolved("SHIFT_jis"), "Shift_JIS");
  EXPECT_EQ(resolved("sjis"), "Shift_JIS");
  EXPECT_EQ(resolved("x-SJIS"), "Shift_JIS");
  EXPECT_EQ(resolved("MS_Kanji"), "Shift_JIS");
  EXPECT_EQ(resolved("CP932"), "WINDOWS31J");
  EXPECT_EQ(resolved("Windows-31J"), "WINDOWS31J");
  EXPECT_EQ(resolved("ms932"), "WINDOWS31J");
  EXPECT_EQ(resolved("Shift_JISX0213"), "Shift_JIS-2004");
  EXPECT_EQ(resolved("unicode-1-1-utf-8"), "UTF-8");
  EXPECT_EQ(resolved("utf8"), "UTF-8");
  EXPECT_EQ(resolved("EXAMPLE"), "example");
}

TEST(CharsetNames, gives_the_byte_order_that_an_alias_fixes) {
  EXPECT_EQ(resolved("UTF-16"), "UTF-16");
  EXPECT_EQ(resolved("UTF-16LE"), "UTF-16 little");
  EXPECT_EQ(resolved("utf-16be"), "UTF-16 big");
  EXPECT_EQ(resolved("UTF-32"), "ISO-10646-UCS-4");
  EXPECT_EQ(resolved("utf-32BE"), "ISO-10646-UCS-4 big");
  EXPECT_EQ(resolved("UCS-2"), "ISO-10646-UCS-2");
  EXPECT_EQ(resolved("ucs-2le"), "ISO-10646-UCS-2 little");
}

TEST(CharsetNames, knows_only_what_the_directory_holds) {
  EXPECT_EQ(resolved("utf-7"), "unknown");
  EXPECT_EQ(resolved(""), "unknown");
  EXPECT_EQ(resolved(std::string(1000, 'x')), "unknown");
  EXPECT_FALSE(CharsetNames({"utf-8"}).find("sjis").has_value());
}

TEST(CharsetNames, prefers_a_name_of_the_directory_to_an_alias) {
  const CharsetNames names({"shift_jis", "sjis"});
  EXPECT_EQ(names.find("SJIS")->name, "sjis");
  EXPECT_EQ(names.find("x-sjis")->name, "shift_jis");
  const std::vector<ksv_cli::CharsetListing> listings = names.list();
  for (const std::string& alias : listings.at(0).aliases) EXPECT_NE(alias, "sjis");
}

TEST(CharsetNames, knows_the_form_of_the_unicode_charsets) {
  const CharsetNames names(kDirectory);
  EXPECT_EQ(names.find("utf8")->form, UnicodeForm::kUtf8);
  EXPECT_EQ(names.find("UTF-16BE")->form, UnicodeForm::kUtf16);
  EXPECT_EQ(names.find("ucs2")->form, UnicodeForm::kUcs2);
  EXPECT_EQ(names.find("utf32")->form, UnicodeForm::kUcs4);
  EXPECT_EQ(names.find("sjis")->form, UnicodeForm::kNone);
  EXPECT_FALSE(names.find("utf8")->hasByteOrder());
  EXPECT_TRUE(names.find("utf32")->hasByteOrder());
}

}  // namespace
}  // namespace ksv_cli_tests
