#include "common/wildcard.h"

#include "common/path_encoding.h"
#include "common/platform.h"

namespace ksv {
namespace {

// Values for the bytes that are no character, beyond all characters.
constexpr char32_t kLoneByte = 0x110000;

char32_t takeCharacter(std::string_view& text) {
  const auto byte = static_cast<unsigned char>(text[0]);
  const char32_t character = decodeUtf8(text);
  return character == kIllFormed ? kLoneByte + byte : platform::foldNameCharacter(character);
}

// Whether pattern begins with something that takes the first character of name;
// both are stepped on then.
bool takeOne(std::string_view& pattern, std::string_view& name) {
  if (pattern.empty()) return false;
  std::string_view patternRest = pattern;
  std::string_view nameRest = name;
  const char32_t wanted = takeCharacter(patternRest);
  const char32_t present = takeCharacter(nameRest);
  if (wanted != U'?' && wanted != present) return false;
  pattern = patternRest;
  name = nameRest;
  return true;
}

}  // namespace

bool hasWildcard(std::string_view pattern) { return pattern.find_first_of("*?") != pattern.npos; }

// After a mismatch only the last '*' need take one character more: whatever an
// earlier one could take, the last one can take instead. Work is bounded by the
// product of both lengths.
bool matchesWildcard(std::string_view pattern, std::string_view name) {
  bool starSeen = false;
  std::string_view patternBehindStar;
  std::string_view nameAtStar;
  while (!name.empty()) {
    if (!pattern.empty() && pattern[0] == '*') {
      pattern.remove_prefix(1);
      starSeen = true;
      patternBehindStar = pattern;
      nameAtStar = name;
    } else if (!takeOne(pattern, name)) {
      if (!starSeen) return false;
      takeCharacter(nameAtStar);
      pattern = patternBehindStar;
      name = nameAtStar;
    }
  }
  return pattern.find_first_not_of('*') == pattern.npos;
}

}  // namespace ksv
