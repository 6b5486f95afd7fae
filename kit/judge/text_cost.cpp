#include "kit/judge/text_cost.h"

#include <algorithm>
#include <array>

namespace ksv_kit::judge {
namespace {

// What is not in a language that was named.
constexpr int32_t kUnexpected = 12 * kBit;

// How much the ASCII of a text may say.
constexpr int64_t kMostForPlain = 40 * kBit;
constexpr int64_t kMostAgainstPlain = 10 * kBit;

// Of characters above ASCII in a language that nobody knows, and of leaving ASCII and going back.
constexpr int64_t kUnknownCharacter = 9 * kBit;
constexpr int64_t kUnknownChange = 2 * kBit;

std::vector<uint8_t> symbolsOf(const AlphabetModel& model, std::span<const char16_t> characters) {
  std::vector<uint8_t> symbols(characters.size());
  for (size_t i = 0; i < symbols.size(); ++i) symbols[i] = model.symbolOf(characters[i]);
  return symbols;
}

int64_t costOf(const AlphabetModel& model, const std::vector<PairCount>& pairs,
               const std::vector<uint8_t>& symbols) {
  int64_t cost = 0;
  for (const PairCount& pair : pairs)
    cost += static_cast<int64_t>(pair.count) * model.cost(symbols[pair.before], symbols[pair.next]);
  return cost;
}

Script scriptOf(char16_t c) {
  if (c < 0x250 || (c >= 0x1E00 && c <= 0x1EFF)) return Script::kLatin;
  if (c >= 0x370 && c <= 0x3FF) return Script::kGreek;
  if (c >= 0x400 && c <= 0x52F) return Script::kCyrillic;
  if (c >= 0x590 && c <= 0x5FF) return Script::kHebrew;
  if (c >= 0x600 && c <= 0x6FF) return Script::kArabic;
  if (c >= 0xE00 && c <= 0xE7F) return Script::kThai;
  return Script::kEastAsian;
}

constexpr size_t kScripts = 7;

// Which scripts the characters above ASCII are of. Punctuation is of all.
std::array<size_t, kScripts> countScripts(std::span<const char16_t> text) {
  std::array<size_t, kScripts> counts{};
  for (const char16_t c : text)
    if (c >= 0xC0 && (c < 0x2000 || c >= 0x2E80)) ++counts[static_cast<size_t>(scriptOf(c))];
  return counts;
}

LanguageCost bestAlphabet(std::span<const char16_t> text, const LanguagePriors& priors,
                          const std::array<size_t, kScripts>& scripts) {
  const PairCounts pairs(text);
  const std::vector<int32_t> plain = plainCosts(pairs, pairs.kinds());
  const size_t letters = *std::max_element(scripts.begin(), scripts.end());
  LanguageCost best;
  for (size_t i = 0; i < languageCount(); ++i) {
    const auto language = static_cast<Language>(i);
    const Script script = languageFacts(language).script;
    if (script == Script::kEastAsian) continue;
    if (letters != 0 && scripts[static_cast<size_t>(script)] * 4 < letters) continue;
    if (letters == 0 && script != Script::kLatin) continue;
    best.improve(
        {language, alphabetCost(language, pairs, pairs.kinds()) + plain[i] + priors.of(language)});
  }
  return best;
}

}  // namespace

LanguagePriors::LanguagePriors() : of_(languageCount()) {
  for (size_t i = 0; i < of_.size(); ++i) of_[i] = languageFacts(static_cast<Language>(i)).rarity;
}

void LanguagePriors::expect(std::string_view names) {
  std::vector<Language> expected;
  while (!names.empty()) {
    const size_t end = std::min(names.find_first_of(", "), names.size());
    const Language language = languageNamed(names.substr(0, end));
    if (language != kNoLanguage) expected.push_back(language);
    names.remove_prefix(std::min(end + 1, names.size()));
  }
  if (expected.empty()) return;
  for (size_t i = 0; i < of_.size(); ++i)
    if (std::find(expected.begin(), expected.end(), i) == expected.end()) of_[i] += kUnexpected;
}

std::vector<int32_t> plainCosts(const PairCounts& pairs, std::span<const char16_t> characters) {
  static const Language english = languageNamed("en");
  std::vector<int32_t> costs(languageCount());
  const AlphabetModel& usual = AlphabetModel::of(english);
  const int64_t inEnglish = costOf(usual, pairs.plain(), symbolsOf(usual, characters));
  for (size_t i = 0; i < costs.size(); ++i) {
    const auto language = static_cast<Language>(i);
    if (languageFacts(language).script != Script::kLatin) continue;
    const AlphabetModel& model = AlphabetModel::of(language);
    const int64_t own = costOf(model, pairs.plain(), symbolsOf(model, characters)) - inEnglish;
    costs[i] = static_cast<int32_t>(std::clamp(own, -kMostForPlain, kMostAgainstPlain));
  }
  return costs;
}

int64_t alphabetCost(Language language, const PairCounts& pairs,
                     std::span<const char16_t> characters) {
  const AlphabetModel& model = AlphabetModel::of(language);
  return costOf(model, pairs.telling(), symbolsOf(model, characters));
}

int64_t eastAsianCost(Language language, std::span<const char16_t> text) {
  const EastAsianModel& model = EastAsianModel::of(language);
  int64_t cost = 0;
  char32_t before = ' ';
  uint8_t groupBefore = EastAsianModel::kSpaceGroup;
  for (const char16_t c : text) {
    if (c < 0x80 && before < 0x80) {
      before = c;
      groupBefore = EastAsianModel::groupOf(c);
      continue;
    }
    const uint8_t group = EastAsianModel::groupOf(c);
    cost += model.cost(before, groupBefore, c, group);
    before = c;
    groupBefore = group;
  }
  return cost;
}

LanguageCost bestLanguage(std::span<const char16_t> text, const LanguagePriors& priors) {
  const std::array<size_t, kScripts> scripts = countScripts(text);
  const size_t eastAsian = scripts[static_cast<size_t>(Script::kEastAsian)];
  size_t others = 0;
  for (const size_t count : scripts) others += count;
  others -= eastAsian;
  LanguageCost best;
  if (others != 0 || eastAsian == 0) best = bestAlphabet(text, priors, scripts);
  if (eastAsian * 8 < others) return best;
  for (size_t i = 0; i < languageCount(); ++i) {
    const auto language = static_cast<Language>(i);
    if (languageFacts(language).script == Script::kEastAsian && eastAsian != 0)
      best.improve({language, eastAsianCost(language, text) + priors.of(language)});
  }
  return best;
}

int64_t unknownCost(std::span<const char16_t> text) {
  int64_t cost = 0;
  bool wasHigh = false;
  for (const char16_t c : text) {
    const bool isHigh = c >= 0x80;
    if (isHigh) cost += kUnknownCharacter;
    if (isHigh != wasHigh) cost += kUnknownChange;
    wasHigh = isHigh;
  }
  return cost;
}

}  // namespace ksv_kit::judge
