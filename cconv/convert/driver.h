// The conversion loop behind cconvConvert.
#pragma once

#include "ksv_cconv.h"

namespace ksv {

// Diagnostic hook: when it names a file, every conversion appends its input to it.
// Nothing in the library sets it.
extern const char* inputDumpPath;

// Converts until the input is used up, the output is full or a character fails.
uint32_t convert(ConverterRecord& record);

// Whether the buffers and positions of the record can be used.
bool buffersAreUsable(const ConverterRecord& record);

}  // namespace ksv
