// The first half of every encoder: which group of the target holds the current
// character, and with which code.
#pragma once

#include "ksv_cconv.h"

namespace ksv {

// Returns whether an output code is there to be written. If not, the status says
// why: 23, or 0 after a flush request that has nothing to write. With status 22 on
// entry the code is prepared already.
bool mapCharacter(ConverterRecord& record);

// Whether charset 1002 holds the current character, of which code is to be
// written: what UCS-2 output with a supplementary mode writes as it is.
bool isInWindows31JRepertoire(const ConverterRecord& record, uint32_t code);

}  // namespace ksv
