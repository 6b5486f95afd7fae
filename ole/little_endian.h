// Values of compound files and property sets: least significant byte first, at any
// alignment, on any host.
#pragma once

#include <cstdint>

namespace ksv {

constexpr uint16_t wordAt(const uint8_t* at) { return static_cast<uint16_t>(at[0] | at[1] << 8); }

constexpr uint32_t dwordAt(const uint8_t* at) {
  return uint32_t{wordAt(at)} | uint32_t{wordAt(at + 2)} << 16;
}

}  // namespace ksv
