// Encodings with shifts, by what the library exports.
#include <gtest/gtest.h>

#include <string>

#include "kit.h"

namespace ksv_kit_tests {
namespace {

TEST(Shifts, are_read_and_written) {
  EXPECT_EQ(convert("IBM930", "UTF-8", "\xC1\x0E\x44\x81\x0F\xC2"), text("A\xE3\x81\x82"
                                                                         "B"));
  EXPECT_EQ(convert("UTF-8", "cp930",
                    "A\xE3\x81\x82"
                    "B"),
            text("\xC1\x0E\x44\x81\x0F\xC2"));
  EXPECT_EQ(convert("ISO-2022-KR", "UTF-8",
                    "\x1B$)Ca\x0E\x30\x21\x0F"
                    "b"),
            text("a\xEA\xB0\x80"
                 "b"));
  EXPECT_EQ(convert("UTF-8", "ISO-2022-KR",
                    "a\xEA\xB0\x80"
                    "b"),
            text("\x1B$)Ca\x0E\x30\x21\x0F"
                 "b"));
  EXPECT_EQ(convert("UTF-8", "ISO-2022-CN", "a\xE4\xB8\xAD"), text("a\x1B$)A\x0EVP\x0F"));
  EXPECT_EQ(convert("ISO-2022-CN", "SJIS", "a\x1B$)A\x0EVP\x0F"), text("a\x92\x86"));
}

TEST(Shifts, leave_places_of_problems_what_they_are) {
  const Converted lacking = convert("IBM930", "ISO-8859-1", "\xC1\x25\xC1\x0E\x44\x81\x0F\xC2");
  EXPECT_EQ(lacking.result, KSV_UNMAPPABLE);
  EXPECT_EQ(lacking.offset, 4u);
  EXPECT_EQ(lacking.line, 2u);
  EXPECT_EQ(lacking.column, 2u);
  ksv_options options = KSV_OPTIONS_INIT;
  options.unmappable = KSV_HEX_REFERENCE;
  EXPECT_EQ(convert("UTF-8", "IBM930", "\xE3\x81\x82\xF0\x9F\x98\x80", &options).result, KSV_OK);
}

// Characters that are shifts in the target are lacking in it.
TEST(Shifts, are_no_characters_that_can_be_written) {
  for (const char* const input : {"a\x0E", "a\x0F"}) {
    const Converted failed = convert("UTF-8", "IBM930", input);
    EXPECT_EQ(failed.result, KSV_UNMAPPABLE) << failed.message;
    EXPECT_EQ(failed.offset, 1u);
    EXPECT_EQ(convert("SJIS", "ISO-2022-KR", input).result, KSV_UNMAPPABLE);
  }
  EXPECT_EQ(convert("UTF-8", "ISO-2022-CN", "a\x1B").result, KSV_UNMAPPABLE);
}

// Many refusals in one call, and a character behind them that the target lacks.
TEST(Shifts, know_the_place_of_a_problem_behind_much_that_was_refused) {
  const std::string input("\xC1\x0E\x00\x06\x04\x00\x0E\x44\x75\x74\x66\x2D\x38", 13);
  ksv_options options = KSV_OPTIONS_INIT;
  options.invalid = KSV_DECIMAL_REFERENCE;
  for (size_t length = 11; length <= input.size(); ++length) {
    const Converted failed = convert("IBM930", "CP932", input.substr(0, length), &options);
    EXPECT_EQ(failed.result, KSV_UNMAPPABLE);
    EXPECT_EQ(failed.offset, 9u) << length;
  }
}

TEST(Shifts, give_the_same_at_every_cut) {
  const char* const rows[][2] = {{"IBM930", "\xC1\x0E\x44\x81\x44\x82\x0F\xC2\x0E\x44"},
                                 {"ISO-2022-KR",
                                  "\x1B$)Ca\x0E\x30\x21\xFF\x0F"
                                  "b\x0E\x30"},
                                 {"ISO-2022-CN", "a\x1B$)A\x0EVP\x0F\x1B$*H\x1BN!!\nz\x0E"}};
  for (const auto& row : rows) {
    for (const int32_t policy : {KSV_FAIL, KSV_SKIP, KSV_ESCAPE}) {
      ksv_options options = KSV_OPTIONS_INIT;
      options.invalid = options.unmappable = policy;
      const Converted whole = convert(row[0], "UTF-8", row[1], &options);
      const Plan made = plan(row[0], "UTF-8", &options);
      const Converter stream = converter(made);
      for (const size_t piece : {1, 2, 3, 5}) {
        ksv_converter_reset(stream.get());
        EXPECT_EQ(withoutText(feed(stream.get(), row[1], piece, 3)), whole)
            << row[0] << ' ' << policy << ' ' << piece;
      }
    }
  }
}

}  // namespace
}  // namespace ksv_kit_tests
