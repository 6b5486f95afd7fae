// The encoding of rule files and of the table texts that they name.
#pragma once

#include <cstdint>

namespace ksv {

// Only UTF-16, UCS-4 and UCS-2 can be read.
enum class TextEncodingKind : uint32_t {
  kUnknown = 0,
  kUtf16 = 1,
  kUtf8 = 2,
  kUcs4 = 3,
  kUcs2 = 4,
  kShiftJis = 5,
};

}  // namespace ksv
