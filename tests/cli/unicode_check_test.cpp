#include "kit/text/unicode_check.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "command.h"

namespace ksv_cli_tests {
namespace {

using ksv_kit::byteOrderMark;
using ksv_kit::ScanEnd;
using ksv_kit::ScanResult;
using ksv_kit::scanUnicode;
using ksv_kit::UnicodeForm;

ScanResult scan(UnicodeForm form, const std::string& text, bool bigEndian = false) {
  return scanUnicode(form, bigEndian, reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

std::string described(const ScanResult& result) {
  const char* end = result.end == ScanEnd::kAll          ? "all"
                    : result.end == ScanEnd::kIncomplete ? "incomplete"
                                                         : "invalid";
  return std::to_string(result.wellFormed) + " " + end + " " + std::to_string(result.badLength);
}

std::string utf8(std::initializer_list<int> values) {
  return described(scan(UnicodeForm::kUtf8, bytes(values)));
}

std::string utf16(std::initializer_list<int> values, bool bigEndian = true) {
  return described(scan(UnicodeForm::kUtf16, bytes(values), bigEndian));
}

std::string appended(uint32_t scalar) {
  std::string text;
  if (scalar < 0x80) return bytes({static_cast<int>(scalar)});
  if (scalar < 0x800)
    return bytes({static_cast<int>(0xC0 | scalar >> 6), static_cast<int>(0x80 | (scalar & 63))});
  if (scalar < 0x10000)
    return bytes({static_cast<int>(0xE0 | scalar >> 12),
                  static_cast<int>(0x80 | (scalar >> 6 & 63)),
                  static_cast<int>(0x80 | (scalar & 63))});
  return bytes({static_cast<int>(0xF0 | scalar >> 18), static_cast<int>(0x80 | (scalar >> 12 & 63)),
                static_cast<int>(0x80 | (scalar >> 6 & 63)),
                static_cast<int>(0x80 | (scalar & 63))});
}

TEST(Utf8Check, takes_every_scalar_value_and_no_surrogate) {
  for (uint32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
    const ScanResult result = scan(UnicodeForm::kUtf8, appended(scalar));
    const bool isSurrogate = scalar >= 0xD800 && scalar <= 0xDFFF;
    ASSERT_EQ(result.end == ScanEnd::kAll, !isSurrogate) << std::hex << scalar;
  }
}

TEST(Utf8Check, refuses_overlong_forms_at_their_first_byte) {
  EXPECT_EQ(utf8({'a', 0xC0, 0x80}), "1 invalid 1");
  EXPECT_EQ(utf8({'a', 0xC1, 0xBF}), "1 invalid 1");
  EXPECT_EQ(utf8({'a', 0xE0, 0x9F, 0xBF}), "1 invalid 1");
  EXPECT_EQ(utf8({'a', 0xF0, 0x8F, 0xBF, 0xBF}), "1 invalid 1");
}

TEST(Utf8Check, refuses_what_lies_above_10FFFF) {
  EXPECT_EQ(utf8({0xF4, 0x90, 0x80, 0x80}), "0 invalid 1");
  EXPECT_EQ(utf8({0xF5, 0x80, 0x80, 0x80}), "0 invalid 1");
  EXPECT_EQ(utf8({0xFE}), "0 invalid 1");
  EXPECT_EQ(utf8({0xFF}), "0 invalid 1");
}

TEST(Utf8Check, takes_the_longest_beginning_of_a_character_as_one_bad_piece) {
  EXPECT_EQ(utf8({0xE3, 0x81, 'x'}), "0 invalid 2");
  EXPECT_EQ(utf8({0xF0, 0x9F, 0x98, 'x'}), "0 invalid 3");
  EXPECT_EQ(utf8({0xED, 0xA0, 0x80}), "0 invalid 1");
  EXPECT_EQ(utf8({0x80}), "0 invalid 1");
}

TEST(Utf8Check, tells_a_character_that_may_still_come_from_a_bad_one) {
  EXPECT_EQ(utf8({'a', 0xE3}), "1 incomplete 1");
  EXPECT_EQ(utf8({'a', 0xE3, 0x81}), "1 incomplete 2");
  EXPECT_EQ(utf8({'a', 0xF0, 0x9F, 0x98}), "1 incomplete 3");
  EXPECT_EQ(utf8({'a', 0xF0, 0x8F}), "1 invalid 1");
}

// A slow reading of the same rules.
size_t simpleUtf8Prefix(const std::string& text) {
  size_t at = 0;
  while (at < text.size()) {
    size_t length = 0;
    for (size_t n = 1; n <= 4 && at + n <= text.size() && length == 0; ++n) {
      const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[at + i]); };
      uint32_t value = n == 1 ? byte(0) : byte(0) & (0x7Fu >> n);
      for (size_t i = 1; i < n; ++i) value = value << 6 | (byte(i) & 0x3Fu);
      if (appended(value) == text.substr(at, n) && (value < 0xD800 || value > 0xDFFF) &&
          value <= 0x10FFFF)
        length = n;
    }
    if (length == 0) return at;
    at += length;
  }
  return at;
}

TEST(Utf8Check, agrees_with_a_simple_reading_on_damaged_text) {
  std::mt19937 random(20240117);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const size_t count = random() % 24;
    for (size_t i = 0; i < count; ++i) {
      static const uint32_t kinds[] = {0x41, 0xE9, 0x3042, 0x1F600};
      text += appended(kinds[random() % 4] + random() % 16);
    }
    if (!text.empty() && random() % 2 == 0)
      text[random() % text.size()] = static_cast<char>(random());
    ASSERT_EQ(scan(UnicodeForm::kUtf8, text).wellFormed, simpleUtf8Prefix(text));
  }
}

// What a long text is looked at by, a vector at a time, against a reading character by character.
std::string describedBySteps(const std::string& text) {
  size_t at = 0;
  while (at < text.size()) {
    const ScanResult one = scan(UnicodeForm::kUtf8, text.substr(at, 4));
    if (one.wellFormed == 0) {
      const bool isCut = one.end == ScanEnd::kIncomplete && at + one.badLength == text.size();
      return described({at, isCut ? ScanEnd::kIncomplete : ScanEnd::kInvalid, one.badLength});
    }
    at += one.wellFormed;
  }
  return described({at, ScanEnd::kAll, 0});
}

// Every bound of the bytes that mean something, three in a row, across the borders of vectors.
TEST(Utf8Check, finds_every_fault_at_every_place_of_a_long_text) {
  const std::string telling =
      bytes({0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF,
             0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF});
  for (const std::string& around : {std::string("a"), std::string("\xE3\x81\x82")}) {
    for (const size_t place : {0u, 28u, 29u, 30u, 31u, 32u, 60u, 93u, 94u, 95u}) {
      std::string front;
      while (front.size() + around.size() <= place) front += around;
      front.resize(place, 'x');
      for (const char first : telling)
        for (const char second : telling)
          for (const char third : telling) {
            std::string text = front + first + second + third;
            while (text.size() < 99) text += around;
            ASSERT_EQ(described(scan(UnicodeForm::kUtf8, text)), describedBySteps(text))
                << place << ' ' << testing::PrintToString(text);
          }
    }
  }
}

// Four bytes, of which the first three are a beginning.
TEST(Utf8Check, finds_faults_of_four_bytes_at_the_border_of_vectors) {
  for (int lead = 0xF0; lead <= 0xF5; ++lead)
    for (int second = 0x7F; second <= 0xC0; second += second == 0x80 || second == 0x8E ? 1 : 5)
      for (const int third : {0x41, 0x80, 0xBF, 0xC0})
        for (const int fourth : {0x41, 0x80, 0xBF, 0xC0, 0xF0})
          for (size_t place = 26; place < 34; ++place) {
            const std::string text = std::string(place, 'x') +
                                     bytes({lead, second, third, fourth}) + std::string(60, 'y');
            ASSERT_EQ(described(scan(UnicodeForm::kUtf8, text)), describedBySteps(text))
                << place << ' ' << testing::PrintToString(text);
          }
}

TEST(Utf16Check, takes_paired_surrogates_in_both_orders) {
  EXPECT_EQ(utf16({0xD8, 0x3D, 0xDE, 0x00, 0, 'a'}), "6 all 0");
  EXPECT_EQ(utf16({0x3D, 0xD8, 0x00, 0xDE, 'a', 0}, false), "6 all 0");
}

TEST(Utf16Check, refuses_lone_and_reversed_surrogates_as_one_unit) {
  EXPECT_EQ(utf16({0, 'a', 0xD8, 0x3D, 0, 'b'}), "2 invalid 2");
  EXPECT_EQ(utf16({0, 'a', 0xDE, 0x00, 0xD8, 0x3D}), "2 invalid 2");
  EXPECT_EQ(utf16({0xD8, 0x3D, 0xD8, 0x3D, 0xDE, 0x00}), "0 invalid 2");
}

TEST(Utf16Check, waits_for_the_rest_of_a_unit_or_pair) {
  EXPECT_EQ(utf16({0, 'a', 0}), "2 incomplete 1");
  EXPECT_EQ(utf16({0, 'a', 0xD8, 0x3D}), "2 incomplete 2");
  EXPECT_EQ(utf16({0, 'a', 0xD8, 0x3D, 0xDE}), "2 incomplete 3");
}

TEST(Utf16Check, finds_a_surrogate_at_every_place_of_a_long_text) {
  for (const bool bigEndian : {false, true})
    for (size_t place = 0; place < 40; ++place) {
      std::string text;
      for (size_t i = 0; i < 40; ++i) {
        const int unit = i == place ? 0xDC01 : 0x30D8;
        text += bigEndian ? bytes({unit >> 8, unit & 0xFF}) : bytes({unit & 0xFF, unit >> 8});
      }
      const ScanResult result = scan(UnicodeForm::kUtf16, text, bigEndian);
      ASSERT_EQ(described(result), std::to_string(2 * place) + " invalid 2");
    }
}

TEST(Ucs2Check, refuses_every_surrogate) {
  EXPECT_EQ(described(scan(UnicodeForm::kUcs2, bytes({0xD8, 0x3D, 0xDE, 0}), true)), "0 invalid 2");
  EXPECT_EQ(described(scan(UnicodeForm::kUcs2, bytes({0xD7, 0xFF, 0xE0}), true)), "2 incomplete 1");
}

TEST(Ucs4Check, takes_scalar_values_only) {
  EXPECT_EQ(described(scan(UnicodeForm::kUcs4, bytes({0, 0x10, 0xFF, 0xFF}), true)), "4 all 0");
  EXPECT_EQ(described(scan(UnicodeForm::kUcs4, bytes({0, 0x11, 0, 0}), true)), "0 invalid 4");
  EXPECT_EQ(described(scan(UnicodeForm::kUcs4, bytes({0x00, 0xD8, 0, 0}))), "0 invalid 4");
  EXPECT_EQ(described(scan(UnicodeForm::kUcs4, bytes({'a', 0, 0, 0, 'b', 0}))), "4 incomplete 2");
}

size_t mark(UnicodeForm form, const std::string& text, bool& bigEndian, bool fixed = false) {
  return byteOrderMark(form, fixed, reinterpret_cast<const uint8_t*>(text.data()), text.size(),
                       bigEndian);
}

TEST(ByteOrderMark, decides_the_order_of_its_form) {
  bool bigEndian = false;
  EXPECT_EQ(mark(UnicodeForm::kUtf16, bytes({0xFE, 0xFF}), bigEndian), 2u);
  EXPECT_TRUE(bigEndian);
  EXPECT_EQ(mark(UnicodeForm::kUcs2, bytes({0xFF, 0xFE}), bigEndian), 2u);
  EXPECT_FALSE(bigEndian);
  EXPECT_EQ(mark(UnicodeForm::kUcs4, bytes({0, 0, 0xFE, 0xFF}), bigEndian), 4u);
  EXPECT_TRUE(bigEndian);
  EXPECT_EQ(mark(UnicodeForm::kUcs4, bytes({0xFF, 0xFE, 0, 0}), bigEndian), 4u);
  EXPECT_FALSE(bigEndian);
  EXPECT_EQ(mark(UnicodeForm::kUtf8, bytes({0xEF, 0xBB, 0xBF}), bigEndian), 3u);
}

TEST(ByteOrderMark, is_not_found_in_shorter_text_nor_against_a_fixed_order) {
  bool bigEndian = false;
  EXPECT_EQ(mark(UnicodeForm::kUtf16, bytes({0xFF}), bigEndian), 0u);
  EXPECT_EQ(mark(UnicodeForm::kUcs4, bytes({0xFF, 0xFE, 0}), bigEndian), 0u);
  EXPECT_EQ(mark(UnicodeForm::kUtf8, bytes({0xEF, 0xBB}), bigEndian), 0u);
  EXPECT_EQ(mark(UnicodeForm::kUtf16, bytes({0xFE, 0xFF}), bigEndian, true), 0u);
  EXPECT_EQ(mark(UnicodeForm::kUtf16, bytes({0xFF, 0xFE}), bigEndian, true), 2u);
  EXPECT_FALSE(bigEndian);
}

}  // namespace
}  // namespace ksv_cli_tests
