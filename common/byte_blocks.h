// Arithmetic on eight bytes at once, each for itself.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ksv {

constexpr size_t kBlock = sizeof(uint64_t);

template <typename Byte>
uint64_t blockAt(const Byte* at) {
  static_assert(sizeof(Byte) == 1);
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

// How many bytes stand before the first whose high bit is set, of a block that has no
// other bits.
constexpr size_t bytesBeforeHighBit(uint64_t block) {
  const int bits = std::endian::native == std::endian::little ? std::countr_zero(block)
                                                              : std::countl_zero(block);
  return static_cast<size_t>(bits) / 8;
}

// The high bit of every byte that does not lie between two ASCII characters.
template <uint8_t kFirst, uint8_t kLast>
constexpr uint64_t bytesOutside(uint64_t block) {
  static_assert(kFirst <= kLast);
  return (block | bytesFrom<kLast + 1>(block) | ~bytesFrom<kFirst>(block)) & kHighBits;
}

template <uint8_t kFirst, uint8_t kLast>
constexpr bool areBetween(uint64_t block) {
  return bytesOutside<kFirst, kLast>(block) == 0;
}

// Whether a block holds this byte.
constexpr bool hasByte(uint64_t block, uint8_t byte) {
  const uint64_t difference = block ^ blockOf(byte);
  return ((difference | bytesFrom<1>(difference)) & kHighBits) != kHighBits;
}

}  // namespace ksv
