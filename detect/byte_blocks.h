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

// Whether all bytes of a block lie between two ASCII characters. Bytes that are not
// ASCII carry into their neighbours, and fail on their own.
template <uint8_t kFirst, uint8_t kLast>
bool areBetween(uint64_t block) {
  static_assert(kFirst <= kLast && kLast < 0x80);
  constexpr uint64_t kHigh = blockOf(0x80);
  const uint64_t tooHigh = block | (block + blockOf(0x7F - kLast));
  const uint64_t highEnough = block + blockOf(0x80 - kFirst);
  return ((tooHigh | ~highEnough) & kHigh) == 0;
}

// The end of the blocks, from at on, of printable characters and blanks.
inline const uint8_t* passText(const uint8_t* at, const uint8_t* end) {
  while (end - at >= static_cast<ptrdiff_t>(kBlock) && areBetween<' ', '~'>(blockAt(at)))
    at += kBlock;
  return at;
}

}  // namespace ksv::detect
