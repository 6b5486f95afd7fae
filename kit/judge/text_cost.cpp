#include "kit/judge/text_cost.h"

#include <algorithm>
#include <array>

namespace ksv_kit::judge {
namespace {

// What is not in a language that was named.
constexpr int32_t kUnexpected = 24 * kBit;

// How much the ASCII of a text may say.
constexpr int64_t kMostAgainstPlain = 10 * kBit;

// Of characters above ASCII in a language that nobody knows, and of leaving ASCII and going back.
constexpr int64_t kUnknownCharacter = 8 * kBit;
// Of scripts that have thousands of characters.
constexpr int64_t kUnknownOfMany = 13 * kBit;
constexpr char16_t kFirstOfMany = 0x2E80;
constexpr int64_t kUnknownChange = 2 * kBit;

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

// Of each script the languages that are written in it.
std::vector<Language> languagesOf(Script script) {
  std::vector<Language> languages;
  for (size_t i = 0; i < languageCount(); ++i)
    if (languageFacts(static_cast<Language>(i)).script == script)
      languages.push_back(static_cast<Language>(i));
  return languages;
}

std::vector<Language> alphabetsOf(const std::array<size_t, kScripts>& scripts) {
  const size_t most = *std::max_element(scripts.begin(), scripts.end() - 1);
  if (most == 0) return languagesOf(Script::kLatin);
  std::vector<Language> languages;
  for (size_t script = 0; script + 1 < kScripts; ++script)
    if (scripts[script] * 4 >= most && scripts[script] != 0)
      for (const Language language : languagesOf(static_cast<Script>(script)))
        languages.push_back(language);
  return languages;
}

int64_t tellingCost(const AlphabetModel& model, const AlphabetText& text, int64_t limit) {
  int64_t cost = 0;
  for (const PairCount& pair : text.pairs.telling()) {
    const uint8_t before = model.symbolOf(text.characters[pair.before]);
    const uint8_t next = model.symbolOf(text.characters[pair.next]);
    cost += static_cast<int64_t>(pair.count) * model.cost(before, next);
    if (cost > limit) break;
  }
  return cost;
}

// Which of the languages of East Asia a text may be in at all: kana are those of one, hangul are
// those of one.
std::vector<Language> eastAsianOf(std::span<const char16_t> text) {
  size_t kana = 0;
  size_t hangul = 0;
  size_t han = 0;
  for (const char16_t c : text) {
    kana += c >= 0x3041 && c <= 0x30FE;
    hangul += c >= 0xAC00 && c <= 0xD7A3;
    han += c >= 0x3400 && c <= 0x9FFF;
  }
  const size_t all = kana + hangul + han;
  if (kana * 8 > all) return {kJapanese};
  if (hangul * 4 > all) return {kKorean};
  return languagesOf(Script::kEastAsian);
}

// What letters behind each other cost in the languages in Latin script, beside English: a row for
// each pair, so that all languages are counted at once.
class PlainPairs {
 public:
  static constexpr size_t kBlank = 0;
  static constexpr size_t kOther = 27;
  static constexpr uint8_t kNoPlace = 0xFF;
  // Sums of so many stay within 16 bits.
  static constexpr size_t kMostCounted = 320;

  using Row = std::array<int16_t, 32>;

  static const PlainPairs& all() {
    static const PlainPairs* const pairs = new PlainPairs;
    return *pairs;
  }

  static size_t kindOf(uint8_t byte) {
    const uint8_t lower = byte | 0x20;
    if (lower >= 'a' && lower <= 'z') return static_cast<size_t>(lower - 'a' + 1);
    return byte == ' ' || byte == '\n' ? kBlank : kOther;
  }
  const Row& row(size_t before, size_t next) const { return rows_[before * kKinds + next]; }
  uint8_t placeOf(Language language) const { return places_[language]; }

 private:
  static constexpr size_t kKinds = 28;

  PlainPairs() : places_(languageCount(), kNoPlace) {
    const std::vector<Language> languages = languagesOf(Script::kLatin);
    for (size_t i = 0; i < languages.size() && i < Row().size(); ++i) {
      places_[languages[i]] = static_cast<uint8_t>(i);
      fill(i, AlphabetModel::of(languages[i]));
    }
  }

  // Signs and digits say nothing.
  void fill(size_t place, const AlphabetModel& model) {
    static const AlphabetModel& english = AlphabetModel::of(kEnglish);
    for (size_t before = 0; before < kOther; ++before)
      for (size_t next = 0; next < kOther; ++next) {
        const char32_t one = before == kBlank ? U' ' : static_cast<char32_t>('a' + before - 1);
        const char32_t other = next == kBlank ? U' ' : static_cast<char32_t>('a' + next - 1);
        const auto costIn = [&](const AlphabetModel& in) {
          return in.cost(in.symbolOf(one), in.symbolOf(other));
        };
        rows_[before * kKinds + next][place] =
            static_cast<int16_t>(costIn(model) - costIn(english));
      }
  }

  std::array<Row, kKinds * kKinds> rows_{};
  std::vector<uint8_t> places_;
};

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

PlainCosts::PlainCosts(std::span<const uint8_t> bytes) { count(bytes); }

PlainCosts::PlainCosts(std::span<const char16_t> units) { count(units); }

template <typename Text>
void PlainCosts::count(const Text& text) {
  const PlainPairs& pairs = PlainPairs::all();
  std::array<int16_t, kMost> sums{};
  size_t before = PlainPairs::kBlank;
  size_t left = PlainPairs::kMostCounted;
  for (const auto one : text) {
    if (left == 0) break;
    if (one >= 0x80) {
      before = PlainPairs::kOther;
      continue;
    }
    const size_t next = PlainPairs::kindOf(static_cast<uint8_t>(one));
    const auto& row = pairs.row(before, next);
    for (size_t i = 0; i < kMost; ++i) sums[i] = static_cast<int16_t>(sums[i] + row[i]);
    before = next;
    --left;
  }
  for (size_t i = 0; i < kMost; ++i)
    costs_[i] = std::clamp<int32_t>(sums[i], kLeast, kMostAgainstPlain);
}

int32_t PlainCosts::of(Language language) const {
  const uint8_t place = PlainPairs::all().placeOf(language);
  return place == PlainPairs::kNoPlace ? 0 : costs_[place];
}

bool hasWordsOf(Script script, const PairCounts& pairs, std::span<const char16_t> characters) {
  const auto isLetter = [&](uint16_t kind) {
    return characters[kind] >= 0xC0 && scriptOf(characters[kind]) == script;
  };
  return std::any_of(pairs.telling().begin(), pairs.telling().end(), [&](const PairCount& pair) {
    return isLetter(pair.before) && isLetter(pair.next);
  });
}

LanguageCost bestAlphabet(std::span<const Language> languages, const AlphabetText& text,
                          const LanguagePriors& priors, int64_t limit) {
  LanguageCost best;
  for (const Language language : languages) {
    const int64_t prior = priors.of(language);
    const int64_t most = std::min(limit, best.cost) - prior - PlainCosts::kLeast;
    const int64_t telling = tellingCost(AlphabetModel::of(language), text, most);
    if (telling > most) continue;
    const int64_t cost = telling + prior + text.plain.of(language);
    if (cost <= limit) best.improve({language, cost});
  }
  return best;
}

int64_t eastAsianCost(Language language, std::span<const char16_t> text, int64_t limit) {
  const EastAsianModel& model = EastAsianModel::of(language);
  int64_t cost = 0;
  char16_t before = ' ';
  for (const char16_t c : text) {
    if (c >= 0x80 || before >= 0x80) {
      cost += model.cost(before, c);
      if (cost > limit) break;
    }
    before = c;
  }
  return cost;
}

LanguageCost bestLanguage(std::span<const char16_t> text, const LanguagePriors& priors,
                          int64_t limit) {
  const std::array<size_t, kScripts> scripts = countScripts(text);
  const size_t eastAsian = scripts[static_cast<size_t>(Script::kEastAsian)];
  size_t others = 0;
  for (const size_t count : scripts) others += count;
  others -= eastAsian;
  LanguageCost best;
  if (eastAsian != 0 && eastAsian * 8 >= others)
    for (const Language language : eastAsianOf(text)) {
      const int64_t most = std::min(limit, best.cost) - priors.of(language);
      const int64_t cost = eastAsianCost(language, text, most);
      if (cost <= most) best.improve({language, cost + priors.of(language)});
    }
  if (eastAsian > 8 * others) return best;
  const PairCounts pairs(text);
  const PlainCosts plain(text);
  best.improve(bestAlphabet(alphabetsOf(scripts), {pairs, pairs.kinds(), plain}, priors,
                            std::min(limit, best.cost)));
  return best;
}

int64_t plainCost(std::span<const uint8_t> bytes) {
  const AlphabetModel& model = AlphabetModel::of(kEnglish);
  int64_t cost = 0;
  uint8_t before = ' ';
  for (const uint8_t byte : bytes) {
    if (byte < 0x80 && before < 0x80)
      cost += model.cost(model.symbolOf(before), model.symbolOf(byte));
    before = byte;
  }
  return cost;
}

int64_t unknownCost(std::span<const char16_t> text) {
  int64_t cost = 0;
  bool wasHigh = false;
  for (const char16_t c : text) {
    const bool isHigh = c >= 0x80;
    if (isHigh) cost += c < kFirstOfMany ? kUnknownCharacter : kUnknownOfMany;
    if (isHigh != wasHigh) cost += kUnknownChange;
    wasHigh = isHigh;
  }
  return cost;
}

// Without branches, so that it is done by vectors.
int64_t unknownCost(std::span<const uint8_t> bytes) {
  if (bytes.empty()) return 0;
  uint32_t high = bytes[0] >> 7;
  uint32_t changes = high;
  const uint8_t* const text = bytes.data();
  for (size_t i = 1; i < bytes.size(); ++i) {
    high += text[i] >> 7;
    changes += static_cast<uint32_t>((text[i] ^ text[i - 1]) >> 7);
  }
  return high * int64_t{kUnknownCharacter} + changes * int64_t{kUnknownChange};
}

}  // namespace ksv_kit::judge
