// Values with their bytes in reverse order.
#pragma once

#include <cstdint>

namespace ksv {

constexpr uint16_t reversed(uint16_t value) {
  return static_cast<uint16_t>(value << 8 | value >> 8);
}

constexpr uint32_t reversed(uint32_t value) {
  return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

}  // namespace ksv
