// The charsets of several bytes a character, Unicode aside.
#include <algorithm>
#include <array>
#include <iterator>

#include "kit/judge/reading.h"

namespace ksv_kit::judge {
namespace {

struct MultiByteFamily {
  // What it is read as, from the narrow to the wide: the usual one first. Null behind the last.
  std::array<CharsetStep, 4> steps;
  Language languages[2];
  int32_t rarity;  // in bits
};

constexpr MultiByteFamily kFamilies[] = {
    {{{{"Shift_JIS", "WINDOWS31J"},
       {"WINDOWS31J", "WINDOWS31J"},
       {"Shift_JIS-2004", "Shift_JIS-2004"}}},
     {kJapanese, kNoLanguage},
     0},
    {{{{"EUC-JP", "EUC-JP-MS"}, {"EUC-JP-MS", "EUC-JP-MS"}, {"EUC-JIS-2004", "EUC-JIS-2004"}}},
     {kJapanese, kNoLanguage},
     0},
    {{{{"GB2312", "ChineseGBK"}, {"ChineseGBK", "ChineseGBK"}, {"GB18030", "GB18030"}}},
     {kSimplifiedChinese, kTraditionalChinese},
     0},
    {{{{"ChineseBIG5", "ChineseBIG5"}, {"Big5-HKSCS", "Big5-HKSCS"}}},
     {kTraditionalChinese, kNoLanguage},
     0},
    {{{{"EUC-KR", "KoreanKSC"}, {"KoreanKSC", "KoreanKSC"}}}, {kKorean, kNoLanguage}, 0},
    {{{{"EUC-TW", "EUC-TW"}}}, {kTraditionalChinese, kNoLanguage}, 4},
    {{{{"Johab", "Johab"}}}, {kKorean, kNoLanguage}, 6},
};

// None where it costs more than anybody is told.
std::optional<Reading> readingOf(const MultiByteFamily& family, const CharsetStep& step,
                                 std::span<const char16_t> text, const LanguagePriors& priors,
                                 int64_t limit) {
  LanguageCost best;
  for (const Language language : family.languages) {
    if (language == kNoLanguage) continue;
    const int64_t prior = priors.of(language) + family.rarity * kBit;
    const int64_t most = std::min(limit, best.cost) - prior;
    const int64_t cost = eastAsianCost(language, text, most);
    if (cost <= most) best.improve({language, cost + prior});
  }
  if (!best.isFound()) return std::nullopt;
  Reading reading;
  reading.charset = step.charset;
  reading.decodeAs = step.decodeAs;
  reading.language = best.language;
  reading.cost = best.cost;
  reading.sameText = hashOf(text);
  return reading;
}

const MultiByteFamily* familyReadAs(const std::string& decodeAs) {
  for (const MultiByteFamily& family : kFamilies)
    for (const CharsetStep& step : family.steps)
      if (step.charset != nullptr && decodeAs == step.decodeAs) return &family;
  return nullptr;
}

// The text by the first step that all of it is sound in. A narrow step that is decoded by a wider
// one is asked for itself later, of the whole text.
void addSound(const MultiByteFamily& family, const Evidence& evidence, TellableCosts& tellable,
              Readings& readings) {
  const char* tried = nullptr;
  for (const CharsetStep& step : family.steps) {
    if (step.charset == nullptr || step.decodeAs == tried) continue;
    tried = step.decodeAs;
    const auto text = decodeSound(step.decodeAs, evidence.lines, evidence.mayEndInside);
    if (!text) continue;
    auto reading = readingOf(family, step, *text, evidence.priors, tellable.most());
    if (!reading) return;
    tellable.take(reading->cost);
    readings.push_back(std::move(*reading));
    return;
  }
}

bool isDecoded(const MultiByteFamily& family, const Readings& readings) {
  return std::any_of(readings.begin(), readings.end(), [&](const Reading& reading) {
    return familyReadAs(reading.decodeAs) == &family;
  });
}

}  // namespace

std::vector<CharsetStep> stepsOf(const std::string& decodeAs) {
  const MultiByteFamily* const family = familyReadAs(decodeAs);
  std::vector<CharsetStep> steps;
  if (family == nullptr) return steps;
  for (const CharsetStep& step : family->steps)
    if (step.charset != nullptr) steps.push_back(step);
  return steps;
}

void addMultiByteReadings(const Evidence& evidence, Readings& readings) {
  const auto high = std::count_if(evidence.lines.begin(), evidence.lines.end(),
                                  [](uint8_t byte) { return byte >= 0x80; });
  TellableCosts tellable(readings, static_cast<size_t>(high));
  for (const MultiByteFamily& family : kFamilies) addSound(family, evidence, tellable, readings);
}

void addDamagedReadings(const Evidence& evidence, Readings& readings) {
  for (const MultiByteFamily& family : kFamilies) {
    if (isDecoded(family, readings)) continue;
    const CharsetStep& step = family.steps.front();
    const auto text = decodeDamaged(step.decodeAs, evidence.lines);
    if (!text) continue;
    const auto damages = static_cast<size_t>(std::count(text->begin(), text->end(), u'\uFFFD'));
    if (damages == 0 || isTooDamaged(damages, text->size())) continue;
    auto reading = readingOf(family, step, *text, evidence.priors, kNoLimit);
    if (!reading) continue;
    reading->invalid = damages;
    reading->cost += damageCost(damages);
    readings.push_back(std::move(*reading));
  }
}

uint64_t hashOf(std::span<const char16_t> text) {
  uint64_t hash = 0xCBF29CE484222325u;
  for (const char16_t c : text) hash = (hash ^ c) * 0x100000001B3u;
  return hash;
}

}  // namespace ksv_kit::judge
