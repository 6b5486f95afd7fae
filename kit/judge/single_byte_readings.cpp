// The charsets of one byte a character.
#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "kit/judge/pair_counts.h"
#include "kit/judge/reading.h"

namespace ksv_kit::judge {
namespace {

struct SingleByteCharset {
  const char* name;
  const char* narrow;     // one that has the same characters but for some of its bytes, or null
  const char* languages;  // those that are written in it
  int32_t rarity;         // in bits: what a text costs for being in it
};

// What speaks against a charset of another script in a text that has no two letters of it together.
constexpr int64_t kWithoutWords = 16 * kBit;

constexpr char kWestern[] = "en de fr es pt it nl da sv nb fi is ga ca eu gl sq et";
constexpr char kCentral[] = "pl cs sk hu ro sl hr sq de";
constexpr char kCyrillic[] = "ru uk bg sr mk be";
constexpr char kBaltic[] = "lt lv et";

// Of charsets that say the same of a text the first one is named.
constexpr SingleByteCharset kCharsets[] = {
    {"windows-1252", "ISO-8859-1", kWestern, 0},
    {"ISO-8859-15", nullptr, "fr de es it nl pt fi da sv nb en ca et", 4},
    {"windows-1250", nullptr, kCentral, 1},
    {"ISO-8859-2", nullptr, kCentral, 1},
    {"windows-1251", nullptr, kCyrillic, 0},
    {"KOI8-R", nullptr, "ru bg", 1},
    {"KOI8-U", nullptr, "uk be ru", 2},
    {"ISO-8859-5", nullptr, kCyrillic, 3},
    {"IBM866", nullptr, "ru uk be bg", 2},
    {"x-mac-cyrillic", nullptr, kCyrillic, 4},
    {"IBM855", nullptr, kCyrillic, 5},
    {"windows-1253", nullptr, "el", 0},
    {"ISO-8859-7", nullptr, "el", 1},
    {"IBM737", nullptr, "el", 4},
    {"IBM869", nullptr, "el", 6},
    {"windows-1254", "ISO-8859-9", "tr", 1},
    {"IBM857", nullptr, "tr", 5},
    {"ISO-8859-3", nullptr, "eo tr", 5},
    {"windows-1255", "ISO-8859-8", "he", 0},
    {"ISO-8859-8", nullptr, "he", 2},
    {"IBM862", nullptr, "he", 4},
    {"windows-1256", nullptr, "ar fa", 0},
    {"ISO-8859-6", nullptr, "ar", 1},
    {"windows-874", "TIS-620", "th", 0},
    {"ISO-8859-11", nullptr, "th", 2},
    {"windows-1257", nullptr, kBaltic, 1},
    {"ISO-8859-13", nullptr, kBaltic, 2},
    {"ISO-8859-4", nullptr, kBaltic, 4},
    {"ISO-8859-10", nullptr, "is nb lt lv et", 6},
    {"IBM775", nullptr, kBaltic, 6},
    {"windows-1258", nullptr, "vi", 1},
    {"VISCII", nullptr, "vi", 3},
    {"ISO-8859-16", nullptr, "ro", 4},
    {"ISO-8859-14", nullptr, "cy ga", 4},
    {"macintosh", nullptr, kWestern, 5},
    {"IBM850", nullptr, kWestern, 5},
    {"IBM852", nullptr, kCentral, 6},
    {"IBM437", nullptr, "en de fr es it fi sv", 7},
    {"IBM858", nullptr, kWestern, 9},
    {"IBM860", nullptr, "pt", 9},
    {"IBM861", nullptr, "is", 9},
    {"IBM863", nullptr, "fr", 9},
    {"IBM865", nullptr, "da nb", 9},
};

// The characters of the bytes that the text has; empty when one is none.
std::vector<char16_t> charactersOf(const ByteTable& table, const std::vector<char16_t>& bytes) {
  std::vector<char16_t> characters(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    characters[i] = table[bytes[i]];
    if (characters[i] == kNoCharacter) return {};
  }
  return characters;
}

bool isNarrow(const char* narrow, const std::vector<char16_t>& bytes,
              const std::vector<char16_t>& characters) {
  const ByteTable* const table = narrow == nullptr ? nullptr : byteTable(narrow);
  return table != nullptr && charactersOf(*table, bytes) == characters;
}

// A charset with its table, and the languages by their indexes.
struct KnownCharset {
  const SingleByteCharset* charset;
  Script script;
  const ByteTable* table;
  std::vector<Language> languages;
};

std::vector<Language> languagesNamed(std::string_view names) {
  std::vector<Language> languages;
  while (!names.empty()) {
    const size_t end = std::min(names.find(' '), names.size());
    languages.push_back(languageNamed(names.substr(0, end)));
    names.remove_prefix(std::min(end + 1, names.size()));
  }
  return languages;
}

KnownCharset known(const SingleByteCharset& charset, const ByteTable& table) {
  std::vector<Language> languages = languagesNamed(charset.languages);
  const Script script = languageFacts(languages.front()).script;
  return {&charset, script, &table, std::move(languages)};
}

// Those that the charset directory has.
const std::vector<KnownCharset>& knownCharsets() {
  static const std::vector<KnownCharset>* const allKnown = [] {
    auto all = std::make_unique<std::vector<KnownCharset>>();
    for (const SingleByteCharset& charset : kCharsets)
      if (const ByteTable* const table = byteTable(charset.name))
        all->push_back(known(charset, *table));
    return all.release();
  }();
  return *allKnown;
}

const SingleByteCharset* charsetNamed(const std::string& name) {
  const auto found =
      std::find_if(std::begin(kCharsets), std::end(kCharsets),
                   [&](const SingleByteCharset& charset) { return name == charset.name; });
  return found == std::end(kCharsets) ? nullptr : found;
}

}  // namespace

std::string narrowestOf(const std::string& decodeAs, const std::vector<char16_t>& bytes) {
  const SingleByteCharset* const charset = charsetNamed(decodeAs);
  const ByteTable* const table = byteTable(decodeAs.c_str());
  if (charset == nullptr || charset->narrow == nullptr || table == nullptr) return decodeAs;
  const std::vector<char16_t> characters = charactersOf(*table, bytes);
  const bool isNarrower = !characters.empty() && isNarrow(charset->narrow, bytes, characters);
  return isNarrower ? charset->narrow : decodeAs;
}

void addSingleByteReadings(const Evidence& evidence, Readings& readings) {
  const PairCounts pairs(evidence.lines);
  const PlainCosts plain(evidence.lines);
  TellableCosts tellable(readings, pairs.high());
  for (const KnownCharset& known : knownCharsets()) {
    const SingleByteCharset& charset = *known.charset;
    const std::vector<char16_t> characters = charactersOf(*known.table, pairs.kinds());
    if (characters.empty()) continue;
    const bool hasWords =
        known.script == Script::kLatin || hasWordsOf(known.script, pairs, characters);
    const int64_t rarity = charset.rarity * kBit + (hasWords ? 0 : kWithoutWords);
    const LanguageCost best = bestAlphabet(known.languages, {pairs, characters, plain},
                                           evidence.priors, tellable.most() - rarity);
    if (!best.isFound()) continue;
    Reading reading;
    reading.charset =
        isNarrow(charset.narrow, pairs.kinds(), characters) ? charset.narrow : charset.name;
    reading.decodeAs = charset.name;
    reading.language = best.language;
    reading.cost = best.cost + rarity;
    reading.sameText = hashOf(characters);
    tellable.take(reading.cost);
    readings.push_back(std::move(reading));
  }
}

}  // namespace ksv_kit::judge
