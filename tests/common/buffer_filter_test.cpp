#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "ksv_ucs2.h"
#include "tests/system/system.h"

namespace {

using Filter = int32_t (*)(void* dest, const void* src, int32_t length, int32_t width);

int32_t stripNull(void* dest, const void* src, int32_t length, int32_t width) {
  return KSV_CopyStripNULL(dest, src, length, width);
}
int32_t stripControlLittle(void* dest, const void* src, int32_t length, int32_t width) {
  return KSV_CopyStripControlCode(dest, src, length, width, 0);
}
int32_t stripControlBig(void* dest, const void* src, int32_t length, int32_t width) {
  return KSV_CopyStripControlCode(dest, src, length, width, 7);
}

// Filters from and into blocks of exactly the length; what is behind the result stays.
std::string filtered(Filter filter, const std::string& text, int32_t width) {
  const auto source = std::make_unique<char[]>(text.size());
  const auto dest = std::make_unique<char[]>(text.size());
  std::memcpy(source.get(), text.data(), text.size());
  std::memset(dest.get(), 0xEE, text.size());
  const int32_t count =
      filter(dest.get(), source.get(), static_cast<int32_t>(text.size()), width);
  for (size_t i = static_cast<size_t>(count); i < text.size(); ++i) {
    EXPECT_EQ(dest[i], '\xEE') << i;
  }
  return {dest.get(), static_cast<size_t>(count)};
}

// The control codes that are dropped, one by one.
const std::set<uint32_t> kDropped = {1,  2,  3,  4,  5,  6,  7,  8,  11, 12, 14, 15, 16, 17, 18,
                                     19, 20, 21, 22, 23, 24, 25, 26, 28, 29, 30, 31, 127};

bool isNullUnit(const std::string& unit, bool) {
  return unit.find_first_not_of('\0') == unit.npos;
}

bool isDroppedControl(const std::string& unit, bool bigEndian) {
  std::string bytes = unit;
  if (bigEndian) bytes.assign(unit.rbegin(), unit.rend());
  uint32_t value = 0;
  uint32_t factor = 1;
  for (const char byte : bytes) {
    value += static_cast<unsigned char>(byte) * factor;
    factor *= 256;
  }
  return kDropped.contains(value);
}

// Slow: unit strings, each kept or not.
template <class IsDropped>
std::string reference(const std::string& text, size_t width, bool bigEndian, IsDropped isDropped) {
  std::string result;
  for (size_t i = 0; i + width <= text.size(); i += width) {
    const std::string unit = text.substr(i, width);
    if (!isDropped(unit, bigEndian)) result += unit;
  }
  return result;
}

void expectLikeReference(const std::string& text, size_t width) {
  const auto narrow = static_cast<int32_t>(width);
  ASSERT_EQ(filtered(stripNull, text, narrow), reference(text, width, false, isNullUnit));
  ASSERT_EQ(filtered(stripControlLittle, text, narrow),
            reference(text, width, false, isDroppedControl));
  ASSERT_EQ(filtered(stripControlBig, text, narrow),
            reference(text, width, true, isDroppedControl));
}

std::string bytesOf(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text.push_back(static_cast<char>(byte));
  return text;
}

}  // namespace

TEST(BufferFilter, drops_zero_units) {
  EXPECT_EQ(filtered(stripNull, bytesOf({'a', 0, 'b', 0, 0}), 1), "ab");
  EXPECT_EQ(filtered(stripNull, bytesOf({'a', 0, 0, 0, 0, 'b'}), 2), bytesOf({'a', 0, 0, 'b'}));
  EXPECT_EQ(filtered(stripNull, bytesOf({0, 0, 0, 0, 0, 0, 1, 0}), 4), bytesOf({0, 0, 1, 0}));
}

TEST(BufferFilter, drops_control_codes_of_little_endian_units) {
  EXPECT_EQ(filtered(stripControlLittle, bytesOf({0x41, 0, 0x07, 0, 0x0D, 0}), 2),
            bytesOf({0x41, 0, 0x0D, 0}));
  EXPECT_EQ(filtered(stripControlLittle, bytesOf({0x07, 0, 0, 0x07}), 2), bytesOf({0, 0x07}));
}

TEST(BufferFilter, drops_control_codes_of_big_endian_units) {
  EXPECT_EQ(filtered(stripControlBig, bytesOf({0x07, 0, 0, 0x07}), 2), bytesOf({0x07, 0}));
  EXPECT_EQ(filtered(stripControlBig, bytesOf({0, 0, 0, 0x7F, 0, 0, 0, 0x41}), 4),
            bytesOf({0, 0, 0, 0x41}));
}

TEST(BufferFilter, keeps_tab_line_feed_return_escape_and_zero) {
  const std::string kept = bytesOf({0x00, 0x09, 0x0A, 0x0D, 0x1B, 0x20, 0x7E, 0x80, 0xFF});
  EXPECT_EQ(filtered(stripControlLittle, kept, 1), kept);
}

TEST(BufferFilter, agrees_with_the_reference_for_every_byte_and_every_unit_of_two) {
  std::string bytes;
  std::string units;
  for (int high = 0; high < 256; ++high) {
    bytes.push_back(static_cast<char>(high));
    for (int low = 0; low < 256; ++low) units += bytesOf({low, high});
  }
  expectLikeReference(bytes, 1);
  expectLikeReference(units, 2);
}

TEST(BufferFilter, agrees_with_the_reference_for_random_units_cut_anywhere) {
  std::mt19937 random(ksv::test::testSeed());
  const std::string likely = bytesOf({0, 0, 0, 0, 7, 0x0A, 0x1B, 0x1F, 0x7F, 'a', 0xFF});
  for (int i = 0; i < 3000; ++i) {
    std::string text(random() % 40, '\0');
    for (char& byte : text) byte = likely[random() % likely.size()];
    const size_t width = size_t{1} << random() % 3;
    SCOPED_TRACE("KSV_TEST_SEED=" + std::to_string(ksv::test::testSeed()));
    expectLikeReference(text, width);
  }
}

TEST(BufferFilter, leaves_out_a_last_unit_that_is_not_whole) {
  EXPECT_EQ(filtered(stripNull, "abc", 2), "ab");
  EXPECT_EQ(filtered(stripNull, "abc", 4), "");
  EXPECT_EQ(filtered(stripControlBig, "abcdefg", 4), "abcd");
}

TEST(BufferFilter, returns_0_for_null_for_no_length_and_for_other_widths) {
  char text[8] = "abcdefg";
  char dest[8] = "before";
  for (Filter filter : {stripNull, stripControlLittle, stripControlBig}) {
    EXPECT_EQ(filter(nullptr, text, 8, 1), 0);
    EXPECT_EQ(filter(dest, nullptr, 8, 1), 0);
    EXPECT_EQ(filter(dest, text, 0, 1), 0);
    EXPECT_EQ(filter(dest, text, -1, 1), 0);
    EXPECT_EQ(filter(dest, text, INT32_MIN, 4), 0);
    for (const int32_t width : {0, 3, 5, 8, -1, -2, INT32_MAX, INT32_MIN}) {
      EXPECT_EQ(filter(dest, text, 8, width), 0) << width;
    }
  }
  EXPECT_STREQ(dest, "before");
}

TEST(BufferFilter, may_filter_in_place) {
  char text[] = {'a', 0, 0, 0, 'b', 0};
  EXPECT_EQ(KSV_CopyStripNULL(text, text, sizeof text, 2), 4);
  EXPECT_EQ(std::string(text, 4), bytesOf({'a', 0, 'b', 0}));
}
