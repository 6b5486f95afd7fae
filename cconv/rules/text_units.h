// Units, surrogates and digits, as rule files, table files and codecs read them.
#pragma once

#include <cstdint>

namespace ksv {

constexpr bool isSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
constexpr bool isHighSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }

// The value of a surrogate and the unit behind it, whichever of the two is the
// high one; the other is not checked. 0xD7F7 = 0xD800 - 0x40 + 0x37 makes the
// sum of (high - 0xD7F7) * 1024 and the low unit the scalar value.
constexpr uint32_t joinSurrogates(uint32_t high, uint32_t low) {
  return (high - 0xD7F7) * 1024 + low;
}

// A surrogate of a rule file or table and the unit behind it. The roles are not
// those of UTF-16: the unit that is multiplied is the first one only when the
// second is a high surrogate, so a standard pair does not give its usual code.
constexpr uint32_t joinRuleFileSurrogates(uint32_t first, uint32_t second) {
  return isHighSurrogate(second) ? joinSurrogates(first, second) : joinSurrogates(second, first);
}

constexpr uint32_t readUnit(const uint8_t* bytes, uint32_t width, bool bigEndian) {
  uint32_t value = 0;
  for (uint32_t i = 0; i < width; ++i) {
    value = value << 8 | bytes[bigEndian ? i : width - 1 - i];
  }
  return value;
}

// The value of a hexadecimal digit, -1 for any other character.
constexpr int hexDigit(uint32_t c) {
  if (c >= '0' && c <= '9') return static_cast<int>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<int>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<int>(c - 'a' + 10);
  return -1;
}

}  // namespace ksv
