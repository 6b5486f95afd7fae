// What the first guess is worth for the whole of a text.
#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "kit/judge/verdict.h"
#include "kit/text/unicode_check.h"

namespace ksv_kit::judge {
namespace {

// Whether all pairs are rows and cells of a set of 94 by 94 in the upper half, up to this lead:
// those that are not came with the supersets.
bool isOf94Rows(Bytes text, uint8_t lastLead) {
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] < 0x80) continue;
    if (text[at] < 0xA1 || text[at] > lastLead || at + 1 == text.size() || text[at + 1] < 0xA1)
      return false;
    ++at;
  }
  return true;
}

bool isAllOf(const CharsetStep& step, Bytes text) {
  const std::string_view charset = step.charset;
  if (charset == "GB2312" && !isOf94Rows(text, 0xF7)) return false;
  if (charset == "EUC-KR" && !isOf94Rows(text, 0xFE)) return false;
  return isSound(step.charset, text);
}

// The first of the relatives that has all of the text, which the guess is then.
bool confirmByStep(Guess& guess, Bytes text) {
  for (const CharsetStep& step : stepsOf(guess.decodeAs)) {
    if (!isAllOf(step, text)) continue;
    guess.charset = step.charset;
    guess.decodeAs = step.decodeAs;
    return true;
  }
  return false;
}

std::vector<char16_t> bytesUsed(Bytes text) {
  std::array<bool, 256> isUsed{};
  for (const uint8_t byte : text) isUsed[byte] = true;
  std::vector<char16_t> used;
  for (size_t byte = 0; byte < isUsed.size(); ++byte)
    if (isUsed[byte]) used.push_back(static_cast<char16_t>(byte));
  return used;
}

void confirmBytes(Guess& guess, Bytes text, const ByteTable& table) {
  const std::vector<char16_t> used = bytesUsed(text);
  guess.charset = narrowestOf(guess.decodeAs, used);
  const auto isNone = [&](uint8_t byte) { return table[byte] == kNoCharacter; };
  const auto found = std::find_if(text.begin(), text.end(), isNone);
  if (found != text.end()) guess.invalidOffset = static_cast<uint64_t>(found - text.begin());
}

void confirmUtf8(Guess& guess, Bytes text) {
  const ScanResult found = scanUnicode(UnicodeForm::kUtf8, false, text.data(), text.size());
  if (found.end != ScanEnd::kAll) guess.invalidOffset = found.wellFormed;
}

}  // namespace

void confirm(Detection& detection, Bytes text, const TextFacts& facts) {
  detection.bytes = text.size();
  if (detection.guesses.empty()) return;
  Guess& guess = detection.guesses.front();
  if (guess.decodeAs.empty()) return;
  guess.invalidOffset = KSV_NO_OFFSET;
  if (guess.decodeAs == "UTF-8") {
    if (facts.size() != text.size() || !facts.isUtf8() || facts.utf8Waiting() != 0)
      confirmUtf8(guess, text);
    return;
  }
  if (confirmByStep(guess, text)) return;
  const ByteTable* const table = byteTable(guess.decodeAs.c_str());
  if (table != nullptr && isOfSingleBytes(*table)) return confirmBytes(guess, text, *table);
  if (isSound(guess.decodeAs.c_str(), text)) return;
  if (const auto offset = firstInvalid(guess.decodeAs.c_str(), text)) guess.invalidOffset = *offset;
}

}  // namespace ksv_kit::judge
