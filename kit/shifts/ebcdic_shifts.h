// Japanese EBCDIC: 0E shifts out to pairs of bytes, 0F back to single ones.
//
// In the stateless form FE stands in front of each pair. No one-byte code of these charsets is FE,
// and it is no control code, which the converter would take for one of any set.
#pragma once

#include <memory>

#include "kit/shifts/shift_filter.h"

namespace ksv_kit {

std::unique_ptr<ShiftFilter> ebcdicReadingFilter();
std::unique_ptr<ShiftFilter> ebcdicWritingFilter();

}  // namespace ksv_kit
