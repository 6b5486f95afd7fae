#include "cli/text/language_model.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace ksv_cli {
namespace {

struct GroupRun {
  uint32_t first;
  uint8_t group;
};

// Characters of one cost.
struct CharacterBand {
  uint8_t cost;  // in bits
  const char16_t* characters;
};

struct LanguageFacts {
  uint8_t changes[LanguageModel::kGroupCount][LanguageModel::kGroupCount];  // in quarter bits
  uint8_t others[LanguageModel::kGroupCount];  // in bits: what no band has
  const CharacterBand* bands;
  size_t bandCount;
};

#include "cli/text/language_models.inc"

constexpr const LanguageFacts* kFacts[kLanguageCount] = {
    &kJapaneseFacts,
    &kSimplifiedChineseFacts,
    &kTraditionalChineseFacts,
    &kKoreanFacts,
    &kLatinFacts,
    &kCyrillicFacts,
    &kGreekFacts,
    &kThaiFacts,
    &kHebrewFacts,
    &kArabicFacts,
};

constexpr uint8_t kHan = 8;
constexpr uint8_t kSymbol = 12;
constexpr uint32_t kFirstHanPlane = 0x20000;

}  // namespace

// All models and the groups, made from the facts when the first text is judged.
struct LanguageModels {
  LanguageModels() {
    for (auto run = std::begin(kGroupRuns); run != std::end(kGroupRuns); ++run) {
      const uint32_t end =
          std::next(run) == std::end(kGroupRuns) ? LanguageModel::kPlane : std::next(run)->first;
      std::fill(groups.begin() + run->first, groups.begin() + end, run->group);
    }
    for (size_t i = 0; i < kLanguageCount; ++i) fill(models[i], *kFacts[i]);
  }

  void fill(LanguageModel& model, const LanguageFacts& facts) const {
    for (size_t i = 0; i < model.changes_.size(); ++i)
      model.changes_[i] =
          facts.changes[i / LanguageModel::kGroupCount][i % LanguageModel::kGroupCount];
    for (size_t i = 0; i < LanguageModel::kPlane; ++i)
      model.characters_[i] = facts.others[groups[i]];
    for (const CharacterBand* band = facts.bands; band != facts.bands + facts.bandCount; ++band)
      for (const char16_t* c = band->characters; *c != 0; ++c) model.characters_[*c] = band->cost;
  }

  static const LanguageModels& all() {
    static const std::unique_ptr<const LanguageModels> models = std::make_unique<LanguageModels>();
    return *models;
  }

  std::array<uint8_t, LanguageModel::kPlane> groups;
  std::array<LanguageModel, kLanguageCount> models;
};

const LanguageModel& LanguageModel::of(Language language) {
  return LanguageModels::all().models[static_cast<size_t>(language)];
}

uint8_t LanguageModel::groupOf(uint32_t character) {
  if (character < kPlane) return LanguageModels::all().groups[character];
  return character >= kFirstHanPlane ? kHan : kSymbol;
}

}  // namespace ksv_cli
