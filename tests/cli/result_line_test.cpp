// What records and lines are made of: base64, escapes, and the values of properties.

#include "cli/jobs/result_line.h"

#include <gtest/gtest.h>

#include "cli/jobs/summary_values.h"
#include "cli/system/base64.h"
#include "cli/system/escapes.h"

namespace ksv_cli_tests {
namespace {

using ksv_cli::Backslash;
using ksv_cli::base64;
using ksv_cli::escaped;
using ksv_cli::rfc3339;
using ksv_cli::valueOf;
using ksv_cli::ValueType;

TEST(Base64, pads_what_is_no_multiple_of_three) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foob"), "Zm9vYg==");
  EXPECT_EQ(base64("\xFF\xFE\xFD\xFB\xF0"), "//79+/A=");
}

TEST(Escapes, stand_for_control_characters_only) {
  EXPECT_EQ(escaped(std::string("a\0b", 3), Backslash::kStays), "a\\x00b");
  EXPECT_EQ(escaped("\t\n\r\x1B\x1F\x7F ~", Backslash::kStays), "\\t\\n\\r\\x1B\\x1F\\x7F ~");
  EXPECT_EQ(escaped("\xC2\x80\xC2\x9F\xC2\xA0\xC2", Backslash::kStays),
            "\\u0080\\u009F\xC2\xA0\xC2");
  EXPECT_EQ(escaped("\x93\xFA", Backslash::kStays), "\x93\xFA");
  EXPECT_EQ(escaped("a\\b", Backslash::kStays), "a\\b");
  EXPECT_EQ(escaped("a\\b", Backslash::kIsDoubled), "a\\\\b");
}

TEST(SummaryValues, are_times_of_the_calendar_in_utc) {
  EXPECT_EQ(rfc3339("2024-02-29 12:34:56"), "2024-02-29T12:34:56Z");
  EXPECT_EQ(rfc3339("1900-03-01 00:00:00"), "1900-03-01T00:00:00Z");
  EXPECT_EQ(rfc3339("9999-12-31 23:59:59"), "9999-12-31T23:59:59Z");
}

// An hour that is rounded up to 24 becomes 0 of a day that the month need not have.
TEST(SummaryValues, carry_a_day_beyond_its_month) {
  EXPECT_EQ(rfc3339("2024-03-32 00:00:00"), "2024-04-01T00:00:00Z");
  EXPECT_EQ(rfc3339("2023-02-29 00:00:00"), "2023-03-01T00:00:00Z");
  EXPECT_EQ(rfc3339("2023-12-32 00:00:00"), "2024-01-01T00:00:00Z");
  EXPECT_EQ(rfc3339("9999-12-32 00:00:00"), "");
}

TEST(SummaryValues, stay_texts_where_they_are_nothing_else) {
  for (const char* time : {"1900-02-29 00:00:00", "1900-01-01 00:00:00", "12345-01-01 00:00:00",
                           "2024-13-01 00:00:00", "2024-01-01", "2024-01-01 00:00:00 ", "soon", ""})
    EXPECT_EQ(valueOf(time, ValueType::kTime), time);
  EXPECT_EQ(valueOf("33", ValueType::kNumber), 33);
  EXPECT_EQ(valueOf("-5", ValueType::kNumber), -5);
  for (const char* number : {"", "3x", "99999999999999999999", " 3"})
    EXPECT_EQ(valueOf(number, ValueType::kNumber), number);
  EXPECT_EQ(valueOf("7", ValueType::kText), "7");
}

}  // namespace
}  // namespace ksv_cli_tests
