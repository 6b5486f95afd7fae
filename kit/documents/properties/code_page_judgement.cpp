#include "kit/documents/properties/code_page_judgement.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>

#include "kit/documents/properties/code_page_converters.h"
#include "kit/engine.h"
#include "kit/judge/detector.h"
#include "kit/repertoire/charset_facts.h"

namespace ksv_kit::properties {
namespace {

constexpr char kUsual[] = "windows-1252";
constexpr char kJapanese[] = "WINDOWS31J";

// How sure the judge has to be of what contradicts a declaration that the bytes allow, and of what
// stands in for one that they do not.
constexpr double kAgainstDeclaration = 0.9;
constexpr double kWithoutDeclaration = 0.6;
// Less than two characters of two bytes say nothing against a declaration.
constexpr size_t kFewestHighBytes = 4;

bool isHigh(char c) { return (static_cast<unsigned char>(c) & 0x80) != 0; }
bool isPrintableAscii(char c) { return c >= 0x20 && c < 0x7F; }

uint32_t unitAt(std::string_view bytes, size_t at) {
  return static_cast<unsigned char>(bytes[at]) | uint32_t{static_cast<unsigned char>(bytes[at + 1])}
                                                     << 8;
}

// Ideographs whose codes are two letters of ASCII are among those of everyday texts only here.
bool isUsualIdeograph(uint32_t unit) { return unit >= 0x4E00 && unit <= 0x9FFF; }

std::string_view withoutZeroes(std::string_view bytes) {
  while (!bytes.empty() && bytes.back() == '\0') bytes.remove_suffix(1);
  return bytes;
}

bool isOfSeveralBytes(const std::string& charset) {
  constexpr uint32_t kPages[] = {932, 936, 949, 950, 951, 1361, 20932, 51932, 51949, 54936, 65001};
  const auto choice = Engine::instance().names().findSource(charset);
  const RegistryEntry* const entry = choice ? registryEntryOf(choice->name) : nullptr;
  const uint32_t page = entry == nullptr ? 0 : entry->codePage;
  return std::find(std::begin(kPages), std::end(kPages), page) != std::end(kPages);
}

// Runs of bytes above ASCII, as the texts have them.
struct HighBytes {
  size_t count = 0;
  size_t controls = 0;  // 80 to 9F: seldom letters in charsets of single bytes
  size_t longestRun = 0;
  bool runsAreEven = true;
};

HighBytes highBytesIn(std::string_view text) {
  HighBytes found;
  size_t run = 0;
  const auto end = [&] {
    found.longestRun = std::max(found.longestRun, run);
    if (run % 2 != 0) found.runsAreEven = false;
    run = 0;
  };
  for (const char c : text) {
    if (!isHigh(c)) {
      end();
      continue;
    }
    ++run;
    ++found.count;
    if (static_cast<unsigned char>(c) < 0xA0) ++found.controls;
  }
  end();
  return found;
}

// Whether a look that costs something may find anything against a declaration that the bytes
// allow.
bool mayBeOther(const std::string& declared, std::string_view lines) {
  if (isOfSeveralBytes(declared)) return declared != "UTF-8" && isUtf8(lines);
  const HighBytes high = highBytesIn(lines);
  if (high.count < kFewestHighBytes) return isUtf8(lines);
  return high.controls * 5 >= high.count || (high.runsAreEven && high.longestRun >= 4) ||
         isUtf8(lines);
}

judge::Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::optional<judge::Guess> bestGuess(const std::string& lines) {
  judge::Detection found = judge::detect(bytesOf(lines), {});
  for (judge::Guess& guess : found.guesses)
    if (!guess.decodeAs.empty() && decodedText(guess.decodeAs, lines).isSound)
      return std::move(guess);
  return std::nullopt;
}

std::string charsetOfUndeclared(const std::string& lines) {
  const auto best = bestGuess(lines);
  if (best && best->confidence >= kWithoutDeclaration) return best->decodeAs;
  return decodedText(kJapanese, lines).isSound ? kJapanese : kUsual;
}

}  // namespace

bool isNarrowText(std::string_view bytes) {
  const std::string_view text = withoutZeroes(bytes);
  if (text.size() < 3 || text.find('\0') != std::string_view::npos) return false;
  const bool isWhole = bytes.size() % 2 == 0;
  const bool ends = isWhole && bytes.size() >= 2 && unitAt(bytes, bytes.size() - 2) == 0;
  if (!isWhole || !ends) return true;
  if (!std::all_of(text.begin(), text.end(), isPrintableAscii)) return false;
  size_t usual = 0;
  for (size_t at = 0; at + 1 < text.size(); at += 2) usual += isUsualIdeograph(unitAt(text, at));
  return usual * 2 < text.size() / 2;
}

bool isWideText(std::string_view bytes) {
  const std::string_view text = withoutZeroes(bytes);
  if (text.size() < 3) return false;
  size_t zeroes = 0;
  for (size_t at = 1; at < text.size(); at += 2) zeroes += text[at] == '\0';
  size_t others = 0;
  for (size_t at = 0; at < text.size(); at += 2) others += text[at] == '\0';
  return others == 0 && zeroes > 0 && zeroes * 2 >= text.size() / 2;
}

std::string charsetOfTexts(const std::string& lines, const std::string& declared, bool isSound) {
  if (declared.empty()) return charsetOfUndeclared(lines);
  if (isSound && !mayBeOther(declared, lines)) return declared;
  const auto best = bestGuess(lines);
  if (!best) return declared;
  if (!isSound) return best->confidence >= kWithoutDeclaration ? best->decodeAs : declared;
  const bool isClear = best->confidence >= kAgainstDeclaration && isOfSeveralBytes(best->decodeAs);
  return isClear ? best->decodeAs : declared;
}

}  // namespace ksv_kit::properties
