// Bounds on what a foreign text may make the converter hold.
#pragma once

#include <cstddef>

namespace ksv_kit::limits {

// A piece that converts to nothing without its continuation is read on, up to here: a language
// tag has at most 260 characters.
inline constexpr size_t kLongestCarry = 1024 * 1024;

// Runs of UTF-7 and HZ have the length of a line or a paragraph; one above this is no text.
inline constexpr size_t kLongestRun = 1024 * 1024;

}  // namespace ksv_kit::limits
