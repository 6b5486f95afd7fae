// ISO-2022-JP (RFC 1468) and ISO-2022-JP-2004 (JIS X 0213:2004, annex 2).
#pragma once

#include <string_view>

#include "cconv/rules/names.h"
#include "ksv_cconv.h"

namespace ksv::codecs {

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

// Of both charsets. The group designated last is kept in the record.
void decodeIso2022Jp(ConverterRecord& record);
void encodeIso2022Jp(ConverterRecord& record);

// The same with the rows of vendors behind the escape sequence of JIS X 0208, as mail has
// them: code page 50220, and ISO-2022-JP in the Encoding Standard.
void decodeCp50220(ConverterRecord& record);
void encodeCp50220(ConverterRecord& record);

}  // namespace ksv::codecs
