#include "bench/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <unordered_map>

namespace ksv_bench {
namespace {

const Charset kCodePoints = {"ISO-10646-UCS-4", "UCS-4LE", nullptr, true};

std::string bytesOf(const std::u32string& characters) {
  std::string bytes;
  bytes.reserve(4 * characters.size());
  for (const char32_t c : characters) {
    for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<char>(c >> (8 * i) & 0xFF));
  }
  return bytes;
}

std::u32string charactersOf(const std::string& bytes) {
  std::u32string characters;
  for (size_t at = 0; at + 4 <= bytes.size(); at += 4) {
    char32_t c = 0;
    for (size_t i = 4; i-- > 0;) c = c << 8 | static_cast<unsigned char>(bytes[at + i]);
    characters.push_back(c);
  }
  return characters;
}

std::string convertWith(Converter& converter, const std::string& input, bool& converted) {
  std::string output(roomFor(input.size()), '\0');
  const size_t written = converter.convert(input, output.data(), output.size());
  converted = written != Converter::kFailed;
  output.resize(converted ? written : 0);
  return output;
}

std::string mustConvert(const Pair& pair, const std::string& input) {
  for (const Contestant& contestant : contestants()) {
    if (std::string(contestant.name) != "iconv") continue;
    const auto converter = contestant.open(pair);
    if (converter == nullptr) fail("iconv lacks " + pair.name());
    bool converted = false;
    std::string output = convertWith(*converter, input, converted);
    if (!converted) fail("iconv cannot convert the text: " + pair.name());
    return output;
  }
  return {};
}

// --- Characters that all contestants convert alike. ---

class AgreedCharacters {
 public:
  AgreedCharacters() {
    for (const Charset* charset : {&kWindows31J, &kShiftJis, &kShiftJis2004}) {
      for (const Contestant& contestant : contestants()) {
        auto there = contestant.open({&kUtf8, charset});
        auto back = contestant.open({charset, &kUtf8});
        if (there == nullptr || back == nullptr) continue;
        ways_.push_back({charset, std::move(there), std::move(back)});
      }
    }
  }

  bool contain(char32_t c) {
    const auto [known, isNew] = known_.emplace(c, false);
    if (isNew) known->second = judge(c);
    return known->second;
  }

 private:
  struct Way {
    const Charset* charset;
    std::unique_ptr<Converter> there;
    std::unique_ptr<Converter> back;
  };

  bool judge(char32_t c) const {
    if (c == 0 || c > 0xFFFF || (c >= 0xD800 && c <= 0xDFFF) || c == 0xFEFF) return false;
    const std::string utf8 = encode(std::u32string(1, c), kUtf8);
    const Charset* charset = nullptr;
    std::string first;
    for (const Way& way : ways_) {
      bool converted = false;
      const std::string there = convertWith(*way.there, utf8, converted);
      if (!converted) return false;
      if (charset == way.charset && there != first) return false;
      charset = way.charset;
      first = there;
      if (convertWith(*way.back, there, converted) != utf8 || !converted) return false;
    }
    return true;
  }

  std::vector<Way> ways_;
  std::unordered_map<char32_t, bool> known_;
};

// --- Made texts. ---
//
// Words are drawn from a vocabulary of which the n-th word has a frequency near 1/n
// (Zipf), as words of natural text have, and the characters of a kanji word are
// drawn likewise. A sentence is a row of words with particles and endings, with
// figures and Latin words in between; so scripts alternate every few characters, as
// they do in Japanese, and about half of the characters are hiragana.

class Dice {
 public:
  explicit Dice(uint64_t seed) : engine_(seed) {}

  // In [0, 1); the distributions of the standard library differ between libraries.
  double fraction() { return static_cast<double>(engine_() >> 11) * 0x1p-53; }
  size_t below(size_t limit) {
    return static_cast<size_t>(fraction() * static_cast<double>(limit));
  }
  bool chance(double probability) { return fraction() < probability; }

  template <typename Items>
  const auto& pick(const Items& items) {
    return items[below(std::size(items))];
  }

 private:
  std::mt19937_64 engine_;
};

class Zipf {
 public:
  explicit Zipf(size_t count) {
    double sum = 0;
    for (size_t rank = 1; rank <= count; ++rank) {
      sum += 1 / (static_cast<double>(rank) + 2.7);
      sums_.push_back(sum);
    }
  }
  size_t draw(Dice& dice) const {
    const double at = dice.fraction() * sums_.back();
    return static_cast<size_t>(std::upper_bound(sums_.begin(), sums_.end(), at) - sums_.begin());
  }

 private:
  std::vector<double> sums_;
};

// The first level of JIS X 0208, rows 16 to 47, which holds the common kanji.
std::u32string commonKanji() {
  std::string shiftJis;
  for (int row = 16; row <= 47; ++row) {
    const int lead = 0x81 + (row - 1) / 2;
    for (int cell = 1; cell <= (row == 47 ? 51 : 94); ++cell) {
      const int trail = row % 2 == 0 ? 0x9E + cell : cell + (cell >= 64 ? 0x40 : 0x3F);
      shiftJis.push_back(static_cast<char>(lead));
      shiftJis.push_back(static_cast<char>(trail));
    }
  }
  return charactersOf(mustConvert({&kWindows31J, &kCodePoints}, shiftJis));
}

std::u32string range(char32_t first, char32_t last) {
  std::u32string characters;
  for (char32_t c = first; c <= last; ++c) characters.push_back(c);
  return characters;
}

std::u32string keepAgreed(const std::u32string& characters, AgreedCharacters& agreed) {
  std::u32string kept;
  for (const char32_t c : characters) {
    if (agreed.contain(c)) kept.push_back(c);
  }
  return kept;
}

std::u32string shuffled(std::u32string characters, Dice& dice) {
  for (size_t i = characters.size(); i > 1; --i)
    std::swap(characters[i - 1], characters[dice.below(i)]);
  return characters;
}

constexpr size_t kJapaneseCharacters = 640'000;
constexpr size_t kAsciiCharacters = 1'200'000;

std::u32string latinWord(Dice& dice) {
  static constexpr std::u32string_view kOnsets[] = {U"b", U"c", U"d",  U"f",  U"g",  U"h",  U"l",
                                                    U"m", U"n", U"p",  U"r",  U"s",  U"t",  U"w",
                                                    U"",  U"",  U"st", U"tr", U"pl", U"th", U"ch"};
  static constexpr std::u32string_view kVowels[] = {U"a", U"e", U"i", U"o", U"u", U"ea", U"io"};
  static constexpr std::u32string_view kCodas[] = {U"", U"", U"n", U"r", U"s", U"t", U"ng", U"ll"};
  std::u32string word;
  for (size_t syllables = 1 + dice.below(3); syllables > 0; --syllables) {
    word += dice.pick(kOnsets);
    word += dice.pick(kVowels);
    word += dice.pick(kCodas);
  }
  return word;
}

std::u32string figure(Dice& dice) {
  std::u32string digits;
  for (size_t left = 1 + dice.below(4); left > 0; --left) {
    digits.push_back(U'0' + static_cast<char32_t>(dice.below(10)));
  }
  return digits;
}

class JapaneseWriter {
 public:
  explicit JapaneseWriter(AgreedCharacters& agreed)
      : kanji_(shuffled(keepAgreed(commonKanji(), agreed), dice_)), kanjiRank_(kanji_.size()) {
    const std::u32string katakana = keepAgreed(range(0x30A2, 0x30F3), agreed);
    for (size_t i = 0; i < kNouns; ++i) {
      nouns_.push_back(dice_.chance(0.2) ? katakanaWord(katakana) : kanjiWord());
    }
    for (size_t i = 0; i < kVerbs; ++i) verbs_.push_back({kanji_[kanjiRank_.draw(dice_)]});
  }

  std::u32string write(size_t characters) {
    while (text_.size() < characters) sentence();
    return std::move(text_);
  }

 private:
  static constexpr size_t kNouns = 12'000;
  static constexpr size_t kVerbs = 1'500;

  std::u32string kanjiWord() {
    static constexpr size_t kLengths[] = {1, 2, 2, 2, 2, 2, 2, 3, 4};
    std::u32string word;
    for (size_t left = dice_.pick(kLengths); left > 0; --left) {
      word.push_back(kanji_[kanjiRank_.draw(dice_)]);
    }
    return word;
  }

  std::u32string katakanaWord(const std::u32string& katakana) {
    std::u32string word;
    for (size_t left = 2 + dice_.below(5); left > 0; --left) word.push_back(dice_.pick(katakana));
    if (dice_.chance(0.4)) word.push_back(U'ー');
    return word;
  }

  void sentence() {
    static constexpr std::u32string_view kParticles[] = {U"は", U"が", U"を", U"に",   U"の",
                                                         U"の", U"で", U"と", U"から", U"も"};
    static constexpr std::u32string_view kOkurigana[] = {
        U"って", U"して", U"きながら", U"られて", U"した", U"いている", U"まない",
        U"れば", U"ると", U"えたが",   U"み",     U"わせ", U"く",       U"ったので"};
    static constexpr std::u32string_view kEndings[] = {U"ました", U"のである", U"でしょうか",
                                                       U"ている", U"った",     U"ません",
                                                       U"らしい", U"ことだ",   U"します"};
    for (size_t phrases = 2 + dice_.below(5); phrases > 0; --phrases) {
      if (dice_.chance(0.3)) {
        text_ += verbs_[verbRank_.draw(dice_)];
        text_ += dice_.pick(kOkurigana);
      } else {
        text_ += noun();
        text_ += dice_.pick(kParticles);
      }
      if (dice_.chance(0.2)) text_.push_back(U'、');
    }
    text_ += verbs_[verbRank_.draw(dice_)];
    text_ += dice_.pick(kEndings);
    text_.push_back(U'。');
    if (dice_.chance(0.25)) text_ += U"\n　";
  }

  std::u32string noun() {
    if (dice_.chance(0.03)) return latinWord(dice_);
    if (dice_.chance(0.03)) return figure(dice_);
    const std::u32string& word = nouns_[nounRank_.draw(dice_)];
    return dice_.chance(0.04) ? U"「" + word + U"」" : word;
  }

  Dice dice_{20240401};
  const std::u32string kanji_;
  const Zipf kanjiRank_;
  const Zipf nounRank_{kNouns};
  const Zipf verbRank_{kVerbs};
  std::vector<std::u32string> nouns_;
  std::vector<std::u32string> verbs_;
  std::u32string text_;
};

std::u32string asciiText() {
  Dice dice(20240402);
  std::vector<std::u32string> words(8'000);
  for (auto& word : words) word = latinWord(dice);
  const Zipf rank(words.size());
  std::u32string text;
  size_t line = 0;
  while (text.size() < kAsciiCharacters) {
    std::u32string word = dice.chance(0.02) ? figure(dice) : words[rank.draw(dice)];
    if (dice.chance(0.08)) word[0] = word[0] >= U'a' ? word[0] - U'a' + U'A' : word[0];
    if (dice.chance(0.1)) word.push_back(dice.chance(0.5) ? U',' : U'.');
    line += word.size() + 1;
    text += word;
    text.push_back(line > 70 ? U'\n' : U' ');
    if (line > 70) line = 0;
  }
  return text;
}

// --- The file of the environment. ---

std::u32string textOfFile(const char* path, AgreedCharacters& agreed) {
  std::ifstream file(path, std::ios::binary);
  const std::string utf8(std::istreambuf_iterator<char>(file), {});
  if (!file || utf8.empty()) fail(std::string("KSV_BENCH_TEXT: cannot read ") + path);
  const std::u32string whole = charactersOf(mustConvert({&kUtf8, &kCodePoints}, utf8));
  const std::u32string kept = keepAgreed(whole, agreed);
  std::fprintf(stderr, "ksv_bench: %s: %zu characters, %zu of them left out\n", path, whole.size(),
               whole.size() - kept.size());
  if (encode(kept, kUtf8).size() < 1'000'000) {
    fail("KSV_BENCH_TEXT: shorter than 1 MB");
  }
  return kept;
}

std::vector<Text> makeTexts() {
  AgreedCharacters agreed;
  const char* path = std::getenv("KSV_BENCH_TEXT");
  std::vector<Text> all;
  if (path != nullptr) {
    all.push_back({"file", textOfFile(path, agreed)});
  } else {
    const std::u32string made = JapaneseWriter(agreed).write(kJapaneseCharacters);
    all.push_back({"japanese", keepAgreed(made, agreed)});
  }
  all.push_back({"ascii", keepAgreed(asciiText(), agreed)});
  return all;
}

}  // namespace

const std::vector<Text>& texts() {
  static const std::vector<Text> all = makeTexts();
  return all;
}

std::string encode(const std::u32string& characters, const Charset& charset) {
  return mustConvert({&kCodePoints, &charset}, bytesOf(characters));
}

std::vector<std::string> shortStrings(const Charset& charset, size_t bytes, size_t count) {
  const std::u32string& text = texts()[0].characters;
  const size_t step = text.size() / (count + 1);
  const std::string filler = encode(U".", charset);
  std::vector<std::string> strings;
  for (size_t i = 0; i < count; ++i) {
    std::string string;
    for (size_t at = i * step;; ++at) {
      const std::string character = encode(text.substr(at, 1), charset);
      if (string.size() + character.size() > bytes) break;
      string += character;
    }
    while (string.size() < bytes) string += filler;
    strings.push_back(std::move(string));
  }
  return strings;
}

void checkAgreement(const std::vector<Pair>& pairs) {
  for (const Pair& pair : pairs) {
    for (const Text& text : texts()) {
      const std::string input = encode(text.characters, *pair.source);
      const std::string wanted = encode(text.characters, *pair.target);
      for (const Contestant& contestant : contestants()) {
        const auto converter = contestant.open(pair);
        if (converter == nullptr) continue;
        bool converted = false;
        const std::string output = convertWith(*converter, input, converted);
        const std::string what = pair.name() + ", text " + text.name + ": " + contestant.name;
        if (!converted) fail(what + " does not convert the text to its end");
        if (output == wanted) continue;
        const auto [here, there] =
            std::mismatch(output.begin(), output.end(), wanted.begin(), wanted.end());
        fail(what + " differs from iconv at output byte " + std::to_string(here - output.begin()));
      }
    }
  }
}

}  // namespace ksv_bench
