// Surrogates, leads of UTF-8, units in both byte orders, and eight bytes at once.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "common/byte_blocks.h"
#include "common/byte_order.h"
#include "common/utf16.h"
#include "common/utf8.h"

namespace ksv::test {
namespace {

TEST(Surrogates, are_those_from_D800_to_DFFF_the_low_ones_from_DC00) {
  for (uint32_t unit = 0; unit <= 0x1FFFF; ++unit) {
    const bool isHigh = unit / 0x400 == 0xD800 / 0x400;
    const bool isLow = unit / 0x400 == 0xDC00 / 0x400;
    ASSERT_EQ(isHighSurrogate(unit), isHigh) << unit;
    ASSERT_EQ(isLowSurrogate(unit), isLow) << unit;
    ASSERT_EQ(isSurrogate(unit), isHigh || isLow) << unit;
  }
}

TEST(Surrogates, of_every_character_join_to_it_again) {
  EXPECT_EQ(highSurrogateOf(0x1F600), 0xD83D);
  EXPECT_EQ(lowSurrogateOf(0x1F600), 0xDE00);
  EXPECT_EQ(joinSurrogates(0xD83D, 0xDE00), 0x1F600u);
  for (uint32_t character = 0x10000; character <= 0x10FFFF; ++character) {
    const uint32_t high = highSurrogateOf(character);
    const uint32_t low = lowSurrogateOf(character);
    ASSERT_TRUE(isHighSurrogate(high) && isLowSurrogate(low)) << character;
    ASSERT_EQ(joinSurrogates(high, low), character);
  }
}

TEST(Utf8Bytes, say_how_long_their_character_is) {
  const struct {
    uint8_t first, last;
    size_t length;
  } rows[] = {{0xC0, 0xDF, 2}, {0xE0, 0xEF, 3}, {0xF0, 0xF7, 4}, {0xF8, 0xFB, 5}, {0xFC, 0xFD, 6}};
  for (const auto& row : rows) {
    for (uint32_t lead = row.first; lead <= row.last; ++lead)
      EXPECT_EQ(utf8Length(static_cast<uint8_t>(lead)), row.length) << lead;
  }
  for (uint32_t byte = 0; byte <= 0xFF; ++byte) {
    EXPECT_EQ(isUtf8Continuation(static_cast<uint8_t>(byte)), byte >= 0x80 && byte <= 0xBF) << byte;
  }
}

TEST(Units, are_read_in_both_byte_orders) {
  const uint8_t bytes[] = {0x81, 0x02, 0x03, 0xF4, 0x05};
  EXPECT_EQ(readUnit(bytes, 1, true), 0x81u);
  EXPECT_EQ(readUnit(bytes, 1, false), 0x81u);
  EXPECT_EQ(readUnit(bytes, 2, true), 0x8102u);
  EXPECT_EQ(readUnit(bytes, 2, false), 0x0281u);
  EXPECT_EQ(readUnit(bytes + 1, 4, true), 0x0203F405u);
  EXPECT_EQ(readUnit(bytes + 1, 4, false), 0x05F40302u);
  EXPECT_EQ(readUnit16(bytes, true), 0x8102u);
  EXPECT_EQ(readUnit16(bytes, false), 0x0281u);
}

// A block of one byte seven times, with another at a place.
uint64_t blockWith(uint8_t byte, uint8_t other, size_t place) {
  uint8_t bytes[kBlock];
  std::memset(bytes, byte, sizeof bytes);
  bytes[place] = other;
  return blockAt(bytes);
}

TEST(Blocks, tell_bytes_between_two_from_all_others) {
  for (uint32_t other = 0; other <= 0xFF; ++other) {
    const auto byte = static_cast<uint8_t>(other);
    const bool isBetween = byte >= 'A' && byte <= 'Z';
    for (size_t place = 0; place < kBlock; ++place) {
      const uint64_t block = blockWith('M', byte, place);
      ASSERT_EQ((areBetween<'A', 'Z'>(block)), isBetween) << other;
      const uint64_t outside = bytesOutside<'A', 'Z'>(block);
      ASSERT_EQ(highBits(outside), isBetween ? 0u : 1u) << other;
      ASSERT_EQ(bytesBeforeHighBit(outside), isBetween ? kBlock : place) << other;
    }
  }
}

TEST(Blocks, are_searched_for_a_byte) {
  for (uint32_t wanted = 0; wanted <= 0xFF; ++wanted) {
    const auto byte = static_cast<uint8_t>(wanted);
    const auto neighbour = static_cast<uint8_t>(wanted ^ 0x80);
    for (size_t place = 0; place < kBlock; ++place)
      ASSERT_TRUE(hasByte(blockWith(neighbour, byte, place), byte)) << wanted;
    ASSERT_FALSE(hasByte(blockOf(neighbour), byte)) << wanted;
    ASSERT_FALSE(hasByte(blockWith(neighbour, static_cast<uint8_t>(wanted + 1), 3), byte))
        << wanted;
  }
}

}  // namespace
}  // namespace ksv::test
