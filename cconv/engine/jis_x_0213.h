// JIS X 0213:2004.
#pragma once

#include <cstdint>

namespace ksv {

// Set in a code that stands in plane 2.
constexpr uint32_t kPlane2Flag = 0x10000;

}  // namespace ksv
