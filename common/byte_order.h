// Units of text and values whose bytes stand in one order or the other.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv {

constexpr uint16_t reversed(uint16_t value) {
  return static_cast<uint16_t>(value << 8 | value >> 8);
}

constexpr uint32_t reversed(uint32_t value) {
  return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

// At most four bytes, at any alignment.
constexpr uint32_t readUnit(const uint8_t* bytes, size_t width, bool bigEndian) {
  uint32_t value = 0;
  for (size_t i = 0; i < width; ++i) {
    value = value << 8 | bytes[bigEndian ? i : width - 1 - i];
  }
  return value;
}

constexpr uint32_t readUnit16(const uint8_t* bytes, bool bigEndian) {
  return bigEndian ? uint32_t{bytes[0]} << 8 | bytes[1] : uint32_t{bytes[1]} << 8 | bytes[0];
}

constexpr void writeUnit32LittleEndian(uint8_t* bytes, uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value >> (8 * i));
}

}  // namespace ksv
