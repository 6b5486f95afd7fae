// The beginning of a text, up to where no character is cut apart.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kit/charsets/charset_names.h"

namespace ksv_kit {

// How many leading bytes of a text can be kept, at most limit, so that no character, no escape or
// shift sequence and no CR LF is cut apart, nor does one stand at the end that opens what is not
// there. Bytes that are no text count one by one. Of the text at least so many have to be there,
// and the widest unit behind them if there is one: what follows decides nothing else.
size_t leadingPiece(const CharsetChoice& charset, const uint8_t* text, size_t length, size_t limit);

// The widest unit of a charset.
inline constexpr size_t kWidestUnit = 4;

}  // namespace ksv_kit
