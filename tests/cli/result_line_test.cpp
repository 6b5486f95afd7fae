// What records and lines are made of: base64, escapes, and the values of properties.

#include "cli/jobs/result_line.h"

#include <gtest/gtest.h>

#include "cli/system/base64.h"
#include "cli/system/escapes.h"

namespace ksv_cli_tests {
namespace {

using ksv_cli::Backslash;
using ksv_cli::base64;
using ksv_cli::escaped;

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

}  // namespace
}  // namespace ksv_cli_tests
