// What decoders of charsets in which the bytes alone tell the group have in
// common: the group has to be one of the source charset's members, and its table
// is left to the mapping.
#pragma once

#include "cconv/convert/converter.h"

namespace ksv {

// A code of a group, as it stands in the text, in so many bytes.
struct MemberCode {
  CharsetId group;
  uint32_t code;
  int32_t length;
};

inline void rejectFirstByte(ConverterRecord& record) {
  ++record.inputPosition;
  record.status = KSV_STATUS_INVALID;
}

inline void deliverMemberCode(ConverterRecord& record, const MemberCode& found) {
  const GroupDef* group = sourceCharset(record)->findGroup(found.group);
  if (group == nullptr) {
    rejectFirstByte(record);
    return;
  }
  record.inputPosition += found.length;
  deliverCharacter(record, *group, found.code, found.code, 0);
}

}  // namespace ksv
