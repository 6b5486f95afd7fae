#include "cconv/engine/mapping.h"

#include "cconv/engine/composition.h"
#include "cconv/engine/converter.h"
#include "cconv/rules/table_loader.h"

namespace ksv {
namespace {

void takeGroup(ConverterRecord& record, const GroupDef& group, uint32_t outputCode,
               uint16_t sequenceLength) {
  record.targetGroup = group.id;
  record.targetGroupType = group.type();
  record.outputWidth = group.bytesPerCode;
  record.outputCode = outputCode;
  record.sequenceLength = sequenceLength;
}

// The group that the character was decoded in passes its code on unchanged; a
// user-defined group of the target takes its share of the Private Use Area.
bool mapWithinSameGroup(ConverterRecord& record, const CharsetDef& target) {
  if (!target.hasUserGroups()) {
    const GroupDef* group = target.findGroup(record.decodedGroup);
    if (group == nullptr) return false;
    takeGroup(record, *group, record.groupCode, 0);
    return true;
  }
  for (const GroupDef* group : target.groups) {
    if (group->isUser()) {
      uint32_t code = 0;
      if (!group->ucsToUserCode(record.unicodeCode, code)) continue;
      takeGroup(record, *group, code, 0);
      return true;
    }
    if (group->id == record.decodedGroup) {
      takeGroup(record, *group, record.groupCode, 0);
      return true;
    }
  }
  return false;
}

// For codecs that only find the group and its code.
void completeUnicode(ConverterRecord& record) {
  if (record.unicodeCode != 0 || record.groupCode == 0) return;
  const GroupDef* group = findGroupById(record.decodedGroup);
  if (group == nullptr) return;
  if (group->id == charset_id::kJisX0213) {
    if (const Composition* composed = findComposition(record.groupCode)) {
      record.unicodeCode = composed->base;
      record.secondCode = composed->mark;
      return;
    }
  }
  uint32_t unicode = 0;
  if (tableLookup(group->toUcs, record.groupCode, unicode)) record.unicodeCode = unicode;
}

// Whether the group's own table has the character.
bool groupTableHolds(const GroupDef& group, uint32_t unicode, uint32_t& code) {
  const CodeTable& table = group.fromUcs;
  const CodeTable::Answers answers = table.answers();
  if (answers == CodeTable::Answers::kNothing) return false;
  if (answers == CodeTable::Answers::kItself) {
    code = unicode;
    return true;
  }
  code = table.find(unicode);
  return code != 0 || (unicode == 0 && table.low == 0 && table.coverage.coversZero());
}

// Walks the groups in order; the first that has the character, in its table or
// in one of its destination tables, takes it.
EncodedCode walkGroups(const CharsetDef& target, uint32_t unicode) {
  EncodedCode found;
  for (size_t index = 0; index < target.groups.count(); ++index) {
    const GroupDef& group = *target.groups[index];
    if (group.isUser()) continue;
    found.group = static_cast<uint16_t>(index + 1);
    if (groupTableHolds(group, unicode, found.code)) return found;
    const TableList* tables = target.destTablesOf(index);
    if (tables != nullptr && tableListLookup(*tables, unicode, found.code, found.sequenceLength)) {
      return found;
    }
  }
  return EncodedCode();
}

EncodedCode encodeUnicode(const LoadedCharset& target, uint32_t unicode) {
  EncodedCode found;
  if (target.findings.encodedCodes.find(unicode, found)) return found;
  const ProvisionalAnswers provisional;
  found = walkGroups(target, unicode);
  if (!provisional.any()) target.findings.encodedCodes.remember(unicode, found);
  return found;
}

// Where control codes go that no group has.
const GroupDef* fallbackGroup(const CharsetDef& target) {
  const GroupDef* narrowest = nullptr;
  for (const GroupDef* group : target.groups) {
    if (group->id == charset_id::kIso646Irv || group->id == charset_id::kJisX0201Latin) {
      return group;
    }
    if (narrowest == nullptr || group->bytesPerCode < narrowest->bytesPerCode) narrowest = group;
  }
  return narrowest;
}

bool mapControlCode(ConverterRecord& record, const CharsetDef& target) {
  if (!isControlCode(record.groupCode)) return false;
  const GroupDef* group = fallbackGroup(target);
  if (group == nullptr) return false;
  takeGroup(record, *group, record.groupCode, 0);
  return true;
}

bool mapThroughUnicode(ConverterRecord& record, const LoadedCharset& target) {
  completeUnicode(record);
  if (record.unicodeCode == 0 && record.rawCode != 0) return mapControlCode(record, target);
  const GroupDef* first = target.firstPlainGroup();
  if (first != nullptr && first->fromUcs.isIdentity()) {
    takeGroup(record, *first, record.unicodeCode, 0);
    return true;
  }
  const EncodedCode found = encodeUnicode(target, record.unicodeCode);
  if (found.group == 0) return mapControlCode(record, target);
  takeGroup(record, *target.groups[found.group - 1u], found.code, found.sequenceLength);
  return true;
}

bool isJapaneseTarget(CharsetId id) {
  return id == charset_id::kShiftJis || id == charset_id::kWindows31J ||
         (id >= charset_id::kEucJp && id <= charset_id::kIso2022Jp2004);
}

bool isUnicodeTarget(CharsetId id) { return id >= charset_id::kUcs2 && id <= charset_id::kUtf8; }

// A base and a mark become one code of JIS X 0213, or the mark becomes a code
// of its own; targets that have no code for it lose it.
void placeSecondCode(ConverterRecord& record) {
  if (record.targetGroup == charset_id::kJisX0213) {
    if (const Composition* row = findComposition(record.unicodeCode, record.secondCode)) {
      record.outputCode = row->jisCode;
      record.secondCode = 0;
      return;
    }
  }
  if (isJapaneseTarget(record.targetCharsetId)) {
    record.secondCode = standaloneMark(record.secondCode);
  } else if (!isUnicodeTarget(record.targetCharsetId)) {
    record.secondCode = 0;
  }
}

bool isWindows31JGroup(CharsetId id) {
  switch (id) {
    case charset_id::kJisX0201Latin:
    case charset_id::kJisX0201Kana:
    case charset_id::kJisX0208:
    case charset_id::kNecExtset:
    case charset_id::kIbmExtset:
    case charset_id::kNecIbmExtset:
      return true;
    default:
      return false;
  }
}

bool windows31JMaps(uint32_t unicode) {
  const CharsetDef* charset = findCharsetById(charset_id::kWindows31J);
  if (charset == nullptr) return false;
  bool maps = false;
  for (GroupDef* group : charset->groups) {
    if (group->isUser()) continue;
    ensureTableLoaded(&group->fromUcs);
    uint32_t code = 0;
    maps = maps || tableLookup(group->fromUcs, unicode, code);
  }
  return maps;
}

}  // namespace

bool mapCharacter(ConverterRecord& record) {
  if (record.status == KSV_STATUS_FULL) return true;
  if (record.status == KSV_STATUS_FLUSH) {
    record.status = KSV_STATUS_DONE;
    return false;
  }
  const LoadedCharset& target = *targetCharset(record);
  if (!mapWithinSameGroup(record, target) && !mapThroughUnicode(record, target)) {
    record.status = KSV_STATUS_UNMAPPABLE;
    return false;
  }
  if (record.secondCode != 0) placeSecondCode(record);
  return true;
}

bool isInWindows31JRepertoire(const ConverterRecord& record, uint32_t code) {
  if (isWindows31JGroup(record.decodedGroup)) return true;
  if (code >= 0xE000 && code <= 0xF8FF) return code < 0xE759;
  if (code >= 0xFF00 && code <= 0xFFFE) {
    return (code >= 0xFF01 && code <= 0xFF5E) || (code >= 0xFF61 && code <= 0xFF9F) ||
           (code >= 0xFFE0 && code <= 0xFFE2) || code == 0xFFE5;
  }
  if (code == record.narrowReplacement[2] || code == record.wideReplacement[2]) return true;
  return windows31JMaps(record.unicodeCode);
}

}  // namespace ksv
