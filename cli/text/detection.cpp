#include "cli/text/detection.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/inputs.h"
#include "cli/system/resource_limits.h"
#include "cli/system/system_faults.h"
#include "cli/system/temporary_file.h"
#include "cli/text/rereadable_text.h"
#include "ksv_detect.h"

namespace ksv_cli {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

namespace {

struct DetectedCharset {
  uint32_t bit;
  const char* name;
};
constexpr DetectedCharset kCharsets[] = {
    {KSV_TEXT_UTF8, "UTF-8"},
    {KSV_TEXT_UTF16, "UTF-16"},
    {KSV_TEXT_UCS4, "ISO-10646-UCS-4"},
    {KSV_TEXT_ISO_2022_JP, "ISO-2022-JP"},
    {KSV_TEXT_EUC_JP, "EUC-JP"},
    {KSV_TEXT_EUC_JP_FIX, "EUC-JP-FIX"},
    {KSV_TEXT_SHIFT_JIS, "Shift_JIS"},
    {KSV_TEXT_ASCII, "ISO-646IRV"},
    {KSV_TEXT_SIMPLIFIED_CHINESE, "ChineseGBK"},
    {KSV_TEXT_TRADITIONAL_CHINESE, "ChineseBIG5"},
    {KSV_TEXT_KOREAN, "KoreanKSC"},
};

// What Shift_JIS is detected by are the bytes of its extensions as well, and Windows-31J
// has their characters.
constexpr char kDetectedShiftJis[] = "Shift_JIS";
constexpr char kReadShiftJis[] = "WINDOWS31J";

// The library reads regular files itself, if it can name them: a path may be too long for
// it, or be no UTF-8.
std::optional<Detection> detectInPlace(const std::string& input, const char* language) {
  if (isStandardStream(input)) return std::nullopt;
  if (platform::fileFacts(input).kind != platform::FileKind::kRegular) return std::nullopt;
  forgetCause();
  const uint32_t word = dtctText(input.c_str(), language);
  const std::string cause = causeInWords();
  if (word == KSV_TEXT_FAILURE && !cause.empty()) throw Failure("cannot be read" + cause);
  if (word == KSV_TEXT_FAILURE) return std::nullopt;
  return Detection{word};
}

DetectedText detectStream(std::unique_ptr<ByteSource> source, const char* language) {
  std::vector<uint8_t> beginning = readAtMost(*source, limits::kMostLookedAt);
  if (beginning.empty()) return {std::move(source), {}, true};
  const auto copy = platform::TemporaryFile::create();
  copy->write(beginning.data(), beginning.size());
  const std::string& name = copy->finish();
  forgetCause();
  const uint32_t word = dtctText(name.c_str(), language);
  if (word == KSV_TEXT_FAILURE) throw Failure("a temporary file cannot be read" + causeInWords());
  return {std::make_unique<ResumedSource>(std::move(beginning), std::move(source)), {word}, false};
}

std::string reasonFor(const Detection& detection, const std::string& name) {
  std::string reason = "read as " + name;
  if (name == kReadShiftJis) reason += std::string(", which holds ") + kDetectedShiftJis;
  reason += detection.hasMark() ? ": it begins with a byte-order mark" : ": its bytes fit best";
  if (detection.byteOrder() != nullptr)
    reason += std::string(", ") + detection.byteOrder() + "-endian";
  return reason;
}

}  // namespace

std::vector<std::string> Detection::charsets() const {
  std::vector<std::string> names;
  for (const DetectedCharset& charset : kCharsets)
    if ((word & charset.bit) != 0) names.emplace_back(charset.name);
  return names;
}

bool Detection::hasMark() const { return (word & KSV_TEXT_MARK) != 0; }

const char* Detection::byteOrder() const {
  const uint32_t encodings = word & KSV_TEXT_ENCODINGS;
  if (encodings != KSV_TEXT_UTF16 && encodings != KSV_TEXT_UCS4) return nullptr;
  return (word & KSV_TEXT_BIG_ENDIAN) != 0 ? "big" : "little";
}

const char* Detection::lineEnd() const {
  if ((word & KSV_TEXT_CRLF) != 0) return "crlf";
  if ((word & KSV_TEXT_LF) != 0) return "lf";
  return (word & KSV_TEXT_CR) != 0 ? "cr" : nullptr;
}

std::vector<std::string> Detection::separators() const {
  std::vector<std::string> names;
  if ((word & KSV_TEXT_LINE_SEPARATOR) != 0) names.emplace_back("U+2028");
  if ((word & KSV_TEXT_PARAGRAPH_SEPARATOR) != 0) names.emplace_back("U+2029");
  return names;
}

std::string joinedByOr(const std::vector<std::string>& words) {
  std::string text;
  for (size_t i = 0; i < words.size(); ++i)
    text += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
  return text;
}

DetectedText openAndDetect(const std::string& input, const char* language) {
  std::unique_ptr<ByteSource> source = openInput(input);
  const std::optional<Detection> detection = detectInPlace(input, language);
  if (detection) return {std::move(source), *detection, false};
  return detectStream(std::move(source), language);
}

std::optional<Detection> detectUnlessEmpty(const std::string& input, const char* language) {
  const std::optional<Detection> detection = detectInPlace(input, language);
  if (detection) return detection;
  const DetectedText text = detectStream(openInput(input), language);
  if (text.isEmpty) return std::nullopt;
  return text.detection;
}

ChosenSource chooseSource(const DetectedText& text, const CharsetNames& names) {
  std::vector<std::string> fitting = text.detection.charsets();
  if (text.isEmpty) fitting = {"UTF-8"};
  if (fitting.empty()) throw Failure("no charset fits its bytes; --from names one");
  if (fitting.size() > 1)
    throw Failure("may be " + joinedByOr(fitting) + "; --from names one of them");
  std::string name = fitting.front();
  if (name == kDetectedShiftJis && names.find(kReadShiftJis)) name = kReadShiftJis;
  std::optional<CharsetChoice> charset = names.findSource(name);
  if (!charset) throw Failure("is " + name + ", which the charset directory does not have");
  if (text.isEmpty) return {*charset, "read as UTF-8: it is empty"};
  if (text.detection.byteOrder() != nullptr)
    charset->order =
        std::strcmp(text.detection.byteOrder(), "big") == 0 ? ByteOrder::kBig : ByteOrder::kLittle;
  return {*charset, reasonFor(text.detection, name)};
}

}  // namespace ksv_cli
