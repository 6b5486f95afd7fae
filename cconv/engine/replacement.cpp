#include "cconv/engine/replacement.h"

#include "cconv/engine/converter.h"

namespace ksv {
namespace {

struct ReplacementPair {
  uint16_t narrow;
  uint16_t wide;
};

constexpr uint16_t kQuestionMark = 0x003F;
constexpr ReplacementPair kDefaults[] = {
    {kQuestionMark, 0x3013},  // GETA MARK
    {kQuestionMark, 0xFF1D},  // FULLWIDTH EQUALS SIGN
};
constexpr ReplacementPair kLastResort = {kQuestionMark, kQuestionMark};

// Group, type, code and width of the character in the first group that has a code
// other than 0 for it. Leaves the replacement alone when none has.
bool findReplacement(const CharsetDef& target, uint32_t unicode, uint32_t (&replacement)[4]) {
  for (const GroupDef* group : target.groups) {
    if (group->isUser()) continue;
    uint32_t code = 0;
    if (!tableLookup(group->fromUcs, unicode, code) || code == 0) continue;
    replacement[0] = group->id;
    replacement[1] = group->type();
    replacement[2] = code;
    replacement[3] = group->bytesPerCode;
    return true;
  }
  return false;
}

bool findPair(ConverterRecord& record) {
  const CharsetDef& target = *targetCharset(record);
  const bool narrow =
      findReplacement(target, record.options.narrowReplacement, record.narrowReplacement);
  const bool wide = findReplacement(target, record.options.wideReplacement, record.wideReplacement);
  return narrow && wide;
}

void choose(ConverterRecord& record, const ReplacementPair& pair) {
  record.options.narrowReplacement = pair.narrow;
  record.options.wideReplacement = pair.wide;
}

}  // namespace

void prepareReplacements(ConverterRecord& record) {
  if (findPair(record)) return;
  for (const ReplacementPair& pair : kDefaults) {
    choose(record, pair);
    if (findPair(record)) return;
  }
  choose(record, kLastResort);
}

}  // namespace ksv
