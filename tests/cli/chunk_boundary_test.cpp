#include "kit/text/chunk_boundary.h"

#include <gtest/gtest.h>

#include <string>

#include "command.h"

namespace ksv_cli_tests {
namespace {

using ksv_kit::safeCut;
using ksv_kit::UnicodeForm;

size_t cutUtf8(const std::string& text) {
  return safeCut(UnicodeForm::kUtf8, false, reinterpret_cast<const uint8_t*>(text.data()),
                 text.size());
}

std::string utf16(const std::u16string& text, bool bigEndian) {
  std::string result;
  for (const char16_t unit : text)
    result += bigEndian ? bytes({unit >> 8, unit & 0xFF}) : bytes({unit & 0xFF, unit >> 8});
  return result;
}

size_t cutUtf16(const std::u16string& text, bool bigEndian = false) {
  const std::string encoded = utf16(text, bigEndian);
  return safeCut(UnicodeForm::kUtf16, bigEndian, reinterpret_cast<const uint8_t*>(encoded.data()),
                 encoded.size());
}

TEST(SafeCut, keeps_the_last_character_back_for_a_mark_that_may_follow) {
  EXPECT_EQ(cutUtf8("abか"), 2u);
  EXPECT_EQ(cutUtf8("ab😀"), 2u);
  EXPECT_EQ(cutUtf8("か"), 0u);
  EXPECT_EQ(cutUtf16(u"abか"), 4u);
  EXPECT_EQ(cutUtf16(u"ab😀"), 4u);
  EXPECT_EQ(cutUtf16(u"ab😀", true), 4u);
}

TEST(SafeCut, cuts_behind_a_mark_that_is_no_base) {
  EXPECT_EQ(cutUtf8("か\u309A"), 6u);
  EXPECT_EQ(cutUtf8("\u0300\u0301"), 4u);
  EXPECT_EQ(cutUtf16(u"æ\u0300"), 4u);
}

TEST(SafeCut, pairs_tone_letters_from_the_beginning_of_their_run) {
  EXPECT_EQ(cutUtf8("\u02E9"), 0u);
  EXPECT_EQ(cutUtf8("\u02E9\u02E5"), 4u);
  EXPECT_EQ(cutUtf8("\u02E9\u02E5\u02E9"), 4u);
  EXPECT_EQ(cutUtf8("x\u02E9\u02E5\u02E9\u02E5"), 9u);
  EXPECT_EQ(cutUtf8("\u02E9\u02E9\u02E5"), 6u);
  EXPECT_EQ(cutUtf8("\u02E9\u02E9"), 2u);
  EXPECT_EQ(cutUtf16(u"か\u02E5\u02E9\u02E5"), 6u);
}

TEST(SafeCut, leaves_the_forms_that_combine_nothing_whole) {
  const uint8_t text[8] = {};
  EXPECT_EQ(safeCut(UnicodeForm::kUcs2, false, text, 8), 8u);
  EXPECT_EQ(safeCut(UnicodeForm::kUcs4, true, text, 8), 8u);
  EXPECT_EQ(safeCut(UnicodeForm::kNone, true, text, 8), 8u);
  EXPECT_EQ(safeCut(UnicodeForm::kUtf8, true, text, 0), 0u);
}

}  // namespace
}  // namespace ksv_cli_tests
