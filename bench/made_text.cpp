#include "bench/made_text.h"

#include <algorithm>
#include <random>
#include <string_view>
#include <vector>

namespace ksv_bench {
namespace {

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
  JapaneseWriter(const std::u32string& kanji, const std::u32string& katakana)
      : kanji_(shuffled(kanji, dice_)), kanjiRank_(kanji_.size()) {
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

// Words of one script with its punctuation, and figures in between.
class WordWriter {
 public:
  WordWriter(const WordStyle& style, const std::u32string& letters)
      : style_(style), letters_(shuffled(letters, dice_)), letterRank_(letters_.size()) {
    for (size_t i = 0; i < kWords; ++i) words_.push_back(word());
  }

  std::u32string write(size_t characters) {
    while (text_.size() < characters) sentence();
    return std::move(text_);
  }

 private:
  static constexpr size_t kWords = 12'000;

  std::u32string word() {
    std::u32string letters;
    for (size_t left = style_.shortest + dice_.below(style_.longest - style_.shortest + 1);
         left > 0; --left)
      letters.push_back(letters_[letterRank_.draw(dice_)]);
    return letters;
  }

  void sentence() {
    for (size_t words = 4 + dice_.below(14); words > 0; --words) {
      text_ += dice_.chance(0.03) ? figure(dice_) : words_[wordRank_.draw(dice_)];
      if (dice_.chance(0.1)) text_ += style_.comma;
      if (style_.hasSpaces) text_.push_back(U' ');
    }
    text_ += style_.fullStop;
    if (dice_.chance(0.2)) text_.push_back(U'\n');
  }

  Dice dice_{20240403};
  const WordStyle style_;
  const std::u32string letters_;
  const Zipf letterRank_;
  const Zipf wordRank_{kWords};
  std::vector<std::u32string> words_;
  std::u32string text_;
};

}  // namespace

std::u32string japaneseText(const std::u32string& kanji, const std::u32string& katakana) {
  return JapaneseWriter(kanji, katakana).write(kJapaneseCharacters);
}

std::u32string textOfWords(const WordStyle& style, const std::u32string& letters,
                           size_t characters) {
  return WordWriter(style, letters).write(characters);
}

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

}  // namespace ksv_bench
