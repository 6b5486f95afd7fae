// What decoders of charsets in which the bytes alone tell the group have in
// common: the group has to be one of the source charset's own, and its table
// is left to the mapping.
#pragma once

#include "cconv/engine/converter.h"

namespace ksv {

// A code of a group, as it stands in the text, in so many bytes.
struct GroupCode {
  CharsetId group;
  uint32_t code;
  int32_t length;
};

inline void rejectFirstByte(ConverterRecord& record) {
  ++record.inputPosition;
  record.status = KSV_STATUS_INVALID;
}

inline void deliverGroupCode(ConverterRecord& record, const GroupCode& found) {
  const GroupDef* group = sourceCharset(record)->findGroup(found.group);
  if (group == nullptr) {
    rejectFirstByte(record);
    return;
  }
  record.inputPosition += found.length;
  deliverCharacter(record, *group, found.code, found.code, 0);
}

}  // namespace ksv
