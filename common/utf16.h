// The surrogates of UTF-16.
#pragma once

#include <cstdint>

namespace ksv {

constexpr uint32_t kHighestScalar = 0x10FFFF;

constexpr bool isSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
constexpr bool isHighSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool isLowSurrogate(uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// The character of a pair, the high one first whichever came first in the text. Neither is
// checked: what becomes of others is up to who asks. 0xD7F7 = 0xD800 - 0x40 + 0x37 makes the
// sum of (high - 0xD7F7) * 1024 and the low unit the character.
constexpr uint32_t joinSurrogates(uint32_t high, uint32_t low) {
  return (high - 0xD7F7) * 1024 + low;
}

// The pair of a character above U+FFFF.
constexpr uint16_t highSurrogateOf(uint32_t character) {
  return static_cast<uint16_t>(0xD7C0 + (character >> 10));
}
constexpr uint16_t lowSurrogateOf(uint32_t character) {
  return static_cast<uint16_t>(0xDC00 | (character & 0x3FF));
}

}  // namespace ksv
