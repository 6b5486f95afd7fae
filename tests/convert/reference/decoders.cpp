#include <string>

#include "reference/composition.h"
#include "reference/parts.h"

namespace ksv_reference {
namespace {

constexpr uint32_t kTagStart = 0xE0001;
constexpr uint32_t kTagEnd = 0xE007F;
constexpr size_t kTagCapacity = 259;

bool bytesAre(const Converter& c, std::initializer_list<int> bytes) {
  int32_t at = c.inputPosition;
  for (int byte : bytes) {
    if (c.input[at++] != byte) return false;
  }
  return true;
}

void skipMark(Converter& c, int32_t bytes) {
  c.inputPosition += bytes;
  c.characterStart = c.inputPosition;
}

void testUcs2Mark(Converter& c) {
  if (bytesAre(c, {0xFE, 0xFF})) {
    c.inputBigEndian = 1;
    skipMark(c, 2);
  } else if (bytesAre(c, {0xFF, 0xFE})) {
    c.inputBigEndian = 0;
    skipMark(c, 2);
  }
}

void testUtf16Mark(Converter& c) {
  const uint8_t first = c.input[c.inputPosition];
  const uint8_t second = c.input[c.inputPosition + 1];
  if (first < 0xFE && second < 0xFE) return;
  c.inputBigEndian = first == 0xFE ? 1 : 0;
  skipMark(c, 2);
}

void testUcs4Mark(Converter& c) {
  if (bytesAre(c, {0xFF, 0xFE, 0, 0})) {
    c.inputBigEndian = 0;
    skipMark(c, 4);
  } else if (bytesAre(c, {0, 0, 0xFE, 0xFF})) {
    c.inputBigEndian = 1;
    skipMark(c, 4);
  }
}

void testUtf8Mark(Converter& c) {
  if (!bytesAre(c, {0xEF, 0xBB, 0xBF})) return;
  c.inputBigEndian = 1;
  skipMark(c, 3);
}

// False: the call is over, since the mark's bytes are not there yet or nothing
// follows it.
bool readMark(Converter& c, int32_t bytes, void (*test)(Converter&)) {
  if (c.detectByteOrderMark != 0) {
    if (c.inputLength - c.inputPosition < bytes) {
      c.status = KSV_STATUS_INCOMPLETE;
      return false;
    }
    c.detectByteOrderMark = 0;
    test(c);
  }
  if (c.inputPosition < c.inputLength) return true;
  c.status = KSV_STATUS_DONE;
  return false;
}

uint32_t readNumber(const Converter& c, int32_t at, int32_t width) {
  uint32_t number = 0;
  for (int32_t i = 0; i < width; ++i) {
    const int32_t index = c.inputBigEndian != 0 ? i : width - 1 - i;
    number = (number << 8) | c.input[at + index];
  }
  return number;
}

// True: the group holds the code; unicode is its character.
bool groupHoldsCode(const Subset& group, uint32_t code, uint32_t& unicode) {
  if (group.kind == 3) {
    if (!group.definesCode(code)) return false;
    unicode = 0xE000 + (code - group.defStart);
    return true;
  }
  if (group.toUcs.lookup(code, unicode)) return true;
  unicode = 0;
  return isControlCode(code);
}

// A character of a Unicode form: where its bytes begin, and its value.
struct Value {
  int32_t start = 0;
  uint32_t code = 0;
};

bool isPlainTagCharacter(uint32_t value) { return value >= 0xE0020 && value < kTagEnd; }

void readLanguageTag(Converter& c, int32_t tagStart) {
  std::string text;
  for (;;) {
    decode(c);
    if (c.status != KSV_STATUS_DECODED) {
      const bool steppedOver = c.status == KSV_STATUS_INVALID && c.skipInvalid != 0;
      if (!steppedOver) c.inputPosition = tagStart;
      return;
    }
    if (isPlainTagCharacter(c.unicodeCode)) {
      if (text.size() == kTagCapacity) {
        c.status = KSV_STATUS_INVALID;
        return;
      }
      text += static_cast<char>(c.unicodeCode - 0xE0000);
      continue;
    }
    c.currentLanguage = text;
    if (c.unicodeCode == kTagEnd) c.status = KSV_STATUS_INVALID;
    return;
  }
}

const Subset* findHoldingGroup(const Converter& c, uint32_t value, uint32_t& unicode) {
  for (const Subset* group : c.sourceCharset->members) {
    unicode = value;
    if (group->kind == 3) {
      if (!group->definesCode(value)) continue;
      unicode = 0xE000 + (value - group->defStart);
      return group;
    }
    uint32_t entry = 0;
    if (!group->toUcs.hasTable() || value < 0x80 ||
        (group->toUcs.entry(value, entry) && entry != 0)) {
      return group;
    }
  }
  return nullptr;
}

// The position stands behind the value (and its mark).
void searchGroups(Converter& c, const Value& value) {
  uint32_t unicode = 0;
  const Subset* group = findHoldingGroup(c, value.code, unicode);
  if (group != nullptr) {
    takeCharacter(c, *group, value.code, value.code, unicode);
  } else if (value.code == kTagStart) {
    readLanguageTag(c, value.start);
  } else if (isPlainTagCharacter(value.code) || value.code == kTagEnd) {
    c.decodedGroup = 0;
    c.decodedGroupType = 0;
    c.rawCode = c.groupCode = c.unicodeCode = value.code;
    c.status = KSV_STATUS_DECODED;
  } else {
    c.status = KSV_STATUS_INVALID;
    if (c.skipInvalid == 0) c.inputPosition = value.start;
  }
}

// Takes the following value as second code when the two compose.
void takeSecondCode(Converter& c, uint32_t base, bool (*read)(Converter&, Value&)) {
  const int32_t before = c.inputPosition;
  Value next;
  if (read(c, next) && findCompositionByPair(base, next.code) != nullptr) {
    c.secondCode = next.code;
  } else {
    c.inputPosition = before;
  }
}

bool readUtf16Unit(Converter& c, Value& unit) {
  if (c.inputLength - c.inputPosition < 2) return false;
  unit.start = c.inputPosition;
  unit.code = readNumber(c, c.inputPosition, 2);
  c.inputPosition += 2;
  return true;
}

int32_t utf8Length(uint8_t lead) {
  if (lead < 0xC0) return 1;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF8) return 4;
  return lead < 0xFC ? 5 : 6;
}

uint32_t utf8Payload(uint8_t lead) {
  switch (utf8Length(lead)) {
    case 1:
      return lead;
    case 2:
      return lead & 0x1FU;
    case 3:
      return lead & 0x0FU;
    case 4:
      return lead & 0x07U;
    case 5:
      return lead & 0x03U;
    default:
      return lead & 0x01U;
  }
}

void skipFillBytes(Converter& c) {
  while (c.inputPosition < c.inputLength && c.input[c.inputPosition] >= 0xFE) ++c.inputPosition;
}

// On false the position stands on the lead byte of a sequence that is cut, or at
// the end of the input.
bool readUtf8Value(Converter& c, Value& value) {
  skipFillBytes(c);
  if (c.inputPosition >= c.inputLength) return false;
  value.start = c.inputPosition;
  const uint8_t lead = c.input[c.inputPosition];
  const int32_t length = utf8Length(lead);
  if (c.inputLength - c.inputPosition < length) return false;
  value.code = utf8Payload(lead);
  for (int32_t i = 1; i < length; ++i) {
    value.code = (value.code << 6) | (c.input[c.inputPosition + i] & 0x3FU);
  }
  c.inputPosition += length;
  return true;
}

// The character of a byte in a fixed group; false: the group is missing.
bool lookUpGroup(Converter& c, uint32_t groupId, uint32_t code, const Subset*& group,
                 uint32_t& unicode) {
  group = c.rules->findSubset(groupId);
  unicode = 0;
  if (group == nullptr) return false;
  if (!group->toUcs.lookup(code, unicode)) unicode = 0;
  return true;
}

// One byte of the Shift_JIS family; the position is already behind it.
void decodeSingleByte(Converter& c, uint8_t byte) {
  const Subset* group = nullptr;
  uint32_t unicode = 0;
  const bool latin = byte < 0x80;
  const bool found = lookUpGroup(c, latin ? 2002 : 2003, byte, group, unicode);
  if (!found || (!latin && unicode == 0)) {
    c.status = KSV_STATUS_INVALID;
    return;
  }
  takeCharacter(c, *group, byte, byte, unicode);
}

// The first byte of the Shift_JIS family: true when a lead byte and its trail byte
// are there to be looked up.
bool readLeadAndTrail(Converter& c, uint8_t& lead, uint8_t& trail) {
  if (c.inputPosition >= c.inputLength) {
    c.status = KSV_STATUS_DONE;
    return false;
  }
  lead = c.input[c.inputPosition];
  if (lead < 0x80 || (lead >= 0xA1 && lead <= 0xDF)) {
    ++c.inputPosition;
    decodeSingleByte(c, lead);
    return false;
  }
  if (c.inputPosition + 1 >= c.inputLength) {
    c.status = KSV_STATUS_INCOMPLETE;
    return false;
  }
  trail = c.input[c.inputPosition + 1];
  return true;
}

void takePair(Converter& c, const Subset& group, uint8_t lead, uint8_t trail, uint32_t code,
              uint32_t unicode) {
  c.inputPosition += 2;
  takeCharacter(c, group, static_cast<uint32_t>(lead) << 8 | trail, code, unicode);
}

void refusePair(Converter& c) {
  ++c.inputPosition;
  c.status = KSV_STATUS_INVALID;
}

}  // namespace

void takeCharacter(Converter& c, const Subset& group, uint32_t raw, uint32_t code,
                   uint32_t unicode) {
  c.decodedGroup = group.id;
  c.decodedGroupType = group.kind;
  c.rawCode = raw;
  c.groupCode = code;
  c.unicodeCode = unicode;
  ++c.charactersRead;
  c.status = KSV_STATUS_DECODED;
}

void decodeByRules(Converter& c, uint32_t (*transform)(uint32_t)) {
  if (c.inputPosition >= c.inputLength) {
    c.status = KSV_STATUS_DONE;
    return;
  }
  bool incomplete = false;
  int32_t largestRead = 0;
  for (const Subset* group : c.sourceCharset->members) {
    const int32_t width = group->bytesPerCode;
    if (c.inputPosition + width > c.inputLength) {
      incomplete = true;
      continue;
    }
    const uint32_t number = readNumber(c, c.inputPosition, width);
    const uint32_t code = transform != nullptr && number != 0 ? transform(number) : number;
    if (number != 0 && code == 0) continue;
    if (width > largestRead) largestRead = width;
    uint32_t unicode = 0;
    if (!groupHoldsCode(*group, code, unicode)) continue;
    c.inputPosition += width;
    takeCharacter(c, *group, number, code, unicode);
    return;
  }
  if (incomplete) {
    c.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  c.status = KSV_STATUS_INVALID;
  if (c.skipInvalid != 0) c.inputPosition += largestRead > 0 ? largestRead : 1;
}

void decodeRuleDriven(Converter& c) { decodeByRules(c, nullptr); }

void decodeUcs2(Converter& c) {
  if (!readMark(c, 2, testUcs2Mark)) return;
  decodeRuleDriven(c);
  if (c.status == KSV_STATUS_DECODED && c.unicodeCode == 0) c.unicodeCode = c.rawCode;
}

void decodeUcs4(Converter& c) {
  if (!readMark(c, 4, testUcs4Mark)) return;
  if (c.inputLength - c.inputPosition < 4) {
    c.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  const Value value = {c.inputPosition, readNumber(c, c.inputPosition, 4)};
  c.inputPosition += 4;
  searchGroups(c, value);
}

void decodeUtf16(Converter& c) {
  if (!readMark(c, 2, testUtf16Mark)) return;
  Value value;
  if (!readUtf16Unit(c, value)) {
    c.status = KSV_STATUS_INCOMPLETE;
    return;
  }
  if (value.code < 0xD800 || value.code > 0xDFFF) {
    takeSecondCode(c, value.code, readUtf16Unit);
  } else {
    Value second;
    if (!readUtf16Unit(c, second)) {
      c.inputPosition = value.start;
      c.status = KSV_STATUS_INCOMPLETE;
      return;
    }
    if (value.code < 0xDC00) {
      value.code = (value.code - 0xD7F7) * 1024 + second.code;
    } else {
      value.code = (second.code - 0xD7F7) * 1024 + value.code;
    }
  }
  searchGroups(c, value);
}

void decodeUtf8(Converter& c) {
  if (!readMark(c, 3, testUtf8Mark)) return;
  Value value;
  if (!readUtf8Value(c, value)) {
    c.status = c.inputPosition >= c.inputLength ? KSV_STATUS_DONE : KSV_STATUS_INCOMPLETE;
    return;
  }
  takeSecondCode(c, value.code, readUtf8Value);
  searchGroups(c, value);
}

void decodeShiftJis(Converter& c) {
  uint8_t lead = 0;
  uint8_t trail = 0;
  if (!readLeadAndTrail(c, lead, trail)) return;
  const bool plane2 = c.sourceCharsetId == 1010;
  const uint32_t code = plane2 ? shiftJis2004ToJis(lead, trail) : shiftJisToJis(lead, trail);
  const Subset* group = nullptr;
  uint32_t unicode = 0;
  if (code == 0 || !lookUpGroup(c, plane2 ? 2011 : 2006, code, group, unicode)) {
    refusePair(c);
    return;
  }
  const Composition* composed = plane2 ? findCompositionByCode(code) : nullptr;
  if (composed != nullptr) {
    unicode = composed->base;
    c.secondCode = composed->mark;
  }
  if (unicode == 0) {
    refusePair(c);
    return;
  }
  takePair(c, *group, lead, trail, code, unicode);
}

void decodeWindows31j(Converter& c) {
  uint8_t lead = 0;
  uint8_t trail = 0;
  if (!readLeadAndTrail(c, lead, trail)) return;
  const uint32_t code = shiftJisToJis(lead, trail);
  for (uint32_t groupId : {2006U, 2008U, 2009U, 2012U, 3001U}) {
    const Subset* group = nullptr;
    uint32_t unicode = 0;
    if (code == 0 || !lookUpGroup(c, groupId, code, group, unicode) || unicode == 0) continue;
    takePair(c, *group, lead, trail, code, unicode);
    return;
  }
  refusePair(c);
}

}  // namespace ksv_reference
