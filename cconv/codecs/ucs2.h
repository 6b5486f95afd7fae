// UCS-2 (ISO/IEC 10646, the two-octet form), with numeric character references
// for what it does not hold.
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

void decodeUcs2(ConverterRecord& record);
void encodeUcs2(ConverterRecord& record);

}  // namespace ksv::codecs
