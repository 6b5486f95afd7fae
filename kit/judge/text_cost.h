// What a text costs in the languages that it may be in.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "kit/judge/language_model.h"
#include "kit/judge/pair_counts.h"

namespace ksv_kit::judge {

// More than anything costs, with room to add to it.
inline constexpr int64_t kNoLimit = INT64_MAX / 4;

struct LanguageCost {
  Language language = kNoLanguage;
  int64_t cost = kNoLimit;  // in quarters of a bit

  bool isFound() const { return language != kNoLanguage; }
  void improve(const LanguageCost& other) {
    if (other.cost < cost) *this = other;
  }
};

// What is known of the languages beforehand: what each costs more.
class LanguagePriors {
 public:
  LanguagePriors();
  // Those that are not among the named ones cost more, if any of them is known.
  void expect(std::string_view names);
  void favour(Language language, int32_t by) { of_[language] -= by; }
  int32_t of(Language language) const { return of_[language]; }

 private:
  std::vector<int32_t> of_;
};

// What the ASCII of a text says for each language in comparison with English: a text may have much
// of that, whatever else it is in, so it says only so much. Only the beginning is asked.
class PlainCosts {
 public:
  explicit PlainCosts(std::span<const uint8_t> bytes);
  explicit PlainCosts(std::span<const char16_t> units);
  int32_t of(Language language) const;

  // The least that it can be.
  static constexpr int32_t kLeast = -40 * kBit;

 private:
  static constexpr size_t kMost = 32;

  template <typename Text>
  void count(const Text& text);

  std::array<int32_t, kMost> costs_{};  // of the languages in Latin script, in their order
};

// A text in alphabets. characters: what the kinds of the pairs are in the charset.
struct AlphabetText {
  const PairCounts& pairs;
  std::span<const char16_t> characters;
  const PlainCosts& plain;
};

// Whether letters of the script stand behind each other anywhere.
bool hasWordsOf(Script script, const PairCounts& pairs, std::span<const char16_t> characters);

// The best of the languages, if it costs no more than the limit.
LanguageCost bestAlphabet(std::span<const Language> languages, const AlphabetText& text,
                          const LanguagePriors& priors, int64_t limit);

// What is above the limit is not counted to its end.
int64_t eastAsianCost(Language language, std::span<const char16_t> text, int64_t limit);

// The best of all languages for a text whose characters are known, if it costs no more than the
// limit.
LanguageCost bestLanguage(std::span<const char16_t> text, const LanguagePriors& priors,
                          int64_t limit = kNoLimit);

// What the ASCII among the bytes costs, which is nothing elsewhere: against readings in which it is
// no ASCII.
int64_t plainCost(std::span<const uint8_t> bytes);

// What a text costs in a language and charset that nobody here knows.
int64_t unknownCost(std::span<const char16_t> text);
int64_t unknownCost(std::span<const uint8_t> bytes);

}  // namespace ksv_kit::judge
