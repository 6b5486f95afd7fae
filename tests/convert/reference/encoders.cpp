#include <string>
#include <vector>

#include "reference/composition.h"
#include "reference/parts.h"

namespace ksv_reference {
namespace {

bool refuse(Converter& c, uint32_t status) {
  c.status = status;
  return false;
}

void takeGroup(Converter& c, const Subset& group, uint32_t code) {
  c.targetGroup = group.id;
  c.targetGroupType = group.kind;
  c.outputWidth = group.bytesPerCode;
  c.outputCode = code;
}

bool takeSameGroup(Converter& c) {
  for (const Subset* group : c.targetCharset->members) {
    if (group->kind == 3) {
      if (c.unicodeCode < 0xE000 || c.unicodeCode >= 0xE000U + group->defNumber) continue;
      takeGroup(c, *group, group->defStart + c.unicodeCode - 0xE000);
      return true;
    }
    if (group->id != c.decodedGroup) continue;
    takeGroup(c, *group, c.groupCode);
    return true;
  }
  return false;
}

void findUnicodeOfGroupCode(Converter& c) {
  if (c.unicodeCode != 0 || c.groupCode == 0) return;
  const Subset* group = c.rules->findSubset(c.decodedGroup);
  if (group == nullptr) return;
  const Composition* composed = group->id == 2011 ? findCompositionByCode(c.groupCode) : nullptr;
  if (composed != nullptr) {
    c.unicodeCode = composed->base;
    c.secondCode = composed->mark;
    return;
  }
  uint32_t unicode = 0;
  if (group->toUcs.lookup(c.groupCode, unicode)) c.unicodeCode = unicode;
}

bool takeFallbackGroup(Converter& c) {
  const Subset* fallback = nullptr;
  for (const Subset* group : c.targetCharset->members) {
    if (group->id == 2001 || group->id == 2002) {
      fallback = group;
      break;
    }
  }
  if (fallback == nullptr) {
    for (const Subset* group : c.targetCharset->members) {
      if (fallback == nullptr || group->bytesPerCode < fallback->bytesPerCode) fallback = group;
    }
  }
  if (fallback == nullptr) return false;
  takeGroup(c, *fallback, c.groupCode);
  return true;
}

bool takeControlCode(Converter& c) { return isControlCode(c.groupCode) && takeFallbackGroup(c); }

bool takeThroughUnicode(Converter& c) {
  findUnicodeOfGroupCode(c);
  if (c.unicodeCode == 0 && c.rawCode != 0) return takeControlCode(c);
  for (size_t i = 0; i < c.targetCharset->members.size(); ++i) {
    const Subset& group = *c.targetCharset->members[i];
    if (group.kind == 3) continue;
    uint32_t code = 0;
    uint16_t bytes = 0;
    if (!group.fromUcs.hasTable()) {
      takeGroup(c, group, c.unicodeCode);
      return true;
    }
    if (group.fromUcs.entry(c.unicodeCode, code) && (code != 0 || c.unicodeCode == 0)) {
      takeGroup(c, group, code);
      return true;
    }
    if (c.rules->findSequence(*c.targetCharset, i, c.unicodeCode, code, bytes)) {
      takeGroup(c, group, code);
      c.sequenceLength = bytes;
      return true;
    }
  }
  return takeControlCode(c);
}

void composeForGroup2011(Converter& c) {
  if (c.targetGroup != 2011 || c.secondCode == 0) return;
  const Composition* composed = findCompositionByPair(c.unicodeCode, c.secondCode);
  if (composed == nullptr) return;
  c.outputCode = composed->code;
  c.secondCode = 0;
}

void settleSecondCode(Converter& c) {
  if (c.secondCode == 0) return;
  const uint32_t id = c.targetCharsetId;
  if (id == 1001 || id == 1002 || (id >= 1007 && id <= 1012)) {
    c.secondCode = standaloneMark(c.secondCode);
  } else if (id < 1003 || id > 1006) {
    c.secondCode = 0;
  }
}

int32_t unitWidth(const Converter& c) { return c.targetGroup == 2011 ? 2 : c.outputWidth; }

bool writeTransformed(Converter& c, uint32_t unit, uint32_t transformed) {
  if (transformed == 0 && unit != 0) return refuse(c, KSV_STATUS_UNMAPPABLE);
  return writePlainUnit(c, transformed, unitWidth(c));
}

bool writeUnit(Converter& c, uint32_t unit) {
  switch (c.targetEncoder) {
    case Codec::kShiftJis:
    case Codec::kWindows31j:
    case Codec::kOasysWin:
      return writeTransformed(c, unit, jisToShiftJis(unit));
    case Codec::kShiftJis2004:
      return writeTransformed(c, unit, jisToShiftJis2004(unit));
    case Codec::kEucJp:
    case Codec::kEucJis2004:
      return writeEucUnit(c, unit);
    case Codec::kEucJpFix:
      return writeEucFixUnit(c, unit);
    case Codec::kUcs2:
      return writeUcs2Unit(c, unit);
    case Codec::kUcs4:
      return writeUcs4Unit(c, unit);
    case Codec::kUtf16:
      return writeUtf16Unit(c, unit);
    case Codec::kUtf8:
      return writeUtf8Unit(c, unit);
    default:
      return writePlainUnit(c, unit, unitWidth(c));
  }
}

bool writeSequence(Converter& c, uint32_t code) {
  const int32_t width = unitWidth(c);
  const int32_t length = c.sequenceLength;
  if (length < width) return refuse(c, KSV_STATUS_FAILURE);
  std::vector<uint8_t> bytes(static_cast<size_t>(length), 0);
  for (int32_t i = length - 1; i >= 0; --i) {
    bytes[static_cast<size_t>(i)] = static_cast<uint8_t>(code);
    code >>= 8;
  }
  for (int32_t i = 0; i < length / width; ++i) {
    uint32_t unit = 0;
    for (int32_t k = 0; k < width; ++k) {
      unit = (unit << 8) | bytes[static_cast<size_t>(i * width + k)];
    }
    if (!writeUnit(c, unit)) return false;
  }
  return true;
}

bool writeNewline(Converter& c) {
  const uint32_t form = c.options.newlineForm;
  const bool wide = unitWidth(c) != 1;
  if (form == KSV_NEWLINE_CR) return writeUnit(c, 13);
  if (form == KSV_NEWLINE_LF) return writeUnit(c, 10);
  if (form == KSV_NEWLINE_LINE_SEPARATOR && wide) return writeUnit(c, 0x2028);
  if (form == KSV_NEWLINE_PARAGRAPH_SEPARATOR && wide) return writeUnit(c, 0x2029);
  return writeUnit(c, 13) && writeUnit(c, 10);
}

bool writeCodes(Converter& c) {
  if (c.sequenceLength != 0) {
    return writeSequence(c, c.outputCode) && (c.secondCode == 0 || writeSequence(c, c.secondCode));
  }
  if (c.options.convertNewlines != 0 && c.outputCode == 13) return writeNewline(c);
  return writeUnit(c, c.outputCode) && (c.secondCode == 0 || writeUnit(c, c.secondCode));
}

}  // namespace

bool mapCharacter(Converter& c) {
  if (c.status == KSV_STATUS_FULL) return true;
  if (c.status == KSV_STATUS_FLUSH) return refuse(c, KSV_STATUS_DONE);
  if (!takeSameGroup(c) && !takeThroughUnicode(c)) return refuse(c, KSV_STATUS_UNMAPPABLE);
  composeForGroup2011(c);
  settleSecondCode(c);
  return true;
}

void writeCharacter(Converter& c) {
  const int32_t position = c.outputPosition;
  const int32_t units = c.unitsWritten;
  if (writeCodes(c)) {
    c.status = KSV_STATUS_WRITTEN;
    return;
  }
  c.outputPosition = position;
  c.unitsWritten = units;
}

bool writePlainUnit(Converter& c, uint32_t unit, int32_t width) {
  if (c.outputPosition + width > c.outputCapacity) return refuse(c, KSV_STATUS_FULL);
  for (int32_t i = 0; i < width; ++i) {
    const int32_t significance = c.options.outputBigEndian != 0 ? width - 1 - i : i;
    c.output[c.outputPosition + i] = static_cast<uint8_t>(unit >> (8 * significance));
  }
  c.outputPosition += width;
  ++c.unitsWritten;
  return true;
}

void encode(Converter& c) {
  switch (c.targetEncoder) {
    case Codec::kUcs2:
    case Codec::kUcs4:
    case Codec::kUtf16:
    case Codec::kUtf8:
      return encodeUnicode(c);
    case Codec::kIso2022Jp:
    case Codec::kCp50220:
      return encodeIso2022Jp(c);
    default:
      if (mapCharacter(c)) writeCharacter(c);
  }
}

}  // namespace ksv_reference
