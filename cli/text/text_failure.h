// How a place in a text is told.
#pragma once

#include <cstdint>
#include <string>

namespace ksv_cli {

// " at byte offset 7"
inline std::string atOffset(uint64_t offset) { return " at byte offset " + std::to_string(offset); }

}  // namespace ksv_cli
