// Runs of bytes that need no look one by one, eight at a time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ksv::detect {

constexpr size_t kBlock = sizeof(uint64_t);

inline uint64_t blockAt(const uint8_t* at) {
  uint64_t block;
  std::memcpy(&block, at, sizeof block);
  return block;
}

constexpr uint64_t blockOf(const std::array<uint8_t, kBlock>& bytes) {
  return std::bit_cast<uint64_t>(bytes);
}

constexpr uint64_t blockOf(uint8_t byte) { return uint64_t{byte} * 0x0101010101010101; }

constexpr uint64_t kHighBits = blockOf(0x80);

// How many high bits of a block are set that has no other bits.
constexpr uint32_t highBits(uint64_t block) {
  return static_cast<uint32_t>((block >> 7) * blockOf(1) >> 56);
}

// The high bit of every byte whose other bits, the high one left aside, come to at
// least so much. No sum carries into the next byte.
template <uint8_t kLeast>
constexpr uint64_t bytesFrom(uint64_t block) {
  static_assert(kLeast < 0x80);
  return ((block & ~kHighBits) + blockOf(0x80 - kLeast)) & kHighBits;
}

// The high bit of every byte that does not lie between two ASCII characters.
template <uint8_t kFirst, uint8_t kLast>
uint64_t bytesOutside(uint64_t block) {
  static_assert(kFirst <= kLast);
  return (block | bytesFrom<kLast + 1>(block) | ~bytesFrom<kFirst>(block)) & kHighBits;
}

template <uint8_t kFirst, uint8_t kLast>
bool areBetween(uint64_t block) {
  return bytesOutside<kFirst, kLast>(block) == 0;
}

// How many bytes of a block, from its first on, are printable characters and blanks.
inline size_t textBytes(uint64_t block) {
  const uint64_t outside = bytesOutside<' ', '~'>(block);
  const int zeroes = std::endian::native == std::endian::little ? std::countr_zero(outside)
                                                                : std::countl_zero(outside);
  return static_cast<size_t>(zeroes) / 8;
}

// The end of the blocks, from at on, of printable characters and blanks.
inline const uint8_t* passText(const uint8_t* at, const uint8_t* end) {
  while (end - at >= static_cast<ptrdiff_t>(kBlock) && areBetween<' ', '~'>(blockAt(at)))
    at += kBlock;
  return at;
}

// Whether three characters of three bytes each, in UTF-8, begin here, where more than a
// block is left.
inline bool areThreeThrees(const uint8_t* at) {
  constexpr uint64_t kMask = blockOf({0xF0, 0xC0, 0xC0, 0xF0, 0xC0, 0xC0, 0xF0, 0xC0});
  constexpr uint64_t kThrees = blockOf({0xE0, 0x80, 0x80, 0xE0, 0x80, 0x80, 0xE0, 0x80});
  return (blockAt(at) & kMask) == kThrees && (at[kBlock] & 0xC0) == 0x80;
}

// Whether a block holds this byte.
inline bool hasByte(uint64_t block, uint8_t byte) {
  const uint64_t difference = block ^ blockOf(byte);
  return ((difference | bytesFrom<1>(difference)) & kHighBits) != kHighBits;
}

}  // namespace ksv::detect
