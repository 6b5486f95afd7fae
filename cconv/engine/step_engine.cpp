#include "cconv/engine/step_engine.h"

#include "cconv/engine/converter.h"
#include "cconv/engine/unit_writer.h"

namespace ksv {
namespace {

// Where the current character began, for a call that ends before it is written.
struct CharacterStart {
  int32_t position;
  int32_t count;
};

enum class Step { kGoOn, kStop };

// Whether a step got ahead in input or output. A rule file may name an encoder as
// its decoder, which then takes nothing from the input and might go on for ever.
bool gotAhead(const ConverterRecord& record, int32_t inputBefore, int32_t outputBefore) {
  return record.inputPosition != inputBefore || record.outputPosition != outputBefore;
}

// Decodes one character. The raw code moves to the previous raw code, except when
// the end of the input cuts the character: then both stay, so that a LF that comes
// in two calls is still dropped behind its CR.
Step decodeStep(ConverterRecord& record, CodecFunction decode, CharacterStart& start) {
  if (endsAtBuffers(record)) return Step::kStop;
  const uint32_t rawCode = record.rawCode;
  const uint32_t previousRawCode = record.previousRawCode;
  record.previousRawCode = rawCode;
  record.rawCode = 0;
  record.unicodeCode = 0;
  record.outputWidth = 0;
  record.sequenceLength = 0;
  record.secondCode = 0;
  start = {record.inputPosition, record.charactersRead};
  decode(record);
  if (record.status == KSV_STATUS_WRITTEN) {
    // That was a byte-order mark. The character begins behind it.
    start.position = record.inputPosition;
    decode(record);
  }
  if (record.status == KSV_STATUS_INCOMPLETE) {
    record.rawCode = rawCode;
    record.previousRawCode = previousRawCode;
  } else if (record.status == KSV_STATUS_INVALID && record.skipInvalid != 0) {
    record.status = KSV_STATUS_WRITTEN;  // the decoder has stepped over the bad bytes
  }
  return Step::kGoOn;
}

// Every line end becomes code 13, which the unit writer turns into the newline
// form. True for the LF of a CR LF, which is dropped.
bool rewriteLineEnd(ConverterRecord& record) {
  if (record.rawCode == kLineFeed && record.previousRawCode == kCarriageReturn) return true;
  if (record.rawCode == kLineFeed || record.rawCode == kCarriageReturn ||
      record.unicodeCode == 0x2028 || record.unicodeCode == 0x2029) {
    record.groupCode = kCarriageReturn;
    record.unicodeCode = kCarriageReturn;
  }
  return false;
}

// Prepares the replacement to be written without mapping.
void replaceCharacter(ConverterRecord& record) {
  const uint32_t(&replacement)[4] =
      record.groupCode < 0x100 ? record.narrowReplacement : record.wideReplacement;
  record.targetGroup = replacement[0];
  record.targetGroupType = replacement[1];
  record.outputCode = replacement[2];
  record.outputWidth = static_cast<uint16_t>(replacement[3]);
  record.sequenceLength = 0;
  record.secondCode = 0;
  record.status = KSV_STATUS_FULL;
}

// Encodes the decoded character, or its replacement; a replacement that is refused
// itself stays refused.
void encodeStep(ConverterRecord& record, CodecFunction encode, const CharacterStart& start) {
  if (record.options.convertNewlines != 0 && rewriteLineEnd(record)) {
    record.status = KSV_STATUS_WRITTEN;
    return;
  }
  encode(record);
  if (record.status == KSV_STATUS_UNMAPPABLE && record.options.replaceUnmappable != 0) {
    replaceCharacter(record);
    // Looked at once more, since the mapping may have found that it is a line separator.
    if (record.options.convertNewlines != 0) rewriteLineEnd(record);
    encode(record);
  }
  if (record.status == KSV_STATUS_FULL) {
    record.charactersRead = start.count;
    record.inputPosition = start.position;
  }
}

}  // namespace

void convertByCharacters(ConverterRecord& record, int32_t characters) {
  const CodecFunction decode = sourceDecoder(record)->function;
  const CodecFunction encode = targetEncoder(record)->function;
  CharacterStart start = {};
  for (; record.status == KSV_STATUS_WRITTEN && characters > 0; --characters) {
    const int32_t inputBefore = record.inputPosition;
    const int32_t outputBefore = record.outputPosition;
    if (decodeStep(record, decode, start) == Step::kStop) return;
    if (record.status == KSV_STATUS_DECODED) encodeStep(record, encode, start);
    if (record.status == KSV_STATUS_WRITTEN && !gotAhead(record, inputBefore, outputBefore)) {
      record.status = KSV_STATUS_FAILURE;
    }
  }
}

}  // namespace ksv
