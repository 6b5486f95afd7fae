// EUC-JP, EUC-JIS-2004 and the form of two bytes a character.
#include <initializer_list>

#include "reference/parts.h"

namespace ksv_reference {
namespace {

const uint32_t kPlane2 = 0x10000;

bool hasBytes(Converter& c, int32_t count) {
  const int32_t left = c.inputLength - c.inputPosition;
  if (left >= count) return true;
  c.status = left <= 0 ? KSV_STATUS_DONE : KSV_STATUS_INCOMPLETE;
  return false;
}

void refuseByte(Converter& c) {
  ++c.inputPosition;
  c.status = KSV_STATUS_INVALID;
}

void takeCode(Converter& c, uint32_t groupId, uint32_t code, int32_t bytes) {
  for (const Subset* group : c.sourceCharset->members) {
    if (group->id != groupId) continue;
    c.inputPosition += bytes;
    takeCharacter(c, *group, code, code, 0);
    return;
  }
  refuseByte(c);
}

uint32_t sevenBits(uint8_t row, uint8_t cell) {
  return static_cast<uint32_t>((row & 0x7F) * 256 + (cell & 0x7F));
}

bool writeBytes(Converter& c, std::initializer_list<uint32_t> bytes) {
  const int32_t start = c.outputPosition;
  for (uint32_t byte : bytes) {
    if (c.outputPosition >= c.outputCapacity) {
      c.outputPosition = start;
      c.status = KSV_STATUS_FULL;
      return false;
    }
    c.output[c.outputPosition++] = static_cast<uint8_t>(byte);
  }
  ++c.unitsWritten;
  return true;
}

bool refuseCode(Converter& c) {
  c.status = KSV_STATUS_UNMAPPABLE;
  return false;
}

}  // namespace

void decodeEuc(Converter& c) {
  const bool jis2004 = c.sourceDecoder == Codec::kEucJis2004;
  if (!hasBytes(c, 1)) return;
  const uint8_t* in = c.input + c.inputPosition;
  if (in[0] >= 0xA0) {
    if (!hasBytes(c, 2)) return;
    if (in[1] < 0xA0) return refuseByte(c);
    takeCode(c, jis2004 ? 2011 : 2006, sevenBits(in[0], in[1]), 2);
  } else if (in[0] == 0x8E) {
    if (!hasBytes(c, 2)) return;
    if (in[1] < 0xA0) return refuseByte(c);
    takeCode(c, 2003, in[1], 2);
  } else if (in[0] == 0x8F) {
    if (!hasBytes(c, 3)) return;
    if (in[1] < 0xA0 || in[2] < 0xA0) return refuseByte(c);
    const uint32_t code = sevenBits(in[1], in[2]);
    takeCode(c, jis2004 ? 2011 : 2007, jis2004 ? code + kPlane2 : code, 3);
  } else if (in[0] > 0x7E) {
    refuseByte(c);
  } else {
    takeCode(c, 2001, in[0], 1);
  }
}

void decodeEucJpFix(Converter& c) {
  if (!hasBytes(c, 2)) return;
  const uint8_t* in = c.input + c.inputPosition;
  if (in[0] == 0 && in[1] >= 0xA0) {
    takeCode(c, 2003, in[1], 2);
  } else if (in[0] == 0 && in[1] <= 0x7E) {
    takeCode(c, 2001, in[1], 2);
  } else if (in[0] < 0xA0) {
    refuseByte(c);
  } else if (in[1] >= 0xA0) {
    takeCode(c, 2006, sevenBits(in[0], in[1]), 2);
  } else if (in[1] >= 0x21 && in[1] <= 0x7E) {
    takeCode(c, 2007, sevenBits(in[0], in[1]), 2);
  } else {
    refuseByte(c);
  }
}

bool writeEucUnit(Converter& c, uint32_t unit) {
  const uint32_t row = (unit >> 8) % 256;
  const uint32_t high = row | 0x80;
  const uint32_t low = unit % 256 | 0x80;
  switch (c.targetGroup) {
    case 2001:
      return writeBytes(c, {unit});
    case 2003:
      return writeBytes(c, {0x8E, unit});
    case 2006:
      return row >= 0x7F && row <= 0x92 ? refuseCode(c) : writeBytes(c, {high, low});
    case 2007:
      return writeBytes(c, {0x8F, high, low});
    case 2011:
      return (unit & kPlane2) != 0 ? writeBytes(c, {0x8F, high, low}) : writeBytes(c, {high, low});
    default:
      return refuseCode(c);
  }
}

bool writeEucFixUnit(Converter& c, uint32_t unit) {
  const uint32_t row = (unit >> 8) % 256;
  switch (c.targetGroup) {
    case 2001:
    case 2003:
      return writeBytes(c, {0, unit});
    case 2006:
      return row >= 0x7F && row <= 0x92 ? refuseCode(c)
                                        : writeBytes(c, {row | 0x80, unit % 256 | 0x80});
    case 2007:
      return writeBytes(c, {row | 0x80, unit});
    default:
      return refuseCode(c);
  }
}

}  // namespace ksv_reference
