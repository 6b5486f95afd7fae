// Encoded words, and what else stands in a field.

#include "cli/mail/header_words.h"

#include <gtest/gtest.h>

#include <string>

namespace ksv_cli {
namespace {

// "[bytes]" of what is not encoded, "charset[bytes]" of words.
std::string runsOf(const std::string& field) {
  std::string shown;
  for (const HeaderRun& run : headerRuns(field))
    shown += run.charset.value_or("") + "[" + run.bytes + "]";
  return shown;
}

TEST(HeaderWords, reads_both_encodings_in_any_case) {
  EXPECT_EQ(runsOf("=?ISO-8859-1?Q?a_b=E9?="), "iso-8859-1[a b\xE9]");
  EXPECT_EQ(runsOf("=?utf-8?b?44GC?="), "utf-8[\xE3\x81\x82]");
}

// Those that RFC 2047 ends with.
TEST(HeaderWords, shows_words_and_blanks_as_the_standard_does) {
  EXPECT_EQ(runsOf("(=?ISO-8859-1?Q?a?=)"), "[(]iso-8859-1[a][)]");
  EXPECT_EQ(runsOf("(=?ISO-8859-1?Q?a?= b)"), "[(]iso-8859-1[a][ b)]");
  EXPECT_EQ(runsOf("(=?ISO-8859-1?Q?a?= =?ISO-8859-1?Q?b?=)"), "[(]iso-8859-1[ab][)]");
  EXPECT_EQ(runsOf("(=?ISO-8859-1?Q?a?=  =?ISO-8859-1?Q?b?=)"), "[(]iso-8859-1[ab][)]");
  EXPECT_EQ(runsOf("(=?ISO-8859-1?Q?a_b?=)"), "[(]iso-8859-1[a b][)]");
  EXPECT_EQ(runsOf("(=?ISO-8859-1?Q?a?= =?ISO-8859-2?Q?_b?=)"),
            "[(]iso-8859-1[a]iso-8859-2[ b][)]");
  EXPECT_EQ(runsOf("=?US-ASCII?Q?Keith_Moore?= <moore@cs.utk.edu>"),
            "us-ascii[Keith Moore][ <moore@cs.utk.edu>]");
  EXPECT_EQ(runsOf("=?ISO-8859-1?B?SWYgeW91IGNhbiByZWFkIHRoaXMgeW8=?= "
                   "=?ISO-8859-2?B?dSB1bmRlcnN0YW5kIHRoZSBleGFtcGxlLg==?="),
            "iso-8859-1[If you can read this yo]iso-8859-2[u understand the example.]");
}

TEST(HeaderWords, joins_a_character_that_is_cut_apart_between_words) {
  EXPECT_EQ(runsOf("=?utf-8?B?44E=?= =?UTF-8?Q?=82?="), "utf-8[\xE3\x81\x82]");
}

TEST(HeaderWords, leaves_out_the_language) {
  EXPECT_EQ(runsOf("=?US-ASCII*EN?Q?Keith?="), "us-ascii[Keith]");
}

TEST(HeaderWords, takes_any_padding) {
  EXPECT_EQ(base64Decoded("YQ"), "a");
  EXPECT_EQ(base64Decoded("YQ=="), "a");
  EXPECT_EQ(base64Decoded("YQ="), "a");
  EXPECT_EQ(base64Decoded("YQ==YWI="), "aab");
  EXPECT_EQ(base64Decoded("Y\nQ !"), "a");
  EXPECT_EQ(base64Decoded("Y"), "");
}

TEST(HeaderWords, keeps_a_sign_without_digits) {
  EXPECT_EQ(hexDecoded("a=4", '='), "a=4");
  EXPECT_EQ(hexDecoded("=4=41=zz", '='), "=4A=zz");
  EXPECT_EQ(hexDecoded("%E3%81%82", '%'), "\xE3\x81\x82");
}

TEST(HeaderWords, leaves_what_is_no_word) {
  for (const char* field :
       {"=?utf-8?B?44GC", "=?utf-8?X?a?=", "=??Q?a?=", "=?utf-8", "=?", "a =? b", "=?utf 8?Q?a?="})
    EXPECT_EQ(runsOf(field), "[" + std::string(field) + "]");
}

TEST(HeaderWords, takes_blanks_in_a_word_and_words_beside_letters) {
  EXPECT_EQ(runsOf("=?utf-8?Q?a b?="), "utf-8[a b]");
  EXPECT_EQ(runsOf("x=?utf-8?Q?a?=y"), "[x]utf-8[a][y]");
}

TEST(HeaderWords, reads_a_field_of_unended_words_in_one_go) {
  std::string field;
  for (int i = 0; i < 300'000; ++i) field += "=?a?q?x";
  EXPECT_EQ(headerRuns(field).size(), 1u);
}

TEST(HeaderWords, unfolds) {
  EXPECT_EQ(unfolded(" a\r\n b\n\tc \r\n"), "a b\tc");
  EXPECT_EQ(unfolded(" \r\n"), "");
}

}  // namespace
}  // namespace ksv_cli
