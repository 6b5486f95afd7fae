#include "cconv/engine/rule_driven_decoder.h"

#include "cconv/engine/converter.h"
#include "common/byte_order.h"

namespace ksv {
namespace {

constexpr uint32_t kWidestSkip = 4;

// Whether the group has the code, and the character that it stands for. Control
// codes belong to every group; those without a character of their own give 0.
bool groupHolds(const GroupDef& group, uint32_t groupCode, uint32_t& unicode) {
  if (group.isUser()) return group.userCodeToUcs(groupCode, unicode);
  unicode = 0;
  if (tableLookup(group.toUcs, groupCode, unicode) && unicode != 0) return true;
  unicode = 0;
  return isControlCode(groupCode);
}

}  // namespace

void decodeByRules(ConverterRecord& record, ByteTransform transform) {
  const uint32_t left = static_cast<uint32_t>(bytesLeft(record));
  if (left == 0) {
    record.status = KSV_STATUS_DONE;
    return;
  }
  const uint8_t* bytes = record.input + record.inputPosition;
  bool incomplete = false;
  uint32_t widestRead = 1;
  for (const GroupDef* group : sourceCharset(record)->groups) {
    const uint32_t width = group->bytesPerCode;
    if (width == 0) continue;  // it would hold a character of no bytes, for ever
    if (width > left) {
      incomplete = true;
      continue;
    }
    const uint32_t rawCode = readUnit(bytes, width, record.inputBigEndian != 0);
    uint32_t groupCode = rawCode;
    if (transform != nullptr && rawCode != 0) {
      groupCode = transform(rawCode);
      if (groupCode == 0) continue;
    }
    if (width <= kWidestSkip && width > widestRead) widestRead = width;
    uint32_t unicode = 0;
    if (groupHolds(*group, groupCode, unicode)) {
      deliverCharacter(record, *group, rawCode, groupCode, unicode);
      record.inputPosition += static_cast<int32_t>(width);
      return;
    }
  }
  if (incomplete) {
    record.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  record.status = KSV_STATUS_INVALID;
  if (record.skipInvalid != 0) record.inputPosition += static_cast<int32_t>(widestRead);
}

}  // namespace ksv
