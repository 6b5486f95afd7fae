// The reference converter: the fields of ConverterRecord in a plain struct, and the
// converter functions as the slowest straight reading of what they do.
#pragma once

#include <cstdint>
#include <string>

#include "ksv_cconv.h"
#include "reference/rules.h"

namespace ksv_reference {

enum class Codec {
  kNone,
  kSame,
  kShiftJis,
  kShiftJis2004,
  kWindows31j,
  kUcs2,
  kUcs4,
  kUtf16,
  kUtf8,
  kEucJp,
  kEucJis2004,
  kEucJpFix,
  kIso2022Jp,
  kCp50220,
  kOasysWin,
  kOasysOnline
};

struct Replacement {
  uint32_t group = 0;
  uint32_t type = 0;
  uint32_t code = 0;
  uint32_t width = 0;
};

struct Converter {
  RuleBase* rules = nullptr;

  const uint8_t* input = nullptr;
  int32_t inputPosition = 0;
  int32_t inputLength = 0;
  int32_t charactersRead = 0;
  uint8_t* output = nullptr;
  int32_t outputPosition = 0;
  int32_t outputCapacity = 0;
  int32_t unitsWritten = 0;
  uint32_t status = 0;
  uint32_t sourceCharsetId = 0;
  Charset* sourceCharset = nullptr;
  Codec sourceDecoder = Codec::kNone;
  uint32_t decodedGroup = 0;
  uint32_t decodedGroupType = 0;
  uint32_t decoderState = 0;
  uint32_t preConversion = 0;
  uint32_t targetCharsetId = 0;
  Charset* targetCharset = nullptr;
  Codec targetEncoder = Codec::kNone;
  uint32_t targetGroup = 0;
  uint32_t targetGroupType = 0;
  uint32_t designatedGroup = 0;
  uint32_t designatedPlane = 0;
  uint32_t rawCode = 0;
  uint32_t groupCode = 0;
  uint32_t unicodeCode = 0;
  uint32_t outputCode = 0;
  uint16_t outputWidth = 0;
  uint16_t sequenceLength = 0;
  uint32_t previousRawCode = 0;
  uint32_t secondCode = 0;
  std::string defaultLanguage;
  std::string emittedLanguage;
  std::string currentLanguage;
  uint32_t inputBigEndian = 0;
  uint32_t detectByteOrderMark = 0;
  uint32_t skipInvalid = 0;
  ConvertOptions options = {};
  Replacement narrowReplacement;
  Replacement wideReplacement;

  // Not part of the record: where a character that does not fit begins again.
  int32_t characterStart = 0;
};

uint32_t initConvert(Converter& converter, const ConvertOptions* options, const char* charset);
uint32_t chgCharset(Converter& converter, uint32_t* sourceParameters, const char* charset);
uint32_t chgLang(Converter& converter, const char* language);
uint32_t convert(Converter& converter);
uint32_t termConvert(Converter& converter);

}  // namespace ksv_reference
