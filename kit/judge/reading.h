// One way to read a text, and what speaks for it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "kit/judge/decoding.h"
#include "kit/judge/language_model.h"
#include "kit/judge/text_cost.h"
#include "kit/judge/text_facts.h"

namespace ksv_kit::judge {

// What readings are made of.
struct Evidence {
  Bytes head;         // the first bytes as they are
  Bytes lines;        // of the whole text those that tell something
  bool mayEndInside;  // the lines may end inside a character
  bool headIsWhole;   // the head is all of the text
  const TextFacts& facts;
  const LanguagePriors& priors;
};

struct Reading {
  std::string charset;   // the narrowest
  std::string decodeAs;  // empty: it cannot be converted
  Language language = kNoLanguage;
  int64_t cost = 0;       // in quarters of a bit
  size_t invalid = 0;     // places in the lines that are no text
  uint64_t sameText = 0;  // equal in readings that are the same text
  std::string ground;     // why, in words
};

using Readings = std::vector<Reading>;

// What damage costs: text is rarely damaged, and a charset that is not the text's own does not fit
// in many places. Too much of it is no reading.
inline int64_t damageCost(size_t damages) {
  return damages == 0 ? 0 : 16 * kBit + static_cast<int64_t>(damages) * 10 * kBit;
}
inline bool isTooDamaged(size_t damages, size_t characters) {
  constexpr size_t kCharactersPerDamage = 40;
  return damages > 1 && damages * kCharactersPerDamage > characters;
}

// What a reading may cost to be told: bits are worth the less the longer a text is, and what costs
// so much more than the best one nobody hears of.
class TellableCosts {
 public:
  // high: how many of the characters or bytes are above ASCII.
  TellableCosts(const Readings& readings, size_t high);

  int64_t most() const { return most_; }
  void take(int64_t cost) { most_ = std::min(most_, cost + above_); }

 private:
  int64_t above_;
  int64_t most_ = kNoLimit;
};

// A charset and what has more characters than it: the narrow one first.
struct CharsetStep {
  const char* charset;
  const char* decodeAs;
};

// Each adds what the text may be.
void addSingleByteReadings(const Evidence& evidence, Readings& readings);
void addMultiByteReadings(const Evidence& evidence, Readings& readings);
// Those in which something of the text is damaged.
void addDamagedReadings(const Evidence& evidence, Readings& readings);
void addUtf8Reading(const Evidence& evidence, Readings& readings);
// UTF-16 and UTF-32 without a mark.
void addUnitReadings(const Evidence& evidence, Readings& readings);
// Of texts of ASCII bytes: ISO-2022, HZ and UTF-7.
void addEscapedReadings(const Evidence& evidence, Readings& readings);

// The charsets of several bytes that a text read as this may be in, the narrow ones first; none
// where it has no relatives.
std::vector<CharsetStep> stepsOf(const std::string& decodeAs);

// The narrowest one of a charset of single bytes that has all of these bytes as it has them.
std::string narrowestOf(const std::string& decodeAs, const std::vector<char16_t>& bytes);

uint64_t hashOf(std::span<const char16_t> text);

}  // namespace ksv_kit::judge
