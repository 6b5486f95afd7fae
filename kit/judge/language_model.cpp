#include "kit/judge/language_model.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <mutex>
#include <string>

namespace ksv_kit::judge {
namespace {

struct AlphabetFacts {
  const char16_t* letters;   // small ones, ascending
  const char16_t* capitals;  // of each, or U+0001
  const char* costs;         // a row for each symbol: what each costs behind it, a digit of base64
};

// Characters, or pairs of them, of one cost.
struct Band {
  uint8_t cost;  // in bits
  const char16_t* characters;
};

struct EastAsianFacts {
  uint8_t changes[EastAsianModel::kGroups][EastAsianModel::kGroups];
  uint8_t others[EastAsianModel::kGroups];  // in bits: what no band has
  const Band* characters;
  size_t characterBands;
  const Band* pairs;
  size_t pairBands;
};

struct GroupRun {
  uint32_t first;
  uint8_t group;
};

#include "kit/judge/language_models.inc"

constexpr int32_t kRare = 2 * kBit;

struct ModelFacts {
  LanguageFacts language;
  const AlphabetFacts* alphabet;
  const EastAsianFacts* eastAsian;
};

constexpr ModelFacts kModels[] = {
    {{"ja", Script::kEastAsian, 0}, nullptr, &kJa},
    {{"zh-CN", Script::kEastAsian, 0}, nullptr, &kZhCn},
    {{"zh-TW", Script::kEastAsian, 0}, nullptr, &kZhTw},
    {{"ko", Script::kEastAsian, 0}, nullptr, &kKo},
    {{"en", Script::kLatin, 0}, &kEn, nullptr},
    {{"de", Script::kLatin, 0}, &kDe, nullptr},
    {{"fr", Script::kLatin, 0}, &kFr, nullptr},
    {{"es", Script::kLatin, 0}, &kEs, nullptr},
    {{"pt", Script::kLatin, 0}, &kPt, nullptr},
    {{"it", Script::kLatin, 0}, &kIt, nullptr},
    {{"nl", Script::kLatin, 0}, &kNl, nullptr},
    {{"da", Script::kLatin, 0}, &kDa, nullptr},
    {{"sv", Script::kLatin, 0}, &kSv, nullptr},
    {{"nb", Script::kLatin, 0}, &kNb, nullptr},
    {{"fi", Script::kLatin, 0}, &kFi, nullptr},
    {{"is", Script::kLatin, kRare}, &kIs, nullptr},
    {{"pl", Script::kLatin, 0}, &kPl, nullptr},
    {{"cs", Script::kLatin, 0}, &kCs, nullptr},
    {{"sk", Script::kLatin, 0}, &kSk, nullptr},
    {{"hu", Script::kLatin, 0}, &kHu, nullptr},
    {{"ro", Script::kLatin, 0}, &kRo, nullptr},
    {{"sl", Script::kLatin, 0}, &kSl, nullptr},
    {{"hr", Script::kLatin, 0}, &kHr, nullptr},
    {{"sq", Script::kLatin, kRare}, &kSq, nullptr},
    {{"et", Script::kLatin, kRare}, &kEt, nullptr},
    {{"lv", Script::kLatin, kRare}, &kLv, nullptr},
    {{"lt", Script::kLatin, kRare}, &kLt, nullptr},
    {{"tr", Script::kLatin, 0}, &kTr, nullptr},
    {{"eo", Script::kLatin, 2 * kRare}, &kEo, nullptr},
    {{"ga", Script::kLatin, kRare}, &kGa, nullptr},
    {{"cy", Script::kLatin, 2 * kRare}, &kCy, nullptr},
    {{"ca", Script::kLatin, kRare}, &kCa, nullptr},
    {{"eu", Script::kLatin, kRare}, &kEu, nullptr},
    {{"gl", Script::kLatin, kRare}, &kGl, nullptr},
    {{"vi", Script::kLatin, 0}, &kVi, nullptr},
    {{"ru", Script::kCyrillic, 0}, &kRu, nullptr},
    {{"uk", Script::kCyrillic, 0}, &kUk, nullptr},
    {{"bg", Script::kCyrillic, 0}, &kBg, nullptr},
    {{"sr", Script::kCyrillic, kRare}, &kSr, nullptr},
    {{"mk", Script::kCyrillic, kRare}, &kMk, nullptr},
    {{"be", Script::kCyrillic, kRare}, &kBe, nullptr},
    {{"el", Script::kGreek, 0}, &kEl, nullptr},
    {{"he", Script::kHebrew, 0}, &kHe, nullptr},
    {{"ar", Script::kArabic, 0}, &kAr, nullptr},
    {{"fa", Script::kArabic, 0}, &kFa, nullptr},
    {{"th", Script::kThai, 0}, &kTh, nullptr},
};

constexpr size_t kLanguages = std::size(kModels);

constexpr bool isAt(Language language, std::string_view name) {
  return kModels[language].language.name == name;
}
static_assert(isAt(kJapanese, "ja") && isAt(kSimplifiedChinese, "zh-CN") &&
              isAt(kTraditionalChinese, "zh-TW") && isAt(kKorean, "ko") && isAt(kEnglish, "en"));

// ---- Symbols ----

constexpr uint8_t kDigit = 1;
constexpr uint8_t kSign = 2;
constexpr uint8_t kOpening = 3;
constexpr uint8_t kClosing = 4;
constexpr uint8_t kMark = 5;
constexpr uint8_t kLatinLetter = 6;
constexpr uint8_t kStrangeLetter = 7;
constexpr uint8_t kStrange = 8;
constexpr uint8_t kControl = 9;
constexpr uint8_t kFirstLetter = 10;
constexpr uint8_t kLower = 1 << 6;
constexpr uint8_t kUpper = 2 << 6;

// What one of a kind costs over the kind: so many of them are about as usual as each other.
constexpr int32_t kWithinKind[kFirstLetter] = {0,        0,  0,        2 * kBit, 2 * kBit,
                                               3 * kBit, 17, 5 * kBit, 7 * kBit, 10 * kBit};

constexpr char16_t kNoCapital = 1;

// Letters that are written one way in older charsets, and another way in Unicode: s and t of
// Romanian with a cedilla or a comma.
constexpr char16_t kSameLetters[][2] = {
    {0x015F, 0x0219}, {0x0163, 0x021B}, {0x015E, 0x0218}, {0x0162, 0x021A}};

bool isAsciiLetter(char32_t c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

uint8_t asciiSymbol(char32_t c) {
  if (c == ' ' || (c >= '\t' && c <= '\r' && c != '\v')) return AlphabetModel::kSpace;
  if (c < 0x20 || c == 0x7F) return kControl;
  if (c >= '0' && c <= '9') return kDigit;
  if (!isAsciiLetter(c)) return kSign;
  return static_cast<uint8_t>(kLatinLetter | (c >= 'a' ? kLower : kUpper));
}

bool isLetterOf(Script script, char32_t c) {
  switch (script) {
    case Script::kLatin:
      return (c >= 0xC0 && c <= 0x24F && c != 0xD7 && c != 0xF7) || (c >= 0x300 && c <= 0x36F) ||
             (c >= 0x1E00 && c <= 0x1EFF);
    case Script::kCyrillic:
      return c >= 0x400 && c <= 0x52F;
    case Script::kGreek:
      return c >= 0x370 && c <= 0x3FF;
    case Script::kHebrew:
      return c >= 0x590 && c <= 0x5FF;
    case Script::kArabic:
      return c >= 0x600 && c <= 0x6FF;
    case Script::kThai:
      return c >= 0xE00 && c <= 0xE7F;
    case Script::kEastAsian:
      break;
  }
  return false;
}

bool isAmong(std::u16string_view characters, char32_t c) {
  return c < 0x10000 && characters.find(static_cast<char16_t>(c)) != std::u16string_view::npos;
}

uint8_t plainSymbol(Script script, char32_t c) {
  if (c < 0x80) return asciiSymbol(c);
  if (c < 0xA0) return kControl;
  if (isAmong(kOpenings, c)) return kOpening;
  if (isAmong(kClosings, c)) return kClosing;
  if (isAmong(kMarks, c)) return kMark;
  return isLetterOf(script, c) ? kStrangeLetter : kStrange;
}

// The cost that a digit of base64 stands for.
uint8_t costOfDigit(char digit) {
  if (digit >= 'A' && digit <= 'Z') return static_cast<uint8_t>(digit - 'A');
  if (digit >= 'a' && digit <= 'z') return static_cast<uint8_t>(digit - 'a' + 26);
  if (digit >= '0' && digit <= '9') return static_cast<uint8_t>(digit - '0' + 52);
  return digit == '+' ? 62 : 63;
}

// ---- Groups ----

constexpr uint8_t kHan = 8;
constexpr uint8_t kSymbolGroup = 12;
constexpr char32_t kFirstHanPlane = 0x20000;

struct Groups {
  Groups() {
    for (auto run = std::begin(kGroupRuns); run != std::end(kGroupRuns); ++run) {
      const uint32_t end = std::next(run) == std::end(kGroupRuns) ? static_cast<uint32_t>(of.size())
                                                                  : std::next(run)->first;
      std::fill(of.begin() + run->first, of.begin() + end, run->group);
    }
  }
  std::array<uint8_t, 0x10000> of;
};

const Groups& groups() {
  static const std::unique_ptr<const Groups> all = std::make_unique<Groups>();
  return *all;
}

}  // namespace

// ---- Making ----

// Each model is made when the first text is looked at in its language, and kept.
struct ModelMaker {
  static void setLetters(AlphabetModel& model, const AlphabetFacts& facts) {
    const std::u16string_view letters = facts.letters;
    for (size_t i = 0; i < letters.size(); ++i) {
      const auto symbol = static_cast<uint8_t>(kFirstLetter + i);
      const char16_t capital = facts.capitals[i];
      const bool hasCases = capital != kNoCapital;
      set(model, letters[i], static_cast<uint8_t>(symbol | (hasCases ? kLower : 0)));
      if (hasCases) set(model, capital, static_cast<uint8_t>(symbol | kUpper));
    }
    for (const auto& [one, other] : kSameLetters) {
      copyUnlessLetter(model, one, other);
      copyUnlessLetter(model, other, one);
    }
  }

  static void copyUnlessLetter(AlphabetModel& model, char16_t from, char16_t to) {
    const uint8_t symbol = model.symbolOf(from);
    const bool isLetter = (symbol & AlphabetModel::kSymbolBits) >= kFirstLetter;
    const bool hasPage = model.pageAt_[to >> 8] != 0;
    const bool isTaken =
        hasPage && (model.symbolOf(to) & AlphabetModel::kSymbolBits) >= kFirstLetter;
    if (isLetter && hasPage && !isTaken) set(model, to, symbol);
  }

  static void set(AlphabetModel& model, char16_t character, uint8_t symbol) {
    const size_t page = character >> 8;
    model.symbols_[(model.pageAt_[page] - 1u) * 256u + (character & 0xFF)] = symbol;
  }

  // Pages of the letters, of Latin-1, of the general punctuation and of signs like a letter.
  static void setPages(AlphabetModel& model, Script script, const AlphabetFacts& facts) {
    const auto add = [&](size_t page) {
      if (page >= AlphabetModel::kPages || model.pageAt_[page] != 0) return;
      model.pageAt_[page] = static_cast<uint8_t>(model.symbols_.size() / 256 + 1);
      for (size_t low = 0; low < 256; ++low)
        model.symbols_.push_back(plainSymbol(script, static_cast<char32_t>(page << 8 | low)));
    };
    add(0);
    add(0x20);
    add(0x21);
    for (const char16_t letter : std::u16string_view(facts.letters)) add(letter >> 8);
    if (script == Script::kLatin)
      for (const size_t page : {size_t{1}, size_t{2}}) add(page);
    for (const char16_t letter : std::u16string_view(facts.capitals)) add(letter >> 8);
  }

  static void setCosts(AlphabetModel& model, const AlphabetFacts& facts) {
    const size_t size = kFirstLetter + std::u16string_view(facts.letters).size();
    for (size_t before = 0; before < size; ++before)
      for (size_t symbol = 0; symbol < size; ++symbol) {
        int32_t cost = costOfDigit(facts.costs[before * size + symbol]);
        if (symbol < kFirstLetter) cost += kWithinKind[symbol];
        model.pairs_[before * AlphabetModel::kSymbols + symbol] = static_cast<uint8_t>(cost);
      }
    for (size_t before = 0; before < 3; ++before)
      for (size_t one = 0; one < 3; ++one) model.caseCosts_[before][one] = kCaseCosts[before][one];
  }

  static std::unique_ptr<AlphabetModel> alphabet(const ModelFacts& facts) {
    auto model = std::make_unique<AlphabetModel>();
    setPages(*model, facts.language.script, *facts.alphabet);
    setLetters(*model, *facts.alphabet);
    setCosts(*model, *facts.alphabet);
    return model;
  }

  static void setPairs(EastAsianModel& model, const EastAsianFacts& facts) {
    for (const Band* band = facts.pairs; band != facts.pairs + facts.pairBands; ++band)
      for (const char16_t* c = band->characters; *c != 0; c += 2) {
        const auto pair = static_cast<uint32_t>(c[0]) << 16 | c[1];
        size_t slot = EastAsianModel::slotOf(pair);
        while (model.pairs_[slot].pair != 0) slot = (slot + 1) % EastAsianModel::kPairSlots;
        model.pairs_[slot] = {pair, band->cost * kBit};
      }
  }

  static std::unique_ptr<EastAsianModel> eastAsian(const ModelFacts& made) {
    const EastAsianFacts& facts = *made.eastAsian;
    auto model = std::make_unique<EastAsianModel>();
    std::memcpy(model->changes_.data(), facts.changes, model->changes_.size());
    const Groups& groupsOfAll = groups();
    model->groups_ = groupsOfAll.of.data();
    for (size_t c = 0; c < model->characters_.size(); ++c)
      model->characters_[c] = facts.others[groupsOfAll.of[c]];
    for (const Band* band = facts.characters; band != facts.characters + facts.characterBands;
         ++band)
      for (const char16_t* c = band->characters; *c != 0; ++c) model->characters_[*c] = band->cost;
    setPairs(*model, facts);
    return model;
  }

  // Not by std::call_once, which an exception leaves only with memory to spare.
  template <typename Model, typename Make>
  static const Model& kept(Language language, Make make) {
    static std::array<std::atomic<const Model*>, kLanguages> models{};
    static std::mutex* const mutex = new std::mutex;
    const Model* model = models[language].load(std::memory_order_acquire);
    if (model != nullptr) return *model;
    const std::lock_guard<std::mutex> lock(*mutex);
    model = models[language].load(std::memory_order_acquire);
    if (model != nullptr) return *model;
    std::unique_ptr<Model> made = make(kModels[language]);
    models[language].store(made.get(), std::memory_order_release);
    return *made.release();
  }
};

size_t languageCount() { return kLanguages; }

const LanguageFacts& languageFacts(Language language) { return kModels[language].language; }

Language languageNamed(std::string_view name) {
  const auto find = [](std::string_view wanted) {
    for (size_t i = 0; i < kLanguages; ++i)
      if (wanted == kModels[i].language.name) return static_cast<Language>(i);
    return kNoLanguage;
  };
  const Language whole = find(name);
  return whole != kNoLanguage ? whole : find(name.substr(0, name.find('-')));
}

uint8_t AlphabetModel::strangeSymbol(char32_t character) const {
  return isLetterOf(Script::kLatin, character) ? kStrangeLetter : kStrange;
}

const AlphabetModel& AlphabetModel::of(Language language) {
  return ModelMaker::kept<AlphabetModel>(language, ModelMaker::alphabet);
}

const EastAsianModel& EastAsianModel::of(Language language) {
  return ModelMaker::kept<EastAsianModel>(language, ModelMaker::eastAsian);
}

uint8_t EastAsianModel::groupBeyondThePlane(char32_t character) {
  return character >= kFirstHanPlane ? kHan : kSymbolGroup;
}

}  // namespace ksv_kit::judge
