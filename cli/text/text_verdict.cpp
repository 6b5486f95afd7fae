#include "cli/text/text_verdict.h"

#include <algorithm>
#include <utility>

#include "cli/system/inputs.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {
namespace {

// Pieces are filled up before they are handed on: where reading ends must not depend on how much a
// pipe happens to hold.
constexpr size_t kPiece = 64 * 1024;

constexpr std::pair<const char*, const char*> kDescribedLanguages[] = {
    {"japanese", "ja"},
    {"simplified chinese", "zh-CN"},
    {"traditional chinese", "zh-TW"},
    {"korean", "ko"},
};

bool isAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Subtags of one to eight letters and digits, with hyphens between.
bool isLanguageTag(std::string_view name) {
  constexpr size_t kLongestSubtag = 8;
  while (true) {
    const std::string_view subtag = name.substr(0, name.find('-'));
    if (subtag.empty() || subtag.size() > kLongestSubtag) return false;
    if (!std::all_of(subtag.begin(), subtag.end(), isAlphanumeric)) return false;
    if (subtag.size() == name.size()) return true;
    name.remove_prefix(subtag.size() + 1);
  }
}

std::optional<std::string> judgedLanguage(std::string_view name) {
  const std::string lowered = ksv_kit::lowered(name);
  for (const auto& [described, tag] : kDescribedLanguages)
    if (lowered == described) return tag;
  if (!isLanguageTag(name)) return std::nullopt;
  return std::string(name);
}

}  // namespace

ksv::Detection detectionOf(ByteSource& source, const ksv::Hints& hints) {
  ksv::Detector detector(hints);
  while (true) {
    const std::vector<uint8_t> piece = readAtMost(source, kPiece);
    const bool isWhole = piece.size() < kPiece;
    const bool isSettled =
        detector.feed({reinterpret_cast<const char*>(piece.data()), piece.size()});
    if (isWhole || isSettled) return detector.verdict(isWhole);
  }
}

const ksv::Guess* namedGuess(const ksv::Detection& detection) {
  const auto best = detection.guesses.begin();
  return best != detection.guesses.end() && best->confidence >= kLeastToName ? &*best : nullptr;
}

std::vector<std::string> likelyCharsets(const ksv::Detection& detection, const std::string& first) {
  constexpr size_t kMostNamed = 4;
  std::vector<std::string> names = {first};
  for (const ksv::Guess& guess : detection.guesses)
    if (std::find(names.begin(), names.end(), guess.charset) == names.end())
      names.push_back(guess.charset);
  if (names.size() <= kMostNamed) return names;
  names.resize(kMostNamed);
  names.back() = "another one";
  return names;
}

bool isUndetermined(const ksv::Detection& detection) {
  const bool isKnownForNone =
      detection.content == KSV_CONTENT_EMPTY || detection.content == KSV_CONTENT_BINARY;
  return !isKnownForNone && namedGuess(detection) == nullptr;
}

const char* contentName(ksv_content content) {
  switch (content) {
    case KSV_CONTENT_TEXT:
      return "text";
    case KSV_CONTENT_EMPTY:
      return "empty";
    case KSV_CONTENT_BINARY:
      return "binary";
    case KSV_CONTENT_UNKNOWN:
      break;
  }
  return "unknown";
}

const char* lineEndName(ksv_line_end lineEnd) {
  switch (lineEnd) {
    case KSV_LINE_ENDS_LF:
      return "lf";
    case KSV_LINE_ENDS_CRLF:
      return "crlf";
    case KSV_LINE_ENDS_CR:
      return "cr";
    case KSV_LINE_ENDS_MIXED:
      return "mixed";
    case KSV_LINE_ENDS_NONE:
      break;
  }
  return nullptr;
}

std::optional<std::string> judgedLanguages(std::string_view list) {
  std::string languages;
  while (true) {
    const std::string_view name = list.substr(0, list.find(','));
    const std::optional<std::string> language = judgedLanguage(name);
    if (!language) return std::nullopt;
    languages += (languages.empty() ? "" : ",") + *language;
    if (name.size() == list.size()) return languages;
    list.remove_prefix(name.size() + 1);
  }
}

}  // namespace ksv_cli
