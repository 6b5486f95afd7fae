// Finds where a character that a converter stopped at begins.
#pragma once

#include <cstdint>

#include "ksv_cconv.h"

namespace ksv_kit {

// before: the converter as it was before the call that stopped, with its input
// set; reported: a position at or behind the first byte of the character. Returns
// the position of that byte. Decoders leave the position on the bad bytes, one
// byte behind the first, or behind all of them; so shorter and shorter pieces of
// the input are converted once more, until one ends cleanly.
int32_t characterStart(const ConverterRecord& before, int32_t reported);

// The same for the first character that is not among the bytes that the call wrote
// first. What stands for nothing, such as an escape sequence or skipped bytes, is no
// part of it. For sources that read no mark together with the base before it.
int32_t characterBehindOutput(const ConverterRecord& before, int32_t outputBytes);

}  // namespace ksv_kit
