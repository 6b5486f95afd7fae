#include "tests/kit/profiles/profiled_charset.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>

#include "kit/profiles/profile_change.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

std::u32string changedBy(TextChange* change, const std::u32string& characters) {
  if (change == nullptr) return characters;
  std::string text;
  change->restart();
  change->change(utf8Of(characters), true, text);
  return charactersOf(text);
}

void readCodes(const Profile& profile, std::string_view charset, const Repertoire& library,
               Repertoire& profiled) {
  const auto change = changeAfterDecoding(profile, charset);
  const RefusedCharacters refused = refusedAfterDecoding(profile, charset);
  for (const auto& [code, text] : library.decoded) {
    if (std::any_of(text.begin(), text.end(), [&](char32_t c) { return refused.refuses(c); }))
      continue;
    profiled.decoded.emplace(code, changedBy(change.get(), text));
  }
}

// All that the library writes, and what the profile makes that of.
std::set<char32_t> writtenCharacters(const CharsetProfile* charset, const Repertoire& library) {
  std::set<char32_t> characters;
  for (const auto& [character, code] : library.encoded) characters.insert(character);
  if (charset != nullptr) {
    for (const Replacement& written : charset->beforeEncoding) characters.insert(written.from[0]);
  }
  return characters;
}

void writeCharacters(const Profile& profile, std::string_view charset, const Repertoire& library,
                     Repertoire& profiled) {
  const auto change = changeBeforeEncoding(profile, charset);
  const RefusedCharacters refused = refusedBeforeEncoding(profile, charset);
  for (const char32_t character : writtenCharacters(profile.find(charset), library)) {
    if (refused.refuses(character)) continue;
    std::string code;
    bool isWritten = true;
    for (const char32_t made : changedBy(change.get(), std::u32string(1, character))) {
      const auto found = library.encoded.find(made);
      isWritten = isWritten && found != library.encoded.end();
      if (isWritten) code += found->second;
    }
    if (isWritten) profiled.encoded.emplace(character, code);
  }
}

}  // namespace

std::string directoryName(std::string_view charset) {
  const repertoire::RuleBase rules;
  for (const std::string& name : rules.charsetNames()) {
    std::string small = name;
    std::transform(small.begin(), small.end(), small.begin(), [](unsigned char character) {
      return static_cast<char>(std::tolower(character));
    });
    if (small == charset) return name;
  }
  throw std::runtime_error("the directory has no charset " + std::string(charset));
}

const Repertoire& libraryRepertoire(std::string_view charset, Shape shape) {
  static std::map<std::string, Repertoire, std::less<>> known;
  const auto found = known.find(charset);
  if (found != known.end()) return found->second;
  const std::string name = directoryName(charset);
  const repertoire::RuleBase rules;
  repertoire::LibraryCodec codec(name);
  return known.emplace(charset, repertoire::explore(codec, shape)).first->second;
}

Repertoire profiledRepertoire(const Profile& profile, std::string_view charset, Shape shape) {
  Repertoire profiled;
  readCodes(profile, charset, libraryRepertoire(profile.charsetToRead(charset), shape), profiled);
  writeCharacters(profile, charset, libraryRepertoire(profile.charsetToWrite(charset), shape),
                  profiled);
  return profiled;
}

}  // namespace ksv_kit
