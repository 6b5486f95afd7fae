#include "cconv/bulk/engine_answer.h"

#include "cconv/engine/converter.h"
#include "cconv/engine/step_engine.h"
#include "cconv/rules/code_table.h"

namespace ksv {
namespace {

Entry lineEndFlag(uint32_t rawCode) {
  if (rawCode == '\r') return kIsCarriageReturn;
  return rawCode == '\n' ? kIsLineFeed : 0;
}

// What the engine makes of one character in a record of its own.
struct Answer {
  uint8_t output[16];
  ConverterRecord record;
  bool isOneCharacter = false;
};

void ask(const ConverterRecord& record, const uint8_t* input, int32_t length,
         uint32_t designatedGroup, Answer& answer) {
  ConverterRecord& scratch = answer.record;
  scratch = record;
  scratch.input = input;
  scratch.inputPosition = 0;
  scratch.inputLength = length;
  scratch.output = answer.output;
  scratch.outputPosition = 0;
  scratch.outputCapacity = sizeof answer.output;
  scratch.charactersRead = 0;
  scratch.unitsWritten = 0;
  scratch.rawCode = 0;  // no carriage return before
  scratch.skipInvalid = 0;
  scratch.options.replaceUnmappable = 0;
  scratch.defaultLanguage[0] = '\0';
  scratch.designatedGroup = designatedGroup;
  scratch.status = KSV_STATUS_WRITTEN;
  const ProvisionalAnswers provisional;
  convertByCharacters(scratch, 1);
  answer.isOneCharacter = !provisional.any() && scratch.status == KSV_STATUS_WRITTEN &&
                          scratch.inputPosition == length && scratch.charactersRead == 1 &&
                          scratch.outputPosition <= kLongestOutput &&
                          scratch.unitsWritten <= kMostUnits;
}

Entry entryOf(const Answer& answer) {
  const ConverterRecord& scratch = answer.record;
  return makeEntry(answer.output, scratch.outputPosition, scratch.unitsWritten) |
         (scratch.options.convertNewlines != 0 ? lineEndFlag(scratch.rawCode) : 0);
}

// With its escape sequence, where nothing is designated before.
Entry askForDesignation(const ConverterRecord& record, const uint8_t* input, int32_t length) {
  Answer whole;
  ask(record, input, length, 0, whole);
  const uint32_t group = whole.record.designatedGroup;
  // A group that is not remembered gets its sequence from the engine each time.
  if (!whole.isOneCharacter || group == 0 || designationIndex(group) > kMostDesignatedGroup ||
      whole.record.unitsWritten != 1) {
    return kNoEntry;
  }
  Answer bare;
  ask(record, input, length, group, bare);
  const int32_t escapeLength = whole.record.outputPosition - bare.record.outputPosition;
  if (!bare.isOneCharacter || escapeLength <= 0) return kNoEntry;
  return designatingEntry(entryOf(whole), static_cast<uint32_t>(escapeLength), group);
}

}  // namespace

Entry askEngine(const ConverterRecord& record, const uint8_t* input, int32_t length) {
  if (targetEncoder(record)->keepsState) return askForDesignation(record, input, length);
  Answer answer;
  ask(record, input, length, record.designatedGroup, answer);
  return answer.isOneCharacter ? entryOf(answer) : kNoEntry;
}

}  // namespace ksv
