// ISO-2022-KR: a header, and behind it 0E shifts out to pairs of KS X 1001, 0F back to ASCII.
//
// In the stateless form pairs have their high bits, as in EUC.
#pragma once

#include <memory>

#include "kit/shifts/shift_filter.h"

namespace ksv_kit {

std::unique_ptr<ShiftFilter> koreanReadingFilter();
std::unique_ptr<ShiftFilter> koreanWritingFilter();

}  // namespace ksv_kit
