// The replacement characters of a converter.
#pragma once

#include "ksv_cconv.h"

namespace ksv {

// Looks the pair of replacement characters of the options up in the target, and
// when one of them is not there the default pairs in turn, the last one untested.
void prepareReplacements(ConverterRecord& record);

}  // namespace ksv
