// ISO-2022-CN: an escape sequence designates GB 2312 or plane 1 of CNS 11643, to whose pairs 0E
// shifts out and from which 0F shifts back to ASCII; another designates plane 2, of which each pair
// has a shift of its own in front. Designations hold to the end of the line.
//
// In the stateless form pairs of GB 2312 have their high bits, and those of CNS 11643 stand behind
// 8E A1 and 8E A2 with theirs, as in EUC-TW.
#pragma once

#include <memory>

#include "kit/shifts/shift_filter.h"

namespace ksv_kit {

std::unique_ptr<ShiftFilter> chineseReadingFilter();
std::unique_ptr<ShiftFilter> chineseWritingFilter();

}  // namespace ksv_kit
