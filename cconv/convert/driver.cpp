#include "cconv/convert/driver.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "cconv/bulk/registry.h"
#include "cconv/convert/pre_conversion.h"
#include "cconv/convert/waiting_tables.h"
#include "cconv/engine/converter.h"
#include "ksv_file.h"
#include "ksv_memory.h"

namespace ksv {

const char* inputDumpPath = nullptr;

namespace {

// Puts a pre-converted text in the place of the input, for one call of a record that asks
// for a pre-conversion. Each call converts its whole input anew from the first byte; the
// input position counts in the converted text.
class PreConvertedInput {
 public:
  explicit PreConvertedInput(ConverterRecord& record)
      : record_(record), input_(record.input), inputLength_(record.inputLength) {
    if (record.input == nullptr || record.inputLength <= 0) return;
    const int32_t capacity = std::max(record.outputCapacity, 0);
    buffer_ = static_cast<uint8_t*>(KSV_calloc(capacity, 1));
    if (buffer_ == nullptr && capacity > 0) {
      hasMemory_ = false;
      return;
    }
    const auto preConvert = record.preConversion == kUtf7 ? preConvertUtf7 : preConvertHz;
    const PreConverted converted = preConvert(input_, inputLength_, buffer_, capacity);
    truncated_ = converted.truncated;
    // What nothing can be made of is decoded as it is.
    if (converted.length == 0) return;
    record.input = buffer_;
    record.inputLength = converted.length;
  }

  ~PreConvertedInput() {
    KSV_free(buffer_);
    record_.input = input_;
    record_.inputLength = inputLength_;
  }

  PreConvertedInput(const PreConvertedInput&) = delete;
  PreConvertedInput& operator=(const PreConvertedInput&) = delete;

  // Without it the text is not decoded as what it is not.
  bool hasMemory() const { return hasMemory_; }

  // Whether there is not even room for the first character.
  bool nothingFits() const { return truncated_ && record_.input == input_; }

  // Text that the buffer cut off waits for more room.
  uint32_t endStatus(uint32_t status) const {
    const bool usedUp = status == KSV_STATUS_DONE || status == KSV_STATUS_INCOMPLETE;
    return truncated_ && usedUp ? uint32_t{KSV_STATUS_FULL} : status;
  }

 private:
  ConverterRecord& record_;
  const uint8_t* const input_;
  const int32_t inputLength_;
  uint8_t* buffer_ = nullptr;
  bool hasMemory_ = true;
  bool truncated_ = false;
};

void dumpInput(const ConverterRecord& record) {
  if (inputDumpPath == nullptr || *inputDumpPath == '\0' || record.input == nullptr) return;
  FILE* file = KSV_FileOpen(inputDumpPath, "ab");
  if (file == nullptr) return;
  if (const int64_t left = bytesLeft(record); left > 0) {
    KSV_FileWrite(record.input + record.inputPosition, 1, static_cast<int32_t>(left), file);
  }
  KSV_FileClose(file);
}

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

// Whether nothing is left, or no room, which the status then says.
bool isAtEnd(ConverterRecord& record) {
  if (record.inputPosition >= record.inputLength) {
    record.status = KSV_STATUS_DONE;
    return true;
  }
  if (record.outputPosition >= record.outputCapacity) {
    record.status = KSV_STATUS_FULL;
    return true;
  }
  return false;
}

// Decodes one character. The raw code moves to the previous raw code, except when
// the end of the input cuts the character: then both stay, so that a LF that comes
// in two calls is still dropped behind its CR.
Step decodeStep(ConverterRecord& record, CodecFunction decode, CharacterStart& start) {
  if (isAtEnd(record)) return Step::kStop;
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
  constexpr uint32_t kCr = 13;
  constexpr uint32_t kLf = 10;
  if (record.rawCode == kLf && record.previousRawCode == kCr) return true;
  if (record.rawCode == kLf || record.rawCode == kCr || record.unicodeCode == 0x2028 ||
      record.unicodeCode == 0x2029) {
    record.groupCode = kCr;
    record.unicodeCode = kCr;
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

namespace {

// How many characters are taken one by one before the bulk path is tried again.
constexpr int32_t kCharactersBetweenBulks = 8;

void convertInput(ConverterRecord& record) {
  dumpInput(record);
  const bool mayRemember = tablesAreMended(record);
  record.status = KSV_STATUS_WRITTEN;
  while (record.status == KSV_STATUS_WRITTEN && isMarkPending(record)) {
    convertByCharacters(record, 1);
  }
  BulkConverter* const bulk = mayRemember ? findBulkConverter(record) : nullptr;
  while (record.status == KSV_STATUS_WRITTEN) {
    if (bulk != nullptr) bulk->runAhead(record);
    if (record.status != KSV_STATUS_WRITTEN || isAtEnd(record)) return;
    convertByCharacters(
        record, bulk != nullptr ? kCharactersBetweenBulks : std::numeric_limits<int32_t>::max());
  }
}

void convertPreConverted(ConverterRecord& record) {
  const PreConvertedInput preConverted(record);
  if (!preConverted.hasMemory()) {
    record.status = KSV_STATUS_FAILURE;
    return;
  }
  if (preConverted.nothingFits()) {
    dumpInput(record);
    record.status = KSV_STATUS_FULL;
    return;
  }
  convertInput(record);
  record.status = preConverted.endStatus(record.status);
}

}  // namespace

bool buffersAreUsable(const ConverterRecord& record) {
  if (record.inputPosition < 0 || record.outputPosition < 0) return false;
  if (record.input == nullptr && record.inputPosition < record.inputLength) return false;
  return record.output != nullptr || record.outputPosition >= record.outputCapacity;
}

uint32_t convert(ConverterRecord& record) {
  if (!buffersAreUsable(record) || sourceDecoder(record) == nullptr ||
      targetEncoder(record) == nullptr) {
    record.status = KSV_STATUS_FAILURE;
  } else if (record.preConversion == kUtf7 || record.preConversion == kHz) {
    convertPreConverted(record);
  } else {
    convertInput(record);
  }
  return record.status;
}

}  // namespace ksv
