// Reads the text of a profile. A line is a word that says what it is, and what belongs to it:
//   name NAME                      the first line
//   charset NAME ...               the lines behind it, up to the next such line, are of these
//   as NAME                        the charset of the directory to take in their place; a second
//                                  name is that for writing
//   read CHARACTER CHARACTERS      what a code is read as that the directory reads as the first
//   write CHARACTER CHARACTERS     what is written in the place of the first
//   unread CHARACTERS              whose codes are none
//   refuse CHARACTERS              which are not written
#include <charconv>
#include <set>

#include "kit/profiles/profile.h"

namespace ksv_kit {
namespace {

// Some editors put it in front of a text.
constexpr std::string_view kMark = "\xEF\xBB\xBF";

using Words = std::vector<std::string_view>;

// What one character may become.
constexpr size_t kMostCharacters = 4;
constexpr size_t kFewestDigits = 2;

class LineError {
 public:
  explicit LineError(std::string message) : message_(std::move(message)) {}
  const std::string& message() const { return message_; }

 private:
  std::string message_;
};

std::string quoted(std::string_view word) { return "'" + std::string(word) + "'"; }

Words wordsOf(std::string_view line) {
  constexpr std::string_view kBlanks = " \t\r";
  line = line.substr(0, line.find('#'));
  Words words;
  for (size_t at = line.find_first_not_of(kBlanks); at != std::string_view::npos;) {
    const size_t end = std::min(line.find_first_of(kBlanks, at), line.size());
    words.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(kBlanks, end);
  }
  return words;
}

char32_t characterOf(std::string_view word) {
  std::string_view digits = word;
  if (digits.starts_with("U+")) digits.remove_prefix(2);
  uint32_t value = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (digits.size() < kFewestDigits || error != std::errc() ||
      end != digits.data() + digits.size()) {
    throw LineError(quoted(word) + " is not the number of a character, such as 301C or U+301C");
  }
  if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
    throw LineError(quoted(word) + " is no character");
  }
  return value;
}

std::u32string charactersOf(const Words& words, size_t from) {
  std::u32string characters;
  for (size_t at = from; at < words.size(); ++at) characters += characterOf(words[at]);
  return characters;
}

void addRange(std::string_view word, RefusedCharacters& refused) {
  const size_t dash = word.find('-');
  const char32_t first = characterOf(word.substr(0, dash));
  const char32_t last = dash == std::string_view::npos ? first : characterOf(word.substr(dash + 1));
  if (last < first) throw LineError(quoted(word) + " ends before it begins");
  refused.add(first, last);
}

std::string_view charsetName(std::string_view word) {
  const bool isSmall = word.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string_view::npos;
  if (!isSmall) throw LineError("charsets are named in small letters, unlike " + quoted(word));
  return word;
}

}  // namespace

class ProfileReader {
 public:
  std::optional<Profile> read(std::string_view text, ProfileError& error) {
    try {
      if (text.size() > kLongestProfile) throw LineError("the text is longer than 1 MB");
      if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
      while (!text.empty()) {
        ++line_;
        const size_t end = text.find('\n');
        readLine(wordsOf(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
      }
      if (profile_.name_.empty()) throw LineError("there is no name");
      finishSection();
    } catch (const LineError& found) {
      error = {std::max(line_, size_t{1}), found.message()};
      return std::nullopt;
    }
    return std::move(profile_);
  }

 private:
  void readLine(const Words& words) {
    if (words.empty()) return;
    if (words[0] == "name") return readName(words);
    if (profile_.name_.empty()) throw LineError("the first line is not 'name'");
    if (words[0] == "charset") return beginSection(words);
    readStatement(words);
  }

  void readName(const Words& words) {
    if (!profile_.name_.empty()) throw LineError("there is a name already");
    expectWords(words, 2, 2, "one name");
    profile_.name_ = words[1];
  }

  void beginSection(const Words& words) {
    expectWords(words, 2, words.size(), "names of charsets");
    finishSection();
    for (const std::string_view word : words) {
      if (word.data() == words[0].data()) continue;
      const bool isNew = profile_.charsets_.try_emplace(std::string(charsetName(word))).second;
      if (!isNew) throw LineError(quoted(word) + " is there twice");
      names_.emplace_back(word);
    }
  }

  void finishSection() {
    const auto section = std::make_shared<const CharsetProfile>(std::move(section_));
    for (const std::string& name : names_) profile_.charsets_[name] = section;
    names_.clear();
    section_ = {};
    read_.clear();
    written_.clear();
  }

  void readStatement(const Words& words) {
    const std::string_view kind = words[0];
    if (kind != "as" && kind != "read" && kind != "write" && kind != "unread" && kind != "refuse") {
      throw LineError(quoted(kind) + " is not known");
    }
    if (names_.empty()) throw LineError(quoted(kind) + " stands in front of any 'charset'");
    if (kind == "as") return readAs(words);
    if (kind == "read") return addReplacement(words, section_.afterDecoding, read_);
    if (kind == "write") return addReplacement(words, section_.beforeEncoding, written_);
    expectWords(words, 2, words.size(), "characters");
    RefusedCharacters& refused =
        kind == "refuse" ? section_.refusedBeforeEncoding : section_.refusedAfterDecoding;
    for (size_t at = 1; at < words.size(); ++at) addRange(words[at], refused);
  }

  void readAs(const Words& words) {
    expectWords(words, 2, 3, "one charset, or two");
    if (!section_.readAs.empty()) throw LineError("there is an 'as' already");
    section_.readAs = charsetName(words[1]);
    section_.writtenAs = charsetName(words.back());
  }

  static void addReplacement(const Words& words, std::vector<Replacement>& replacements,
                             std::set<char32_t>& seen) {
    expectWords(words, 3, 2 + kMostCharacters, "a character, and one to four others");
    const std::u32string all = charactersOf(words, 1);
    if (!seen.insert(all[0]).second) throw LineError(quoted(words[1]) + " is there twice");
    replacements.push_back({all.substr(0, 1), all.substr(1)});
  }

  static void expectWords(const Words& words, size_t fewest, size_t most, std::string_view what) {
    if (words.size() >= fewest && words.size() <= most) return;
    throw LineError("behind " + quoted(words[0]) + " belongs: " + std::string(what));
  }

  Profile profile_;
  size_t line_ = 0;
  std::vector<std::string> names_;  // of the section that is being read
  CharsetProfile section_;
  std::set<char32_t> read_;
  std::set<char32_t> written_;
};

std::optional<Profile> Profile::fromText(std::string_view text, ProfileError& error) {
  return ProfileReader().read(text, error);
}

}  // namespace ksv_kit
