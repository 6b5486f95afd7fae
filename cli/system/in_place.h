// Whether a file that was converted where it is may be replaced by the result.
#pragma once

#include "cli/system/files.h"
#include "cli/system/streams.h"

namespace ksv_cli {

// Reads both, up to the first difference. Throws Failure.
bool haveSameBytes(ByteSource& one, ByteSource& other);

// original: the file before it was read; now: what is in its place. Throws Failure.
void checkThatNothingIsLost(const platform::FileFacts& original, const platform::FileFacts& now);

}  // namespace ksv_cli
