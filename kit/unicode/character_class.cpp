#include "kit/unicode/character_class.h"

#include <algorithm>
#include <iterator>

namespace ksv_kit {
namespace {

enum class CharacterClass : uint32_t {
  kControl,
  kFormat,
  kSurrogate,
  kPrivateUse,
  kNoncharacter,
  kUnassigned,
  kVariationSelector,
  kEmoji,
  kHalfWidth,
  kFullWidth,
  kCombiningMark,
  kIdeograph,
  kCompatibilityIdeograph,
  kHiragana,
  kKatakana,
  kHangul,
  kLetter,
  kNumber,
  kPunctuation,
  kSymbol,
  kSpace,
};

constexpr std::string_view kNames[] = {
    "control",
    "format",
    "surrogate",
    "private use",
    "noncharacter",
    "unassigned",
    "variation selector",
    "emoji",
    "half-width",
    "full-width",
    "combining mark",
    "CJK ideograph",
    "compatibility ideograph",
    "hiragana",
    "katakana",
    "Hangul",
    "letter",
    "number",
    "punctuation",
    "symbol",
    "space",
};

// Characters of one class, up to the beginning of the next run: 4 bytes each, 10 KB in all. Two
// bytes each, in planes, would save 4 KB and cost a second table.
struct ClassRun {
  uint32_t first : 24;
  CharacterClass name : 8;
};
static_assert(sizeof(ClassRun) == 4);

struct CodeRange {
  uint32_t first;
  uint32_t last;
};

#include "kit/unicode/character_classes.inc"

static_assert(sizeof(kRuns) < 30 * 1024);

}  // namespace

std::string_view classOf(uint32_t character) {
  if (character > 0x10FFFF) return "no character";
  const auto* behind =
      std::upper_bound(std::begin(kRuns), std::end(kRuns), character,
                       [](uint32_t wanted, const ClassRun& run) { return wanted < run.first; });
  return kNames[static_cast<uint32_t>((behind - 1)->name)];
}

bool isCircled(uint32_t character) {
  return std::any_of(std::begin(kCircled), std::end(kCircled), [character](CodeRange range) {
    return range.first <= character && character <= range.last;
  });
}

}  // namespace ksv_kit
