#include "ole/summary_text.h"

#include <cstring>

#include "common/utf8.h"

namespace ksv {
namespace {

constexpr size_t kTrimmedLength = 256;
constexpr uint16_t kUtf8CodePage = 65001;

constexpr char kLatin1[] = "ISO-8859-1";

struct Source {
  const char* charset;
  bool isDoubleByte;  // read most significant byte first
};

constexpr Source kJapanese = {"WINDOWS31J", true};
constexpr Source kSimplifiedChinese = {"ChineseGBK", true};
constexpr Source kKorean = {"KoreanKSC", true};
constexpr Source kTraditionalChinese = {"ChineseBIG5", true};

Source sourceOfLanguage(const char* language) {
  if (std::strcmp(language, "Japanese") == 0) return kJapanese;
  if (std::strcmp(language, "Simplified Chinese") == 0) return kSimplifiedChinese;
  if (std::strcmp(language, "Traditional Chinese") == 0) return kTraditionalChinese;
  if (std::strcmp(language, "Korean") == 0) return kKorean;
  return {kLatin1, false};
}

Source sourceOf(uint16_t codePage, const char* language) {
  switch (codePage) {
    case 932:
    case 2000:
      return kJapanese;
    case 936:
    case 3000:
      return kSimplifiedChinese;
    case 949:
    case 5000:
      return kKorean;
    case 950:
    case 4000:
      return kTraditionalChinese;
    case 1200:
      return {"ISO-10646-UCS-2", false};
    case kUtf8CodePage:
      return {"UTF-8", false};
    default:
      return sourceOfLanguage(language);
  }
}

uint32_t newlineForm(uint32_t lineEndFlags) {
  if ((lineEndFlags & 0x08) != 0) return KSV_NEWLINE_CRLF;
  if ((lineEndFlags & 0x10) != 0) return KSV_NEWLINE_CR;
  if ((lineEndFlags & 0x20) != 0) return KSV_NEWLINE_LF;
  if ((lineEndFlags & 0x40) != 0) return KSV_NEWLINE_LINE_SEPARATOR;
  return KSV_NEWLINE_CRLF;
}

// The bytes of a character by its first; 0 when no character begins so.
size_t lengthInUtf8(uint8_t lead) {
  if (lead < 0xC0) return 1;
  return lead < 0xF8 ? utf8Length(lead) : 0;
}

// In every other code page, those with single bytes included, the leads are those of
// Shift_JIS; so it stays.
size_t shiftJisLength(uint8_t lead) {
  return (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC) ? 2 : 1;
}

}  // namespace

size_t trimmedLength(std::string_view text, uint16_t codePage) {
  if (text.size() <= kTrimmedLength) return text.size();
  size_t length = 0;
  for (;;) {
    const uint8_t lead = static_cast<uint8_t>(text[length]);
    const size_t size = codePage == kUtf8CodePage ? lengthInUtf8(lead) : shiftJisLength(lead);
    if (size == 0 || length + size > kTrimmedLength) return length;
    length += size;
  }
}

SummaryText::SummaryText(const KsvSummarySettings& settings) {
  std::memcpy(targetCharset_, settings.targetCharset, sizeof settings.targetCharset);
  std::memcpy(language_, settings.language, sizeof settings.language);
  options_.outputBigEndian = settings.outputBigEndian;
  options_.replaceUnmappable = 1;
  if (std::strcmp(targetCharset_, kLatin1) == 0) {
    options_.narrowReplacement = options_.wideReplacement = '?';
  }
  options_.convertNewlines = 1;
  options_.newlineForm = newlineForm(settings.lineEndFlags);
}

bool SummaryText::setUp(uint16_t codePage) {
  if (cconvInitConvert(&prepared_, &options_, targetCharset_) != KSV_STATUS_DONE) return false;
  const Source source = sourceOf(codePage, language_);
  uint32_t parameters[3] = {source.isDoubleByte ? 1u : 0u, 0, 1};  // invalid input is skipped
  if (cconvChgCharset(&prepared_, parameters, source.charset) == KSV_STATUS_DONE) return true;
  cconvTermConvert(&prepared_);
  return false;
}

void SummaryText::prepare(uint16_t codePage) {
  if (preparedCodePage_ == codePage) return;
  prepared_ = {};
  isUsable_ = setUp(codePage);
  preparedCodePage_ = codePage;
}

// Every text begins with a converter that is as new. The closing sequence of a stateful
// target is not asked for: texts of the record have never had one.
void SummaryText::convert(std::string_view text, uint16_t codePage) {
  if (text.empty() || (text.size() == 1 && text[0] == '\0')) {
    outputLength_ = 0;
    return;
  }
  prepare(codePage);
  if (!isUsable_) return;
  ConverterRecord converter = prepared_;
  converter.input = reinterpret_cast<const uint8_t*>(text.data());
  converter.inputLength = static_cast<int32_t>(text.size());
  converter.output = output_.data();
  converter.outputCapacity = static_cast<int32_t>(output_.size());
  cconvConvert(&converter);
  outputLength_ = static_cast<size_t>(converter.outputPosition);
}

}  // namespace ksv
