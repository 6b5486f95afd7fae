// What the step-by-step engine makes of one character, as an entry.
#pragma once

#include <cstdint>

#include "cconv/bulk/entries.h"
#include "ksv_cconv.h"

namespace ksv {

// Lets the step-by-step engine convert one character, given as its input bytes, in
// a record of its own with nothing pending. kNoEntry when the answer is not "one
// character, written", and when it may change as tables are loaded. Where line ends
// are converted the entry tells them, since what one writes depends on the one before.
Entry askEngine(const ConverterRecord& record, const uint8_t* input, int32_t length);

}  // namespace ksv
