// Surrogates and digits, as rule files and table files are read.
#pragma once

#include <cstdint>

#include "common/byte_order.h"
#include "common/utf16.h"

namespace ksv {

// A surrogate of a rule file or table and the unit behind it. The roles are not
// those of UTF-16: the unit that is multiplied is the first one only when the
// second is a high surrogate, so a standard pair does not give its usual code.
constexpr uint32_t joinRuleFileSurrogates(uint32_t first, uint32_t second) {
  return isHighSurrogate(second) ? joinSurrogates(first, second) : joinSurrogates(second, first);
}

// The value of a hexadecimal digit, -1 for any other character.
constexpr int hexDigit(uint32_t c) {
  if (c >= '0' && c <= '9') return static_cast<int>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<int>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<int>(c - 'a' + 10);
  return -1;
}

}  // namespace ksv
