// UTF-8, UTF-16 and UCS-4 (ISO/IEC 10646, RFC 3629, RFC 2781), read leniently.
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

void decodeUtf8(ConverterRecord& record);
void decodeUtf16(ConverterRecord& record);
void decodeUcs4(ConverterRecord& record);
void encodeUtf8(ConverterRecord& record);
void encodeUtf16(ConverterRecord& record);
void encodeUcs4(ConverterRecord& record);

}  // namespace ksv::codecs
