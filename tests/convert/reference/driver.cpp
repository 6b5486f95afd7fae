#include <vector>

#include "reference/converter.h"
#include "reference/parts.h"

namespace ksv_reference {
namespace {

constexpr uint32_t kCr = 13;
constexpr uint32_t kLf = 10;

// True: the line feed behind a carriage return is dropped.
bool rewriteLineEnd(Converter& c) {
  if (c.options.convertNewlines == 0) return false;
  if (c.rawCode == kLf && c.previousRawCode == kCr) return true;
  if (c.rawCode == kLf || c.rawCode == kCr || c.unicodeCode == 0x2028 || c.unicodeCode == 0x2029) {
    c.groupCode = kCr;
    c.unicodeCode = kCr;
  }
  return false;
}

void takeReplacement(Converter& c) {
  const Replacement& chosen = c.groupCode < 256 ? c.narrowReplacement : c.wideReplacement;
  c.targetGroup = chosen.group;
  c.targetGroupType = chosen.type;
  c.outputWidth = static_cast<uint16_t>(chosen.width);
  c.outputCode = chosen.code;
  c.sequenceLength = 0;
  c.secondCode = 0;
  c.status = KSV_STATUS_FULL;  // on entry of an encoder: the output code is prepared
}

// Writes the decoded character; leaves 21, or the status that ends the call.
void writeDecoded(Converter& c, int32_t charactersBefore) {
  bool replaced = false;
  for (;;) {
    if (rewriteLineEnd(c)) {
      c.status = KSV_STATUS_WRITTEN;
      return;
    }
    encode(c);
    if (c.status == KSV_STATUS_FULL) {
      c.charactersRead = charactersBefore;
      c.inputPosition = c.characterStart;
      return;
    }
    if (c.status != KSV_STATUS_UNMAPPABLE || c.options.replaceUnmappable == 0 || replaced) return;
    takeReplacement(c);
    replaced = true;
  }
}

// Decodes one character; false: the call ends.
bool readCharacter(Converter& c) {
  if (c.inputPosition >= c.inputLength) {
    c.status = KSV_STATUS_DONE;
    return false;
  }
  if (c.outputPosition >= c.outputCapacity) {
    c.status = KSV_STATUS_FULL;
    return false;
  }
  const uint32_t previousBefore = c.previousRawCode;
  const uint32_t rawBefore = c.rawCode;
  c.previousRawCode = c.rawCode;
  c.rawCode = 0;
  c.unicodeCode = 0;
  c.outputWidth = 0;
  c.sequenceLength = 0;
  c.secondCode = 0;
  c.characterStart = c.inputPosition;
  decode(c);
  if (c.status == KSV_STATUS_INCOMPLETE) {
    c.rawCode = rawBefore;
    c.previousRawCode = previousBefore;
  }
  if (c.status == KSV_STATUS_INVALID && c.skipInvalid != 0) c.status = KSV_STATUS_WRITTEN;
  return c.status == KSV_STATUS_DECODED || c.status == KSV_STATUS_WRITTEN;
}

void convertAll(Converter& c) {
  if (c.sourceDecoder == Codec::kNone || c.targetEncoder == Codec::kNone) {
    c.status = KSV_STATUS_FAILURE;
    return;
  }
  c.status = KSV_STATUS_WRITTEN;
  while (c.status == KSV_STATUS_WRITTEN) {
    const int32_t charactersBefore = c.charactersRead;
    if (!readCharacter(c)) return;
    if (c.status == KSV_STATUS_DECODED) writeDecoded(c, charactersBefore);
  }
}

}  // namespace

void decode(Converter& c) {
  switch (c.sourceDecoder) {
    case Codec::kSame:
      return decodeRuleDriven(c);
    case Codec::kShiftJis:
    case Codec::kShiftJis2004:
      return decodeShiftJis(c);
    case Codec::kWindows31j:
      return decodeWindows31j(c);
    case Codec::kUcs2:
      return decodeUcs2(c);
    case Codec::kUcs4:
      return decodeUcs4(c);
    case Codec::kUtf16:
      return decodeUtf16(c);
    case Codec::kUtf8:
      return decodeUtf8(c);
    case Codec::kEucJp:
    case Codec::kEucJis2004:
      return decodeEuc(c);
    case Codec::kEucJpFix:
      return decodeEucJpFix(c);
    case Codec::kIso2022Jp:
    case Codec::kCp50220:
      return decodeIso2022Jp(c);
    case Codec::kOasysWin:
      return decodeOasysWin(c);
    case Codec::kOasysOnline:
      return decodeOasysOnline(c);
    case Codec::kNone:
      return;
  }
}

uint32_t convert(Converter& c) {
  c.status = KSV_STATUS_DONE;
  if (c.preConversion == 0) {
    convertAll(c);
    return c.status;
  }
  const uint8_t* input = c.input;
  const int32_t length = c.inputLength;
  bool fits = true;
  const std::vector<uint8_t> text = c.preConversion == 1
                                        ? preConvertUtf7(input, length, c.outputCapacity, fits)
                                        : preConvertHz(input, length, c.outputCapacity, fits);
  if (!text.empty()) {
    c.input = text.data();
    c.inputLength = static_cast<int32_t>(text.size());
  }
  if (text.empty() && !fits && c.sourceDecoder != Codec::kNone && c.targetEncoder != Codec::kNone) {
    c.status = KSV_STATUS_FULL;
    return c.status;
  }
  convertAll(c);
  c.input = input;
  c.inputLength = length;
  if (!fits && (c.status == KSV_STATUS_DONE || c.status == KSV_STATUS_INCOMPLETE)) {
    c.status = KSV_STATUS_FULL;
  }
  return c.status;
}

}  // namespace ksv_reference
