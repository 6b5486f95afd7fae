// The step-by-step engine: converts character by character, and decides every answer. What
// else converts asks it.
#pragma once

#include "ksv_cconv.h"

namespace ksv {

// Sets the status at the end of the input, or of the room for output; whether it did.
inline bool endsAtBuffers(ConverterRecord& record) {
  if (record.inputPosition >= record.inputLength) {
    record.status = KSV_STATUS_DONE;
    return true;
  }
  if (record.outputPosition >= record.outputCapacity) {
    record.status = KSV_STATUS_FULL;
    return true;
  }
  return false;
}

// Converts at most that many characters while the status is 21.
void convertByCharacters(ConverterRecord& record, int32_t characters);

}  // namespace ksv
