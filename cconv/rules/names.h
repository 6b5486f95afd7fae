// Charset and group names, and the numbers they are found by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cconv/limits.h"

namespace ksv {

using CharsetId = uint32_t;

using limits::kNameSize;

// Numbers that the conversion engine asks for. The full table is in names.cpp.
namespace charset_id {
constexpr CharsetId kShiftJis = 1001;
constexpr CharsetId kWindows31J = 1002;
constexpr CharsetId kUcs2 = 1003;
constexpr CharsetId kUtf8 = 1006;
constexpr CharsetId kEucJp = 1007;
constexpr CharsetId kShiftJis2004 = 1010;
constexpr CharsetId kEucJis2004 = 1011;
constexpr CharsetId kIso2022Jp2004 = 1012;
constexpr CharsetId kIso646Irv = 2001;
constexpr CharsetId kJisX0201Latin = 2002;
constexpr CharsetId kJisX0201Kana = 2003;
constexpr CharsetId kJisC6226 = 2004;
constexpr CharsetId kJisX0208 = 2006;
constexpr CharsetId kJisX0212 = 2007;
constexpr CharsetId kNecExtset = 2008;
constexpr CharsetId kIbmExtset = 2009;
constexpr CharsetId kJisX0213 = 2011;
constexpr CharsetId kNecIbmExtset = 2012;
constexpr CharsetId kWindows31JUser = 3001;
constexpr CharsetId kOasysExtset = 3003;
}  // namespace charset_id

// Lower-cases 'A' to 'Z' in place.
void lowerAscii(char* text);

// The number of a name, whatever its case: that of the built-in table, else 4000 plus
// the sum of each byte of the lower-cased name times its position counted from 1 (mod
// 2^32). Different names can share such a sum.
CharsetId idOfName(std::string_view name);

// The same of the caller's buffer, which is lower-cased in place.
CharsetId nameToId(char* name);

// DEL and the C0 controls except TAB, LF and CR.
constexpr bool isControlCode(uint32_t code) {
  return code == 0x7F || (code < 0x20 && code != 9 && code != 10 && code != 13);
}

}  // namespace ksv
