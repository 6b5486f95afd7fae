// Charsets whose bytes are those of ASCII: ISO-2022, HZ and UTF-7.
#include <algorithm>
#include <iterator>
#include <string_view>

#include "kit/judge/reading.h"

namespace ksv_kit::judge {
namespace {

// What designates a set only in one of the encodings: ISO 2022, RFC 1468, 1554, 1557, 1922, 2237,
// and JIS X 0213.
struct Designation {
  const char* sequence;
  const char* charset;
  const char* decodeAs;
  const char* language;
};
constexpr Designation kDesignations[] = {
    {"\x1B$(O", "ISO-2022-JP-2004", "ISO-2022-JP-2004", "ja"},
    {"\x1B$(Q", "ISO-2022-JP-2004", "ISO-2022-JP-2004", "ja"},
    {"\x1B$(P", "ISO-2022-JP-2004", "ISO-2022-JP-2004", "ja"},
    {"\x1B$)C", "ISO-2022-KR", "ISO-2022-KR", "ko"},
    {"\x1B$)A", "ISO-2022-CN", "ISO-2022-CN", "zh-CN"},
    {"\x1B$)G", "ISO-2022-CN", "ISO-2022-CN", "zh-TW"},
    {"\x1B$)E", "ISO-2022-CN-EXT", "", "zh-CN"},
    {"\x1B$A", "ISO-2022-JP-2", "", "ja"},
    {"\x1B$(C", "ISO-2022-JP-2", "", "ja"},
    {"\x1B.A", "ISO-2022-JP-2", "", "ja"},
    {"\x1B.F", "ISO-2022-JP-2", "", "ja"},
    {"\x1B$B", "ISO-2022-JP", "CP50220", "ja"},
    {"\x1B$@", "ISO-2022-JP", "CP50220", "ja"},
    {"\x1B$(D", "ISO-2022-JP-1", "CP50220", "ja"},
    {"\x1B(I", "ISO-2022-JP", "CP50220", "ja"},
};

// Nothing but chance speaks against these.
constexpr int64_t kByEscapes = -60 * kBit;
constexpr int64_t kByRuns = -12 * kBit;
// Text that a run stands for costs less than this, or it is chance.
constexpr int64_t kMostForACharacter = 13 * kBit;

const Designation* designationIn(std::string_view text) {
  for (const Designation& designation : kDesignations)
    if (text.find(designation.sequence) != std::string_view::npos) return &designation;
  return nullptr;
}

bool isBase64(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
         c == '/';
}

// RFC 2152: behind a plus sign there is a run of base64, of three digits at least for one unit, or
// a hyphen. Programs and prose are told from that at their first sum.
bool mayBeUtf7(std::string_view text) {
  constexpr size_t kFewest = 3;
  bool hasRun = false;
  for (size_t at = 0; (at = text.find('+', at)) != std::string_view::npos;) {
    const std::string_view run = text.substr(++at);
    if (run.starts_with('-')) continue;
    const auto end = std::find_if_not(run.begin(), run.end(), isBase64);
    const auto length = static_cast<size_t>(end - run.begin());
    if (length < kFewest) return false;
    hasRun = true;
    at += length;
  }
  return hasRun;
}

void addRuns(const char* charset, const Evidence& evidence, Readings& readings) {
  const auto text = decodeInSteps(charset, evidence.lines);
  if (!text) return;
  const auto high = std::count_if(text->begin(), text->end(), [](char16_t c) { return c >= 0x80; });
  if (high == 0) return;
  const LanguageCost best = bestLanguage(*text, evidence.priors);
  if (!best.isFound() || best.cost > high * kMostForACharacter) return;
  Reading reading;
  reading.charset = reading.decodeAs = charset;
  reading.language = best.language;
  reading.cost = best.cost + kByRuns - high * kMostForACharacter;
  reading.ground = "its runs in " + reading.charset + " are text";
  readings.push_back(std::move(reading));
}

}  // namespace

void addEscapedReadings(const Evidence& evidence, Readings& readings) {
  const std::string_view text(reinterpret_cast<const char*>(evidence.lines.data()),
                              evidence.lines.size());
  if (const Designation* const found = designationIn(text)) {
    Reading reading;
    reading.charset = found->charset;
    reading.decodeAs = found->decodeAs;
    reading.language = languageNamed(found->language);
    reading.cost = kByEscapes;
    reading.ground = "it has the escape sequences of " + reading.charset;
    readings.push_back(std::move(reading));
    return;
  }
  if (text.find("~{") != std::string_view::npos) addRuns("HZ-GB-2312", evidence, readings);
  if (mayBeUtf7(text)) addRuns("UTF-7", evidence, readings);
}

}  // namespace ksv_kit::judge
