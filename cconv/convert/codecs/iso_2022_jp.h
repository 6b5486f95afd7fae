// ISO-2022-JP (RFC 1468) and ISO-2022-JP-2004 (JIS X 0213:2004, annex 2).
#pragma once

#include "ksv_cconv.h"

namespace ksv::codecs {

// Both charsets. The group designated last is kept in the record.
void decodeIso2022Jp(ConverterRecord& record);
void encodeIso2022Jp(ConverterRecord& record);

}  // namespace ksv::codecs
