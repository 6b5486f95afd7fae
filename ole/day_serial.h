// File times as texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ksv {

// A count of 100-nanosecond units since 1601 as "2024-03-31 12:34:56"; none when it is
// before 1899-12-30.
std::optional<std::string> fileTimeText(uint64_t fileTime);

}  // namespace ksv
