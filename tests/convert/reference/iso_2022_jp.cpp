// ISO-2022-JP and ISO-2022-JP-2004.
#include <string>

#include "reference/parts.h"

namespace ksv_reference {
namespace {

const uint32_t kPlane2 = 0x10000;

// The group that the bytes behind an ESC designate, and how many they are; 0: none.
uint32_t designated(const std::string& bytes, int32_t& count) {
  count = 2;
  const std::string two = bytes.substr(0, 2);
  if (two == "$B") return 2006;
  if (two == "$@") return 2004;
  if (two == "(B") return 2001;
  if (two == "(J") return 2002;
  if (two == "(I") return 2003;
  count = 3;
  return bytes == "$(Q" || bytes == "$(P" ? 2011 : 0;
}

// Reads the escapes in front of a character; false: the call is over.
bool readEscapes(Converter& c, bool& plane2) {
  while (c.inputPosition < c.inputLength && c.input[c.inputPosition] == 0x1B) {
    std::string bytes;
    for (int32_t i = 1; i <= 3 && c.inputPosition + i < c.inputLength; ++i)
      bytes += static_cast<char>(c.input[c.inputPosition + i]);
    int32_t count = 0;
    const uint32_t group = designated(bytes, count);
    if (group == 0) {
      c.status = KSV_STATUS_INCOMPLETE;
      return false;
    }
    c.decoderState = group;
    plane2 = bytes == "$(P";
    c.inputPosition += 1 + count;
  }
  if (c.inputPosition < c.inputLength) return true;
  c.status = KSV_STATUS_DONE;
  return false;
}

const Subset* memberOf(const Charset& charset, uint32_t id) {
  for (const Subset* group : charset.members)
    if (group->id == id) return group;
  return nullptr;
}

const Subset* stateGroup(const Converter& c) {
  uint32_t id = c.decoderState;
  if (c.sourceDecoder == Codec::kCp50220 && id == 2004) id = 2006;
  for (const Subset* group : c.sourceCharset->members) {
    if (group->id == id && group->bytesPerCode != 3) return group;
  }
  return nullptr;
}

// Where mail has the rows of vendors.
const Subset* groupOfRow(const Converter& c, const Subset* group, uint8_t row) {
  if (c.sourceDecoder != Codec::kCp50220 || group->id != 2006) return group;
  const Subset* vendors = nullptr;
  if (row == 0x20 + 13) vendors = memberOf(*c.sourceCharset, 2008);
  if (row >= 0x20 + 89 && row <= 0x20 + 92) vendors = memberOf(*c.sourceCharset, 2012);
  return vendors == nullptr ? group : vendors;
}

bool writeEscape(Converter& c, const std::string& bytes) {
  if (c.outputPosition + 1 + static_cast<int32_t>(bytes.size()) > c.outputCapacity) {
    c.status = KSV_STATUS_FULL;
    return false;
  }
  c.output[c.outputPosition++] = 0x1B;
  for (char byte : bytes) c.output[c.outputPosition++] = static_cast<uint8_t>(byte);
  return true;
}

std::string escapeOf(uint32_t group, uint32_t charset) {
  if (group == 2001) return "(B";
  if (group == 2002) return "(J";
  if (group == 2003) return "$I";
  if (group == 2004) return "$@";
  if (group == 2006) return charset == 1012 ? "$(Q" : "$B";
  return "";
}

void encodeJisX0213(Converter& c) {
  const int32_t start = c.outputPosition;
  const uint32_t planeBefore = c.designatedPlane;
  const uint32_t plane = (c.outputCode & kPlane2) != 0 ? 12 : 11;
  if (c.designatedGroup != 2011 || c.designatedPlane != plane) {
    if (!writeEscape(c, plane == 12 ? "$(P" : "$(Q")) return;
  }
  c.designatedPlane = plane;
  writeCharacter(c);
  if (c.status != KSV_STATUS_WRITTEN) {
    c.outputPosition = start;
    c.designatedPlane = planeBefore;
  }
}

}  // namespace

void decodeIso2022Jp(Converter& c) {
  const int32_t start = c.inputPosition;
  bool plane2 = false;
  if (!readEscapes(c, plane2)) return;
  const uint8_t first = c.input[c.inputPosition];
  const Subset* group = stateGroup(c);
  if (group == nullptr) {
    ++c.inputPosition;
    c.status = KSV_STATUS_INVALID;
    return;
  }
  if (group->bytesPerCode == 1) {
    ++c.inputPosition;
    takeCharacter(c, *group, first, first, 0);
    return;
  }
  if (first == 13 || first == 10 || first == 9) {
    Subset ascii;
    ascii.id = 2001;
    ascii.kind = 1;
    ++c.inputPosition;
    takeCharacter(c, ascii, first, first, 0);
    return;
  }
  if (c.inputPosition + 1 >= c.inputLength) {
    c.inputPosition = start;
    c.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  uint32_t code = first * 256U + c.input[c.inputPosition + 1];
  if (plane2) code |= kPlane2;
  c.inputPosition += 2;
  takeCharacter(c, *groupOfRow(c, group, first), code, code, 0);
}

void encodeIso2022Jp(Converter& c) {
  if (c.status == KSV_STATUS_FLUSH) {
    if (c.targetGroup == 2001 || writeEscape(c, "(B")) c.status = KSV_STATUS_DONE;
    return;
  }
  if (!mapCharacter(c)) return;
  if (c.targetEncoder == Codec::kCp50220 && (c.targetGroup == 2008 || c.targetGroup == 2012))
    c.targetGroup = 2006;
  if (c.targetGroup == 2011) return encodeJisX0213(c);
  if (c.targetGroup != c.designatedGroup) {
    const std::string escape = escapeOf(c.targetGroup, c.targetCharsetId);
    if (escape.empty()) {
      c.status = KSV_STATUS_UNMAPPABLE;
      return;
    }
    if (!writeEscape(c, escape)) return;
    c.designatedGroup = c.targetGroup;
  }
  writeCharacter(c);
}

}  // namespace ksv_reference
