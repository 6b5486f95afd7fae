// Paths, and what they are taken apart into, put together from and transcoded to; wild cards
// and names of logs. Destinations are exactly as large as they are said to be.
//
// Input: a number that is a capacity; then strings, each ended by a zero, of which the first
// is the path, the second a suffix or a pattern, and the third what lies behind them.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "common/platform.h"
#include "common/wildcard.h"
#include "fuzz/support.h"
#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_path.h"

namespace {

using ksv_fuzz::require;

constexpr size_t kPathUnits = KSV_PATH_UNITS;

// The characters of a text; none when it is not well-formed. By the smallest value of each
// length rather than by bits.
std::optional<std::u32string> charactersOf(const std::string& text) {
  static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  std::u32string characters;
  for (size_t at = 0; at < text.size();) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || lead > 0xF4 || at + length > text.size()) return std::nullopt;
    char32_t value = length == 1 ? lead : lead % (0x80u >> length);
    for (size_t i = at + 1; i < at + length; ++i) {
      const auto byte = static_cast<unsigned char>(text[i]);
      if (byte < 0x80 || byte > 0xBF) return std::nullopt;
      value = value * 0x40 + (byte - 0x80);
    }
    const bool isSurrogate = value >= 0xD800 && value < 0xE000;
    if (value < kSmallest[length] || value > 0x10FFFF || isSurrogate) return std::nullopt;
    characters += value;
    at += length;
  }
  return characters;
}

std::u16string unitsOf(const std::u32string& characters) {
  std::u16string units;
  for (const char32_t character : characters) {
    if (character >= 0x10000) {
      units += static_cast<char16_t>(0xD7C0 + character / 0x400);
      units += static_cast<char16_t>(0xDC00 + character % 0x400);
    } else {
      units += static_cast<char16_t>(character);
    }
  }
  return units;
}

bool isUsable(const std::string& path) {
  const auto characters = charactersOf(path);
  return characters && unitsOf(*characters).size() < kPathUnits;
}

bool isSeparator(char character) { return character == '/' || character == '\\'; }

struct Parts {
  std::vector<char> drive = std::vector<char>(KSV_DRIVE_SIZE, 'x');
  std::vector<char> directory = std::vector<char>(KSV_PART_SIZE, 'x');
  std::vector<char> base = std::vector<char>(KSV_PART_SIZE, 'x');
  std::vector<char> extension = std::vector<char>(KSV_PART_SIZE, 'x');

  int split(const std::string& path) {
    return KSV_splitpath(path.c_str(), drive.data(), directory.data(), base.data(),
                         extension.data());
  }
  std::string whole() const {
    return std::string(drive.data()) + directory.data() + base.data() + extension.data();
  }
  int join(char* dest) const {
    return KSV_makepath(dest, drive.data(), directory.data(), base.data(), extension.data());
  }
};

// Each part says what it is told to.
void requireProperParts(const Parts& parts) {
  const std::string directory = parts.directory.data();
  const std::string base = parts.base.data();
  const std::string extension = parts.extension.data();
  require(directory.empty() || isSeparator(directory.back()), "a directory ends in a separator");
  require(base.find_first_of("/\\") == base.npos, "a base name has no separator");
  require(extension.find_first_of("/\\") == extension.npos, "an extension has no separator");
  require(extension.empty() || extension.rfind('.') == 0, "an extension begins at the last dot");
  require(!extension.empty() || base.find('.') == base.npos, "a dot begins an extension");
}

void splitAndJoin(const std::string& path) {
  Parts parts;
  const int result = parts.split(path);
  require(result == 0 || result == KSV_PATH_NOT_CONVERTED, "a result is one of two");
  if (!isUsable(path)) {
    require(result != 0 && parts.whole().empty(), "of a path that is refused all parts are empty");
    return;
  }
  if (result != 0) return;
  requireProperParts(parts);
  require(parts.whole() == path, "the parts are the path");
  std::vector<char> dest(KSV_PATH_SIZE, 'x');
  const bool fits = path.size() < KSV_PATH_SIZE;
  require((parts.join(dest.data()) == 0) == fits, "what fits is put together");
  require(dest.data() == (fits ? path : std::string()), "what is put together is the path");
}

void splitAndJoinAnsi(const std::string& path) {
  std::vector<std::vector<char>> parts(4, std::vector<char>(path.size() + 1, 'x'));
  KSV_splitpathA(path.c_str(), parts[0].data(), parts[1].data(), parts[2].data(), parts[3].data());
  std::string whole;
  for (const std::vector<char>& part : parts) whole += part.data();
  require(whole == path || whole.empty(), "the ANSI parts are the path");
  std::vector<char> dest(path.size() + 4, 'x');
  KSV_makepathA(dest.data(), parts[0].data(), parts[1].data(), parts[2].data(), parts[3].data());
  require(dest.data() == whole, "the ANSI parts are put together");
}

void joinAnything(const std::string& drive, const std::string& directory, const std::string& base) {
  std::vector<char> dest(KSV_PATH_SIZE, 'x');
  const int result =
      KSV_makepath(dest.data(), drive.c_str(), directory.c_str(), base.c_str(), base.c_str());
  const bool usable = isUsable(drive) && isUsable(directory) && isUsable(base);
  require(usable || result != 0, "a part that is no path is refused");
  require((result == 0) || dest[0] == '\0', "what is refused leaves an empty path");
  require(std::memchr(dest.data(), '\0', dest.size()) != nullptr, "a path is terminated");
}

size_t lastSeparator(const std::string& path) {
  const bool isUtf8 = charactersOf(path).has_value();
  size_t found = 0;
  bool isTrail = false;
  for (size_t i = 0; i < path.size(); ++i) {
    const auto byte = static_cast<unsigned char>(path[i]);
    if (!isTrail && isSeparator(path[i])) found = i;
    const bool leads = (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    isTrail = !isUtf8 && !isTrail && leads;
  }
  return found;
}

// A destination of so many units; of one, which has to stay, for none.
template <class Unit>
std::vector<Unit> roomFor(int32_t capacity) {
  return std::vector<Unit>(static_cast<size_t>(std::max(capacity, 1)), Unit{'x'});
}

template <class Unit>
bool isWithoutRoom(const std::vector<Unit>& dest, int32_t capacity) {
  require(capacity > 0 || dest[0] == Unit{'x'}, "without room nothing is written");
  return capacity <= 0;
}

void transcodeToUtf16(const std::string& text, int32_t capacity) {
  std::vector<uint16_t> dest = roomFor<uint16_t>(capacity);
  const int result = KSV_FilePathTransUTF8ToUTF16(dest.data(), text.c_str(), capacity);
  const auto characters = charactersOf(text);
  const std::u16string units = characters ? unitsOf(*characters) : std::u16string();
  const bool fits = text.empty() || (characters && units.size() < static_cast<size_t>(capacity));
  require(result == (fits ? 0 : KSV_PATH_NOT_CONVERTED), "what fits is transcoded");
  if (isWithoutRoom(dest, capacity)) return;
  if (!fits) {
    require(dest[0] == 0, "what is refused leaves an empty string");
    return;
  }
  require(std::equal(units.begin(), units.end(), dest.begin()) && dest[units.size()] == 0,
          "the units are those of the text");
  std::vector<char> back(text.size() + 1, 'x');
  require(KSV_FilePathTransUTF16ToUTF8(back.data(), dest.data(),
                                       static_cast<int32_t>(back.size())) == 0,
          "what was transcoded can be transcoded back");
  require(back.data() == text, "there and back is the same text");
}

// Units of any kind, two bytes each.
void transcodeFromUtf16(const std::string& bytes, int32_t capacity) {
  std::vector<uint16_t> source(bytes.size() / 2 + 1);
  std::memcpy(source.data(), bytes.data(), bytes.size() / 2 * 2);
  std::vector<char> dest = roomFor<char>(capacity);
  const int result = KSV_FilePathTransUTF16ToUTF8(dest.data(), source.data(), capacity);
  if (isWithoutRoom(dest, capacity)) return;
  if (result != 0) {
    require(dest[0] == '\0', "what is refused leaves an empty string");
    return;
  }
  const auto characters = charactersOf(dest.data());
  require(characters.has_value(), "what is written is well-formed");
  const std::u16string units = unitsOf(*characters);
  require(std::equal(units.begin(), units.end(), source.begin()) && source[units.size()] == 0,
          "the characters are those of the units");
}

using Ansi = int (*)(char* dest, const char* source, int32_t capacity);

void transcodeAnsi(Ansi transcode, const std::string& text, int32_t capacity) {
  std::vector<char> dest = roomFor<char>(capacity);
  const int result = transcode(dest.data(), text.c_str(), capacity);
  require(result == 0 || result == KSV_PATH_NOT_CONVERTED, "a result is one of two");
  if (isWithoutRoom(dest, capacity)) return;
  require(std::memchr(dest.data(), '\0', dest.size()) != nullptr, "a string is terminated");
  require(result == 0 || dest[0] == '\0', "what is refused leaves an empty string");
}

// What names and patterns are compared by: characters, and the bytes that are none.
std::u32string comparedOf(std::string text) {
  std::u32string compared;
  while (!text.empty()) {
    size_t length = 1;
    while (length < 5 && length <= text.size() && !charactersOf(text.substr(0, length))) ++length;
    const auto character = charactersOf(text.substr(0, length));
    if (character && length < 5) {
      compared += ksv::platform::foldNameCharacter(character->front());
    } else {
      compared += 0x110000u + static_cast<unsigned char>(text[0]);
      length = 1;
    }
    text.erase(0, length);
  }
  return compared;
}

// Row by row: whether so much of the pattern stands for so much of the name.
bool matchesSlowly(const std::u32string& pattern, const std::u32string& name) {
  std::vector<bool> row(name.size() + 1, false);
  row[0] = true;
  for (const char32_t wanted : pattern) {
    std::vector<bool> next(name.size() + 1, false);
    next[0] = wanted == U'*' && row[0];
    for (size_t i = 1; i <= name.size(); ++i) {
      next[i] = wanted == U'*' ? row[i] || next[i - 1]
                               : row[i - 1] && (wanted == U'?' || wanted == name[i - 1]);
    }
    row = next;
  }
  return row.back();
}

void nameLog(const std::string& path, const std::string& suffix) {
  std::vector<char> dest(KSV_LOG_PATH_SIZE, 'x');
  const int result = GetLogFileName(path.c_str(), suffix.c_str(), dest.data());
  require(result == 0 || result == -1, "a result is one of two");
  const std::string name = dest.data();
  require((result == 0) == name.ends_with(suffix + ".log") && (result == 0 || name.empty()),
          "a log has its suffix and its extension");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ksv_fuzz::Input input(data, size);
  const int32_t capacity = input.word() % 1024;
  const std::string rest(input.rest());
  const std::vector<std::string> strings = ksv_fuzz::stringsOf(rest, 3);
  const std::string& path = strings[0];
  const std::string& second = strings[1];

  splitAndJoin(path);
  splitAndJoinAnsi(path);
  joinAnything(second, path, strings[2]);
  require(static_cast<size_t>(KSV_getPathBreak(path.c_str())) == lastSeparator(path),
          "the last separator is found");
  transcodeToUtf16(path, capacity);
  transcodeFromUtf16(rest, capacity);
  transcodeAnsi(KSV_FilePathTransAnsiToUTF8, path, capacity);
  transcodeAnsi(KSV_FilePathTransUTF8ToAnsi, path, capacity);
  require(ksv::matchesWildcard(second, path) == matchesSlowly(comparedOf(second), comparedOf(path)),
          "the pattern stands for the same names");
  nameLog(path, second);
  return 0;
}
