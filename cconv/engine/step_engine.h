// The step-by-step engine: converts character by character, and decides every answer. What
// else converts asks it.
#pragma once

#include "ksv_cconv.h"

namespace ksv {

// Sets the status at the end of the input, or of the room for output; whether it did.
bool endsAtBuffers(ConverterRecord& record);

// Converts at most that many characters while the status is 21.
void convertByCharacters(ConverterRecord& record, int32_t characters);

}  // namespace ksv
