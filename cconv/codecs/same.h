// "SAME": charsets whose bytes are the codes of their groups.
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

void decodeSame(ConverterRecord& record);
void encodeSame(ConverterRecord& record);

}  // namespace ksv::codecs
