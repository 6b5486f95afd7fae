// Access to a converter record by those who have set it up: its opaque pointers
// with their types, and the steps that decoders have in common.
#pragma once

#include <cstdint>

#include "cconv/engine/codec.h"
#include "cconv/rules/rule_base.h"
#include "ksv_cconv.h"

namespace ksv {

inline const LoadedCharset* sourceCharset(const ConverterRecord& record) {
  return static_cast<const LoadedCharset*>(record.sourceCharset);
}
inline const LoadedCharset* targetCharset(const ConverterRecord& record) {
  return static_cast<const LoadedCharset*>(record.targetCharset);
}
inline const CodecEntry* sourceDecoder(const ConverterRecord& record) {
  return static_cast<const CodecEntry*>(record.sourceDecoder);
}
inline const CodecEntry* targetEncoder(const ConverterRecord& record) {
  return static_cast<const CodecEntry*>(record.targetEncoder);
}

// Negative when the caller's position is beyond its length.
inline int64_t bytesLeft(const ConverterRecord& record) {
  return int64_t{record.inputLength} - record.inputPosition;
}

// The counts of a record go on over many calls and wrap.
inline void countOneMore(int32_t& count) {
  count = static_cast<int32_t>(static_cast<uint32_t>(count) + 1);
}

// Leaves a character of a group behind for the encoder, positions aside.
inline void deliverCharacter(ConverterRecord& record, const GroupDef& group, uint32_t rawCode,
                             uint32_t groupCode, uint32_t unicodeCode) {
  record.decodedGroup = group.id;
  record.decodedGroupType = group.type();
  record.rawCode = rawCode;
  record.groupCode = groupCode;
  record.unicodeCode = unicodeCode;
  countOneMore(record.charactersRead);
  record.status = KSV_STATUS_DECODED;
}

}  // namespace ksv
