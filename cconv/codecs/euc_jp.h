// EUC-JP (packed format of JIS X 0208, JIS X 0212 and JIS X 0201 katakana),
// EUC-JIS-2004 (JIS X 0213:2004, annex 3), and EUC-JP-FIX, the two-byte fixed-width
// format of EUC-JP.
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

void decodeEucJp(ConverterRecord& record);
void decodeEucJis2004(ConverterRecord& record);
void decodeEucJpFix(ConverterRecord& record);
void encodeEucJp(ConverterRecord& record);  // also EUC-JIS-2004, by the group
void encodeEucJpFix(ConverterRecord& record);

}  // namespace ksv::codecs
