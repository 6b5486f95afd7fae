#include "kit/unicode/look_alikes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "kit/unicode/character_class.h"
#include "kit/unicode/normalization_system.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

// A few bytes of UTF-8, which may be none, or no text. They stand here themselves: the loader has
// no address to correct, at each start of a program.
class ShortText {
 public:
  constexpr ShortText() = default;
  template <size_t kSize>
  constexpr ShortText(const char (&text)[kSize]) : length_(kSize - 1) {
    std::copy_n(text, kSize - 1, bytes_.begin());
  }

  constexpr bool isThere() const { return length_ != kNone; }
  constexpr std::string_view view() const {
    return isThere() ? std::string_view(bytes_.data(), length_) : std::string_view();
  }

 private:
  static constexpr uint8_t kNone = 0xFF;

  std::array<char, 4> bytes_{};
  uint8_t length_ = kNone;
};

struct LookAlike {
  char32_t character;
  std::array<ShortText, 3> texts;  // as many as are there
};

// What Unicode's decompositions do not tell. Chosen by what the characters' names and shapes are,
// and by the codes of currencies (ISO 4217). In order.
constexpr LookAlike kTable[] = {
    {0x00A1, {"!"}},                 // INVERTED EXCLAMATION MARK
    {0x00A2, {"\uFFE0", "c"}},       // CENT SIGN
    {0x00A3, {"\uFFE1", "GBP"}},     // POUND SIGN
    {0x00A5, {"\uFFE5", "JPY"}},     // YEN SIGN
    {0x00A6, {"\uFFE4", "|"}},       // BROKEN BAR
    {0x00A8, {"\""}},                // DIAERESIS
    {0x00A9, {"(C)"}},               // COPYRIGHT SIGN
    {0x00AB, {"\u226A", "<<"}},      // LEFT-POINTING DOUBLE ANGLE QUOTATION MARK
    {0x00AC, {"\uFFE2"}},            // NOT SIGN
    {0x00AD, {""}},                  // SOFT HYPHEN
    {0x00AE, {"(R)"}},               // REGISTERED SIGN
    {0x00AF, {"\uFFE3"}},            // MACRON
    {0x00B0, {"deg"}},               // DEGREE SIGN
    {0x00B1, {"+-"}},                // PLUS-MINUS SIGN
    {0x00B4, {"'"}},                 // ACUTE ACCENT
    {0x00B7, {"\u30FB", "."}},       // MIDDLE DOT
    {0x00B8, {","}},                 // CEDILLA
    {0x00BB, {"\u226B", ">>"}},      // RIGHT-POINTING DOUBLE ANGLE QUOTATION MARK
    {0x00BF, {"?"}},                 // INVERTED QUESTION MARK
    {0x00C6, {"AE"}},                // LATIN CAPITAL LETTER AE
    {0x00D0, {"D"}},                 // LATIN CAPITAL LETTER ETH
    {0x00D7, {"x"}},                 // MULTIPLICATION SIGN
    {0x00D8, {"O"}},                 // LATIN CAPITAL LETTER O WITH STROKE
    {0x00DE, {"Th"}},                // LATIN CAPITAL LETTER THORN
    {0x00DF, {"ss"}},                // LATIN SMALL LETTER SHARP S
    {0x00E6, {"ae"}},                // LATIN SMALL LETTER AE
    {0x00F0, {"d"}},                 // LATIN SMALL LETTER ETH
    {0x00F7, {"/"}},                 // DIVISION SIGN
    {0x00F8, {"o"}},                 // LATIN SMALL LETTER O WITH STROKE
    {0x00FE, {"th"}},                // LATIN SMALL LETTER THORN
    {0x0110, {"\u00D0", "D"}},       // LATIN CAPITAL LETTER D WITH STROKE
    {0x0111, {"d"}},                 // LATIN SMALL LETTER D WITH STROKE
    {0x0126, {"H"}},                 // LATIN CAPITAL LETTER H WITH STROKE
    {0x0127, {"h"}},                 // LATIN SMALL LETTER H WITH STROKE
    {0x0131, {"i"}},                 // LATIN SMALL LETTER DOTLESS I
    {0x0138, {"k"}},                 // LATIN SMALL LETTER KRA
    {0x0141, {"L"}},                 // LATIN CAPITAL LETTER L WITH STROKE
    {0x0142, {"l"}},                 // LATIN SMALL LETTER L WITH STROKE
    {0x014A, {"N"}},                 // LATIN CAPITAL LETTER ENG
    {0x014B, {"n"}},                 // LATIN SMALL LETTER ENG
    {0x0152, {"OE"}},                // LATIN CAPITAL LIGATURE OE
    {0x0153, {"oe"}},                // LATIN SMALL LIGATURE OE
    {0x0166, {"T"}},                 // LATIN CAPITAL LETTER T WITH STROKE
    {0x0167, {"t"}},                 // LATIN SMALL LETTER T WITH STROKE
    {0x0192, {"f"}},                 // LATIN SMALL LETTER F WITH HOOK
    {0x02B9, {"'"}},                 // MODIFIER LETTER PRIME
    {0x02BB, {"\u2018", "'"}},       // MODIFIER LETTER TURNED COMMA
    {0x02BC, {"\u2019", "'"}},       // MODIFIER LETTER APOSTROPHE
    {0x02C6, {"^"}},                 // MODIFIER LETTER CIRCUMFLEX ACCENT
    {0x02DC, {"~"}},                 // SMALL TILDE
    {0x034F, {""}},                  // COMBINING GRAPHEME JOINER
    {0x1E9E, {"SS"}},                // LATIN CAPITAL LETTER SHARP S
    {0x200B, {""}},                  // ZERO WIDTH SPACE
    {0x200C, {""}},                  // ZERO WIDTH NON-JOINER
    {0x200D, {""}},                  // ZERO WIDTH JOINER
    {0x200E, {""}},                  // LEFT-TO-RIGHT MARK
    {0x200F, {""}},                  // RIGHT-TO-LEFT MARK
    {0x2010, {"-"}},                 // HYPHEN
    {0x2011, {"\u2010", "-"}},       // NON-BREAKING HYPHEN
    {0x2012, {"\u2013", "-"}},       // FIGURE DASH
    {0x2013, {"-"}},                 // EN DASH
    {0x2014, {"\u2015", "-"}},       // EM DASH
    {0x2015, {"\u2014", "-"}},       // HORIZONTAL BAR
    {0x2016, {"\u2225", "||"}},      // DOUBLE VERTICAL LINE
    {0x2018, {"'"}},                 // LEFT SINGLE QUOTATION MARK
    {0x2019, {"'"}},                 // RIGHT SINGLE QUOTATION MARK
    {0x201A, {"'"}},                 // SINGLE LOW-9 QUOTATION MARK
    {0x201B, {"'"}},                 // SINGLE HIGH-REVERSED-9 QUOTATION MARK
    {0x201C, {"\""}},                // LEFT DOUBLE QUOTATION MARK
    {0x201D, {"\""}},                // RIGHT DOUBLE QUOTATION MARK
    {0x201E, {"\""}},                // DOUBLE LOW-9 QUOTATION MARK
    {0x201F, {"\""}},                // DOUBLE HIGH-REVERSED-9 QUOTATION MARK
    {0x2020, {"+"}},                 // DAGGER
    {0x2021, {"++"}},                // DOUBLE DAGGER
    {0x2022, {"\u30FB", "*"}},       // BULLET
    {0x2023, {">"}},                 // TRIANGULAR BULLET
    {0x202A, {""}},                  // LEFT-TO-RIGHT EMBEDDING
    {0x202B, {""}},                  // RIGHT-TO-LEFT EMBEDDING
    {0x202C, {""}},                  // POP DIRECTIONAL FORMATTING
    {0x202D, {""}},                  // LEFT-TO-RIGHT OVERRIDE
    {0x202E, {""}},                  // RIGHT-TO-LEFT OVERRIDE
    {0x2030, {"0/00"}},              // PER MILLE SIGN
    {0x2032, {"'"}},                 // PRIME
    {0x2033, {"\""}},                // DOUBLE PRIME
    {0x2039, {"<"}},                 // SINGLE LEFT-POINTING ANGLE QUOTATION MARK
    {0x203A, {">"}},                 // SINGLE RIGHT-POINTING ANGLE QUOTATION MARK
    {0x203E, {"\uFFE3"}},            // OVERLINE
    {0x2043, {"-"}},                 // HYPHEN BULLET
    {0x2044, {"/"}},                 // FRACTION SLASH
    {0x2060, {""}},                  // WORD JOINER
    {0x2061, {""}},                  // FUNCTION APPLICATION
    {0x2062, {""}},                  // INVISIBLE TIMES
    {0x2063, {""}},                  // INVISIBLE SEPARATOR
    {0x2064, {""}},                  // INVISIBLE PLUS
    {0x2066, {""}},                  // LEFT-TO-RIGHT ISOLATE
    {0x2067, {""}},                  // RIGHT-TO-LEFT ISOLATE
    {0x2068, {""}},                  // FIRST STRONG ISOLATE
    {0x2069, {""}},                  // POP DIRECTIONAL ISOLATE
    {0x20A4, {"\u00A3", "\uFFE1"}},  // LIRA SIGN
    {0x20A9, {"\uFFE6", "KRW"}},     // WON SIGN
    {0x20AA, {"ILS"}},               // NEW SHEQEL SIGN
    {0x20AB, {"VND"}},               // DONG SIGN
    {0x20AC, {"EUR"}},               // EURO SIGN
    {0x20B4, {"UAH"}},               // HRYVNIA SIGN
    {0x20B8, {"KZT"}},               // TENGE SIGN
    {0x20B9, {"INR"}},               // INDIAN RUPEE SIGN
    {0x20BA, {"TRY"}},               // TURKISH LIRA SIGN
    {0x20BD, {"RUB"}},               // RUBLE SIGN
    {0x2117, {"(P)"}},               // SOUND RECORDING COPYRIGHT
    {0x2190, {"<-"}},                // LEFTWARDS ARROW
    {0x2192, {"->"}},                // RIGHTWARDS ARROW
    {0x2194, {"<->"}},               // LEFT RIGHT ARROW
    {0x21D0, {"<="}},                // LEFTWARDS DOUBLE ARROW
    {0x21D2, {"=>"}},                // RIGHTWARDS DOUBLE ARROW
    {0x21D4, {"<=>"}},               // LEFT RIGHT DOUBLE ARROW
    {0x2212, {"\uFF0D", "-"}},       // MINUS SIGN
    {0x2215, {"/"}},                 // DIVISION SLASH
    {0x2217, {"*"}},                 // ASTERISK OPERATOR
    {0x2219, {"\u30FB", "."}},       // BULLET OPERATOR
    {0x2223, {"|"}},                 // DIVIDES
    {0x2225, {"\u2016", "||"}},      // PARALLEL TO
    {0x2236, {":"}},                 // RATIO
    {0x223C, {"\u301C", "~"}},       // TILDE OPERATOR
    {0x2260, {"!="}},                // NOT EQUAL TO
    {0x2264, {"\u2266", "<="}},      // LESS-THAN OR EQUAL TO
    {0x2265, {"\u2267", ">="}},      // GREATER-THAN OR EQUAL TO
    {0x2266, {"\u2264", "<="}},      // LESS-THAN OVER EQUAL TO
    {0x2267, {"\u2265", ">="}},      // GREATER-THAN OVER EQUAL TO
    {0x226A, {"<<"}},                // MUCH LESS-THAN
    {0x226B, {">>"}},                // MUCH GREATER-THAN
    {0x22C5, {"\u30FB", "."}},       // DOT OPERATOR
    {0x2500, {"-"}},                 // BOX DRAWINGS LIGHT HORIZONTAL
    {0x2502, {"|"}},                 // BOX DRAWINGS LIGHT VERTICAL
    {0x25E6, {"\u30FB", "o"}},       // WHITE BULLET
    {0x2713, {"\u221A"}},            // CHECK MARK
    {0x301C, {"\uFF5E", "~"}},       // WAVE DASH
    {0x301D, {"\u201C", "\""}},      // REVERSED DOUBLE PRIME QUOTATION MARK
    {0x301F, {"\u201D", "\""}},      // LOW DOUBLE PRIME QUOTATION MARK
    {0x30FB, {"\u00B7", "."}},       // KATAKANA MIDDLE DOT
    {0xFEFF, {""}},                  // ZERO WIDTH NO-BREAK SPACE
    {0xFF0D, {"\u2212", "-"}},       // FULLWIDTH HYPHEN-MINUS
    {0xFF5E, {"\u301C", "~"}},       // FULLWIDTH TILDE
    {0xFFFD, {"?"}},                 // REPLACEMENT CHARACTER
};

static_assert(std::is_sorted(std::begin(kTable), std::end(kTable),
                             [](const LookAlike& left, const LookAlike& right) {
                               return left.character < right.character;
                             }));

const LookAlike* rowOf(char32_t character) {
  const auto* row = std::lower_bound(
      std::begin(kTable), std::end(kTable), character,
      [](const LookAlike& before, char32_t wanted) { return before.character < wanted; });
  return row != std::end(kTable) && row->character == character ? row : nullptr;
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char byte) { return static_cast<uint8_t>(byte) < 0x80; });
}

// The texts in their order, each once, and never the character itself.
class Candidates {
 public:
  explicit Candidates(char32_t character) : own_(utf8Of(character)) {}

  void add(std::string text) {
    const bool isKnown = text == own_ || std::find(all_.begin(), all_.end(), text) != all_.end();
    if (!isKnown) all_.push_back(std::move(text));
  }

  const std::vector<std::string>& all() const { return all_; }

 private:
  std::string own_;
  std::vector<std::string> all_;
};

void addOfTable(char32_t character, Candidates& candidates) {
  const LookAlike* row = rowOf(character);
  if (row == nullptr) return;
  for (const ShortText& text : row->texts)
    if (text.isThere()) candidates.add(std::string(text.view()));
}

std::string normalizedBySystem(NormalizationForm form, const std::string& text) {
  std::string made;
  appendNormalized(form, text, made);
  return made;
}

// Marks of European letters, but for the stroke through a sign, which negates it.
bool isAccent(char32_t character) {
  constexpr char32_t kNegation = 0x0338;
  return character >= 0x0300 && character <= 0x036F && character != kNegation;
}

// Letters of Hangul, which only stand for something as a part of syllables.
bool isConjoined(char32_t character) { return character >= 0x1100 && character <= 0x11FF; }

// Nothing where a space that would carry the accents is left, or what stands for nothing alone.
std::string withoutAccents(const std::string& text) {
  std::u32string characters = charactersOf(text);
  const bool hasAccents = std::erase_if(characters, isAccent) > 0;
  const bool isEmpty = characters.find_first_not_of(U' ') == std::u32string::npos;
  const bool isBroken = std::any_of(characters.begin(), characters.end(), [](char32_t character) {
    return classOf(character) == "combining mark" || isConjoined(character);
  });
  return (hasAccents && isEmpty) || isBroken ? std::string() : utf8Of(characters);
}

// Each character that is not ASCII as the table has it in ASCII, if it does.
std::string inAscii(const std::string& text) {
  std::string made;
  for (const char32_t character : charactersOf(text)) {
    const LookAlike* row = rowOf(character);
    const auto isUsable = [](const ShortText& other) {
      return other.isThere() && isAscii(other.view());
    };
    const auto* found =
        row == nullptr ? nullptr : std::find_if(row->texts.begin(), row->texts.end(), isUsable);
    if (found == nullptr || found == row->texts.end()) {
      made += utf8Of(character);
    } else {
      made += found->view();
    }
  }
  return made;
}

// What Unicode decomposes the character to, whole and then without accents.
void addDecomposed(char32_t character, Candidates& candidates) {
  const std::string text = utf8Of(character);
  const std::string apart = normalizedBySystem(NormalizationForm::kNfkd, text);
  if (apart == text) return;
  if (isCircled(character)) candidates.add('(' + apart + ')');
  candidates.add(normalizedBySystem(NormalizationForm::kNfc, text));
  const std::string plain = withoutAccents(apart);
  if (plain.empty()) return;
  candidates.add(normalizedBySystem(NormalizationForm::kNfkc, text));
  candidates.add(plain);
  candidates.add(inAscii(plain));
}

void addSpaceOrNothing(char32_t character, Candidates& candidates) {
  if (classOf(character) == "space") candidates.add(" ");
  if (classOf(character) == "variation selector") candidates.add("");
}

}  // namespace

std::vector<std::string> lookAlikes(uint32_t character) {
  constexpr uint32_t kLastCharacter = 0x10FFFF;
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < 0x80 || character > kLastCharacter || isSurrogate) return {};
  Candidates candidates(character);
  addOfTable(character, candidates);
  addDecomposed(character, candidates);
  addSpaceOrNothing(character, candidates);
  return candidates.all();
}

}  // namespace ksv_kit
