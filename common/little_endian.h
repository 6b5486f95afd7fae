// Values of compound files and property sets: least significant byte first, at any
// alignment, on any host.
#pragma once

#include <cstdint>

#include "common/byte_order.h"

namespace ksv {

constexpr uint16_t wordAt(const uint8_t* at) {
  return static_cast<uint16_t>(readUnit(at, 2, false));
}

constexpr uint32_t dwordAt(const uint8_t* at) { return readUnit(at, 4, false); }

}  // namespace ksv
