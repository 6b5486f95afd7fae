// What a text costs in the languages that it may be in.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "kit/judge/language_model.h"
#include "kit/judge/pair_counts.h"

namespace ksv_kit::judge {

struct LanguageCost {
  Language language = kNoLanguage;
  int64_t cost = INT64_MAX;  // in quarters of a bit

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
// of that, whatever else it is in, so it says only so much.
std::vector<int32_t> plainCosts(const PairCounts& pairs, std::span<const char16_t> characters);

// In a language of an alphabet. characters: what the kinds of the pairs are in the charset.
int64_t alphabetCost(Language language, const PairCounts& pairs,
                     std::span<const char16_t> characters);

int64_t eastAsianCost(Language language, std::span<const char16_t> text);

// The best of all languages for a text whose characters are known.
LanguageCost bestLanguage(std::span<const char16_t> text, const LanguagePriors& priors);

// What a text costs in a language and charset that nobody here knows.
int64_t unknownCost(std::span<const char16_t> text);

}  // namespace ksv_kit::judge
