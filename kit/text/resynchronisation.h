// Where a text goes on behind bytes that are no character of its charset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kit/charsets/charset_names.h"

namespace ksv_kit {

// How many of the bytes from the text's beginning on are left out. An ASCII byte that cannot
// be the trail of the lead in front of it is a character of its own; bytes that have the form
// of a character which the charset lacks go together, so that no trail is taken for a
// character. 0: that depends on bytes that are not there yet; never at the end of the text.
size_t badSequenceLength(const CharsetChoice& charset, const uint8_t* text, size_t length,
                         bool atEnd);

// The bytes that a character has at least.
size_t unitSize(const CharsetChoice& charset);

}  // namespace ksv_kit
