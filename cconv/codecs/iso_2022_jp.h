// ISO-2022-JP (RFC 1468) and ISO-2022-JP-2004 (JIS X 0213:2004, annex 2).
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

// Of both charsets. The group designated last is kept in the record.
void decodeIso2022Jp(ConverterRecord& record);
void encodeIso2022Jp(ConverterRecord& record);

// The same with the rows of vendors behind the escape sequence of JIS X 0208, as mail has
// them: code page 50220, and ISO-2022-JP in the Encoding Standard.
void decodeCp50220(ConverterRecord& record);
void encodeCp50220(ConverterRecord& record);

}  // namespace ksv::codecs
