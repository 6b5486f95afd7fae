// How usual a text is in a language, character by character.
//
// A model says how many bits it takes to say that a character comes next. Of two readings of the
// same bytes the one that costs less is the likelier, and n bits less make it 2 to the n times
// likelier, as far as the model is true. What stands between ASCII only costs nothing in any of
// them: it is the same in all readings.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace ksv_kit::judge {

// Costs are in quarters of a bit.
inline constexpr int32_t kBit = 4;

enum class Script : uint8_t { kLatin, kCyrillic, kGreek, kHebrew, kArabic, kThai, kEastAsian };

// The index of a language among all.
using Language = uint8_t;
inline constexpr Language kNoLanguage = 0xFF;
// Those that charsets are made for come first, in this order.
inline constexpr Language kJapanese = 0;
inline constexpr Language kSimplifiedChinese = 1;
inline constexpr Language kTraditionalChinese = 2;
inline constexpr Language kKorean = 3;
inline constexpr Language kEnglish = 4;

struct LanguageFacts {
  const char* name;  // as BCP 47 has it
  Script script;
  int32_t rarity;  // what a text costs for being in this language at all
};

size_t languageCount();
const LanguageFacts& languageFacts(Language language);
// By its name, or what stands in front of a hyphen in it; kNoLanguage.
Language languageNamed(std::string_view name);

// Of a language that is written in an alphabet: letters behind each other. A symbol is a letter or
// a kind of other characters, with its case above.
class AlphabetModel {
 public:
  static const AlphabetModel& of(Language language);

  uint8_t symbolOf(char32_t character) const {
    const size_t page = character >> 8;
    if (page >= kPages || pageAt_[page] == 0) return strangeSymbol(character);
    return symbols_[(pageAt_[page] - 1u) * 256u + (character & 0xFF)];
  }
  int32_t cost(uint8_t before, uint8_t symbol) const {
    return pairs_[(before & kSymbolBits) * kSymbols + (symbol & kSymbolBits)] +
           caseCosts_[before >> 6][symbol >> 6];
  }

  static constexpr uint8_t kSpace = 0;

 private:
  friend struct ModelMaker;

  static constexpr size_t kSymbols = 64;
  static constexpr uint8_t kSymbolBits = 0x3F;
  static constexpr size_t kPages = 0x22;

  uint8_t strangeSymbol(char32_t character) const;

  std::array<uint8_t, kSymbols * kSymbols> pairs_{};
  std::array<std::array<uint8_t, 4>, 4> caseCosts_{};
  std::array<uint8_t, kPages> pageAt_{};  // 0: no symbol of the language is there
  std::vector<uint8_t> symbols_;
};

// What stands behind what in a language of East Asia.
class EastAsianModel {
 public:
  static const EastAsianModel& of(Language language);

  uint8_t groupOf(char32_t character) const {
    return character < kPlane ? groups_[character] : groupBeyondThePlane(character);
  }
  static bool isAsciiGroup(uint8_t group) { return group < 4; }

  int32_t cost(char32_t before, char32_t character) const {
    const uint8_t groupBefore = groupOf(before);
    const uint8_t group = groupOf(character);
    const int32_t plain = changes_[groupBefore * kGroups + group] + characterCost(character, group);
    if (isAsciiGroup(groupBefore) || isAsciiGroup(group)) return plain;
    const int32_t asPair = pairCost(before, character);
    return asPair < plain ? asPair : plain;
  }

  static constexpr size_t kGroups = 13;
  static constexpr uint8_t kSpaceGroup = 0;

 private:
  friend struct ModelMaker;

  static constexpr size_t kPlane = 0x10000;
  // Of a blank, a letter, a sign and a control code.
  static constexpr int32_t kAsciiCosts[] = {0, 4 * kBit, 3 * kBit, 8 * kBit};
  static constexpr size_t kPairSlots = 16384;
  static constexpr int32_t kNoPair = 0x7FFF;
  static constexpr int32_t kBeyondThePlane = 17 * kBit;

  static uint8_t groupBeyondThePlane(char32_t character);
  int32_t characterCost(char32_t character, uint8_t group) const {
    if (isAsciiGroup(group)) return kAsciiCosts[group];
    return character < kPlane ? characters_[character] * kBit : kBeyondThePlane;
  }
  static size_t slotOf(uint32_t pair) { return (pair * 0x9E3779B1u) >> 18; }
  int32_t pairCost(char32_t before, char32_t character) const {
    const uint32_t pair = static_cast<uint32_t>(before << 16 | (character & 0xFFFF));
    for (size_t slot = slotOf(pair);; slot = (slot + 1) % kPairSlots) {
      if (pairs_[slot].pair == pair) return pairs_[slot].cost;
      if (pairs_[slot].pair == 0) return kNoPair;
    }
  }

  struct Pair {
    uint32_t pair;
    int32_t cost;
  };
  const uint8_t* groups_ = nullptr;  // of the characters of the first plane
  std::array<uint8_t, kGroups * kGroups> changes_{};
  std::array<uint8_t, kPlane> characters_{};
  std::array<Pair, kPairSlots> pairs_{};
};

}  // namespace ksv_kit::judge
