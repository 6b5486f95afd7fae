// The escape sequences of ISO-2022-JP (RFC 1468) and ISO-2022-JP-2004 (JIS X 0213:2004,
// annex 2), as they are read.
#pragma once

#include <cstdint>
#include <string_view>

#include "cconv/rules/names.h"

namespace ksv {

constexpr uint8_t kEscape = 0x1B;

// An escape sequence, the ESC itself left out.
struct Designation {
  std::string_view bytes;
  CharsetId group;
  uint32_t codeFlag = 0;  // that the first code behind it gets
};

// The designation that can be read at the beginning of text; null: none, or not all
// of it.
const Designation* designationAt(std::string_view text);

// What designates a group to the reader, without a flag.
std::string_view designationBytes(CharsetId group);

}  // namespace ksv
