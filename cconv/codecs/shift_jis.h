// Shift_JIS (JIS X 0208:1997, annex 1), Shift_JIS-2004 (JIS X 0213:2004, annex 1)
// and Windows-31J.
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

void decodeShiftJis(ConverterRecord& record);  // also Shift_JIS-2004, by the source's number
void decodeWindows31J(ConverterRecord& record);
void encodeShiftJis(ConverterRecord& record);
void encodeShiftJis2004(ConverterRecord& record);
void encodeWindows31J(ConverterRecord& record);

}  // namespace ksv::codecs
