// How usual a text is in a language, character by character.
//
// The idea: a language model says for each character how many bits it takes to say that it
// comes next. Of two readings of the same bytes the one that costs less is the likelier,
// and n bits less make it 2 to the n times likelier, as far as the model is true. The model
// looks at the character and at the group (kana, han, ...) of the one before it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ksv_cli {

enum class Language : uint8_t {
  kJapanese,
  kSimplifiedChinese,
  kTraditionalChinese,
  kKorean,
  kLatin,  // the European ones in Latin script together
  kCyrillic,
  kGreek,
  kThai,
  kHebrew,
  kArabic,
};
inline constexpr size_t kLanguageCount = 10;

// Costs are in quarters of a bit.
inline constexpr uint64_t kBit = 4;

class LanguageModel {
 public:
  static const LanguageModel& of(Language language);

  static uint8_t groupOf(uint32_t character);
  // The group that a text begins behind.
  static constexpr uint8_t kStart = 0;

  uint32_t cost(uint8_t groupBefore, uint32_t character, uint8_t group) const {
    const uint32_t change = changes_[groupBefore * kGroupCount + group];
    return change + static_cast<uint32_t>(kBit) * characterCost(character);
  }

  static constexpr size_t kGroupCount = 13;
  static constexpr size_t kPlane = 0x10000;

 private:
  friend struct LanguageModels;

  uint32_t characterCost(uint32_t character) const {
    return character < kPlane ? characters_[character] : kBeyondThePlane;
  }

  static constexpr uint32_t kBeyondThePlane = 18;

  std::array<uint8_t, kGroupCount * kGroupCount> changes_;
  std::array<uint8_t, kPlane> characters_;
};

// The cost of a text that is handed in character by character.
class TextCost {
 public:
  explicit TextCost(Language language) : model_(LanguageModel::of(language)) {}

  void take(uint32_t character) {
    const uint8_t group = LanguageModel::groupOf(character);
    cost_ += model_.cost(before_, character, group);
    before_ = group;
  }
  uint64_t cost() const { return cost_; }

 private:
  const LanguageModel& model_;
  uint8_t before_ = LanguageModel::kStart;
  uint64_t cost_ = 0;
};

}  // namespace ksv_cli
