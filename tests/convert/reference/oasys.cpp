// The encodings of the OASYS word processor.
#include "reference/parts.h"

namespace ksv_reference {
namespace {

uint32_t shiftJisNumberToJis(uint32_t number) {
  if (number < 0x100) return number;
  if (number > 0xFFFF) return 0;
  return shiftJisToJis(static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number));
}

uint32_t onlineGroup(uint8_t first, uint8_t second) {
  if (first >= 0x80) return 3003;
  if (first > 0x20) return 2004;
  return second < 0xA0 ? 2002 : 2003;
}

}  // namespace

void decodeOasysWin(Converter& c) { decodeByRules(c, shiftJisNumberToJis); }

void decodeOasysOnline(Converter& c) {
  const int32_t left = c.inputLength - c.inputPosition;
  if (left <= 0) {
    c.status = KSV_STATUS_DONE;
    return;
  }
  const uint8_t first = c.input[c.inputPosition];
  if (first > 0 && first < 0x21) {
    ++c.inputPosition;
    c.status = KSV_STATUS_INVALID;
    return;
  }
  if (left < 2) {
    c.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  const uint8_t second = c.input[c.inputPosition + 1];
  const uint32_t wanted = onlineGroup(first, second);
  const uint32_t code = (first * 256U + second) & 0x7FFF;
  for (const Subset* group : c.sourceCharset->members) {
    if (group->id != wanted) continue;
    c.inputPosition += 2;
    takeCharacter(c, *group, code, code, 0);
    return;
  }
  ++c.inputPosition;
  c.status = KSV_STATUS_INVALID;
}

}  // namespace ksv_reference
