// The text encodings of the OASYS word processor. Their encoders are those of
// Windows-31J and of the rule files alone.
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

void decodeOasysWin(ConverterRecord& record);
void decodeOasysOnline(ConverterRecord& record);  // two bytes a character

}  // namespace ksv::codecs
