// Where Unicode text may be cut without a change of what it converts to.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kit/text/unicode_check.h"

namespace ksv_kit {

// Converters from UTF-8 and UTF-16 read a combining mark together with the base
// before it, so a piece that more text will follow must not end between the two.
// Returns how many of the length bytes (well-formed, whole characters, beginning
// at such a boundary) can be converted now; the rest goes with the next piece. It
// may be 0 when there is but one character.
size_t safeCut(UnicodeForm form, bool bigEndian, const uint8_t* text, size_t length);

}  // namespace ksv_kit
