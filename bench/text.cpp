#include "bench/text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <unordered_map>

#include "bench/made_text.h"

namespace ksv_bench {
namespace {

const Charset kCodePoints = {"ISO-10646-UCS-4", "UCS-4LE", nullptr, "", true};

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
  // The library designates ASCII where the others take it for granted.
  if (output.starts_with("\x1B(B")) output.erase(0, 3);
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
  explicit AgreedCharacters(const std::vector<const Charset*>& charsets) {
    for (const Charset* charset : charsets) {
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

// The characters of double-byte codes, by rows of trail bytes.
std::u32string charactersOfPairs(const Charset& charset, int firstLead, int lastLead,
                                 const std::vector<std::pair<int, int>>& trails) {
  std::string pairs;
  for (int lead = firstLead; lead <= lastLead; ++lead) {
    for (const auto& [first, last] : trails) {
      for (int trail = first; trail <= last; ++trail) {
        pairs.push_back(static_cast<char>(lead));
        pairs.push_back(static_cast<char>(trail));
      }
    }
  }
  return charactersOf(mustConvert({&charset, &kCodePoints}, pairs));
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

// The letters of each script, the ones that all of its charsets agree on.
std::u32string madeText(const std::string& script, AgreedCharacters& agreed) {
  const auto letters = [&](const std::u32string& all) { return keepAgreed(all, agreed); };
  constexpr size_t kCharacters = 600'000;
  if (script == "japanese") {
    // The first level of JIS X 0208, which holds the common kanji.
    return japaneseText(letters(charactersOfPairs(kEucJp, 0xB0, 0xCE, {{0xA1, 0xFE}})),
                        letters(range(0x30A2, 0x30F3)));
  }
  if (script == "simplified") {
    return textOfWords({1, 3, U"，", U"。", false},
                       letters(charactersOfPairs(kGbk, 0xB0, 0xD6, {{0xA1, 0xFE}})), kCharacters);
  }
  if (script == "traditional") {
    return textOfWords({1, 3, U"，", U"。", false},
                       letters(charactersOfPairs(kBig5, 0xA4, 0xC5, {{0x40, 0x7E}, {0xA1, 0xFE}})),
                       kCharacters);
  }
  if (script == "korean") {
    return textOfWords({2, 4, U",", U".", true},
                       letters(charactersOfPairs(kCp949, 0xB0, 0xC8, {{0xA1, 0xFE}})), kCharacters);
  }
  if (script == "latin") {
    return textOfWords({2, 9, U",", U".", true},
                       letters(U"enirtasldoumcéphgvàbfèqçêxüyjöäîôkzâûßwï"), 2 * kCharacters);
  }
  return asciiText();
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

std::vector<const Charset*> charsetsOf(const std::string& script) {
  std::vector<const Charset*> charsets;
  for (const Charset* charset : allCharsets()) {
    const bool isUnicode = *charset->script == '\0';
    if (!isUnicode && (script == "ascii" || script == charset->script)) charsets.push_back(charset);
  }
  return charsets;
}

std::vector<Text> makeTexts() {
  const char* path = std::getenv("KSV_BENCH_TEXT");
  std::vector<Text> all;
  for (const char* script : {"japanese", "simplified", "traditional", "korean", "latin", "ascii"}) {
    AgreedCharacters agreed(charsetsOf(script));
    const bool fromFile = path != nullptr && all.empty();
    const std::u32string text =
        fromFile ? textOfFile(path, agreed) : keepAgreed(madeText(script, agreed), agreed);
    all.push_back({fromFile ? "file" : script, script, text});
  }
  return all;
}

}  // namespace

bool isTextFor(const Text& text, const Pair& pair) {
  for (const Charset* charset : {pair.source, pair.target}) {
    const std::string script = charset->script;
    if (text.script != "ascii" && !script.empty() && script != text.script) return false;
  }
  const bool betweenUnicodeForms = *pair.source->script == '\0' && *pair.target->script == '\0';
  return !betweenUnicodeForms || text.script == "japanese" || text.script == "ascii" ||
         text.script == "latin";
}

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
      if (!isTextFor(text, pair)) continue;
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
