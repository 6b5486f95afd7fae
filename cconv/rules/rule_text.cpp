#include "cconv/rules/rule_text.h"

#include <algorithm>
#include <cstring>

#include "cconv/limits.h"
#include "cconv/rules/rule_base.h"
#include "cconv/rules/rule_path.h"
#include "cconv/rules/text_units.h"
#include "common/faults.h"
#include "common/platform.h"

namespace ksv {
namespace {

// Searches that look at no more places are cheaper to repeat than to remember.
constexpr size_t kNearPlaces = 256;

// "UTF-16" and "ISO-10646-UCS-2" in 16-bit little-endian units, without the zero
// byte behind the last letter: in a big-endian file they match one byte later.
constexpr char kUtf16Name[] = "U\0T\0F\0-\0001\0006";
constexpr size_t kUtf16NameSize = 11;
constexpr char kUcs2Name[] = "I\0S\0O\0-\0001\0000\0006\0004\0006\0-\0U\0C\0S\0-\0002";
constexpr size_t kUcs2NameSize = 29;
static_assert(sizeof kUtf16Name == kUtf16NameSize + 1);
static_assert(sizeof kUcs2Name == kUcs2NameSize + 1);

std::vector<uint8_t> readWholeFile(const std::string& path) {
  std::vector<uint8_t> bytes;
  platform::InputFile file(path.c_str(), platform::InputFile::Takes::kRegularFile);
  if (file.size() > 0 && file.size() <= limits::kLargestFile) {
    bytes.resize(static_cast<size_t>(file.size()));
    if (file.read(bytes.data(), bytes.size()) != bytes.size()) bytes.clear();
  }
  noteFault(FaultSubject::kRuleFile, path, file.error());
  return bytes;
}

// The encoding that the first line of a file with a 16-bit mark names.
TextEncodingKind encodingNamedInFirstLine(const std::vector<uint8_t>& bytes) {
  for (size_t i = 0; i + kUcs2NameSize < bytes.size(); ++i) {
    const uint8_t* at = &bytes[i];
    if (at[0] == '\r' || at[0] == '\n') break;
    if (at[1] != 0) continue;
    if (at[0] == 'U' && std::memcmp(at, kUtf16Name, kUtf16NameSize) == 0) {
      return TextEncodingKind::kUtf16;
    }
    if (at[0] == 'I' && std::memcmp(at, kUcs2Name, kUcs2NameSize) == 0) {
      return TextEncodingKind::kUcs2;
    }
  }
  return TextEncodingKind::kUnknown;
}

TextEncodingKind narrowEncodingNamed(const std::vector<uint8_t>& bytes) {
  for (size_t i = 0; i + 5 < bytes.size(); ++i) {
    if (std::memcmp(&bytes[i], "utf-8", 5) == 0) return TextEncodingKind::kUtf8;
    if (std::memcmp(&bytes[i], "shift", 5) == 0) return TextEncodingKind::kShiftJis;
  }
  return TextEncodingKind::kUnknown;
}

template <uint32_t kWidth, bool kBigEndian>
std::vector<uint32_t> unitsIn(const std::vector<uint8_t>& bytes) {
  std::vector<uint32_t> units(bytes.size() / kWidth);
  for (size_t i = 0; i < units.size(); ++i)
    units[i] = readUnit(&bytes[i * kWidth], kWidth, kBigEndian);
  return units;
}

template <uint32_t kWidth>
std::vector<uint32_t> unitsOf(const RuleText& text) {
  return text.bigEndian ? unitsIn<kWidth, true>(text.bytes) : unitsIn<kWidth, false>(text.bytes);
}

// A surrogate takes the next unit whatever it is; as the last unit it is dropped.
void joinSurrogatePairs(std::vector<uint32_t>& chars) {
  size_t count = 0;
  for (size_t i = 0; i < chars.size(); ++i) {
    const uint32_t unit = chars[i];
    if (!isSurrogate(unit)) {
      chars[count++] = unit;
    } else if (++i < chars.size()) {
      chars[count++] = joinRuleFileSurrogates(unit, chars[i]);
    }
  }
  chars.resize(count);
}

bool pairAt(const std::vector<uint32_t>& chars, size_t index, char first, char second) {
  return index + 1 < chars.size() && chars[index] == static_cast<uint32_t>(first) &&
         chars[index + 1] == static_cast<uint32_t>(second);
}

// Finds a pair of characters at or after an index; remembers when there is none
// left, so that text full of unclosed openings is still read in linear time.
class PairFinder {
 public:
  PairFinder(const std::vector<uint32_t>& chars, char first, char second)
      : chars_(chars), first_(first), second_(second) {}

  std::optional<size_t> find(size_t from) {
    if (exhausted_) return std::nullopt;
    for (size_t i = from; i + 1 < chars_.size(); ++i) {
      if (pairAt(chars_, i, first_, second_)) return i;
    }
    exhausted_ = true;
    return std::nullopt;
  }

 private:
  const std::vector<uint32_t>& chars_;
  char first_, second_;
  bool exhausted_ = false;
};

bool matchesAt(const RuleText& text, size_t index, std::string_view pattern) {
  if (pattern.size() > text.chars.size() - index) return false;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (text.chars[index + i] != static_cast<uint8_t>(pattern[i])) return false;
  }
  return true;
}

// Where the first occurrence of a pattern at or after a position begins, and how many
// places were looked at.
struct Search {
  std::optional<size_t> start;
  size_t places;
};

Search searchFor(const RuleText& text, size_t from, std::string_view pattern) {
  size_t places = 0;
  if (pattern[0] == '<' || pattern[0] == '/') {
    const auto first = std::lower_bound(text.markers.begin(), text.markers.end(), from);
    for (auto marker = first; marker != text.markers.end(); ++marker, ++places) {
      if (matchesAt(text, *marker, pattern)) return {*marker, places};
    }
    // Every '<' is a marker, so there is nothing left to find.
    if (pattern[0] == '<') return {std::nullopt, places};
  }
  // A pattern that ends exactly at the end of the text is not found here.
  for (size_t i = from; i + pattern.size() < text.chars.size(); ++i, ++places) {
    if (matchesAt(text, i, pattern)) return {i, places};
  }
  return {std::nullopt, places};
}

std::string narrow(const RuleText& text, size_t start, size_t end) {
  std::string narrowed;
  for (size_t i = start; i < end && i < text.chars.size(); ++i) {
    const char low = static_cast<char>(text.chars[i]);
    if (low == '\0') break;
    narrowed.push_back(low);
  }
  return narrowed;
}

std::optional<size_t> findChar(const RuleText& text, size_t from, char wanted) {
  for (size_t i = from; i < text.chars.size(); ++i) {
    if (text.chars[i] == static_cast<uint8_t>(wanted)) return i;
  }
  return std::nullopt;
}

// The name that a path's file has in the charset directory.
std::string ruleFileName(const std::string& path) {
  PathParts parts = splitPath(path);
  lowerFileName(parts);
  return std::move(parts.fileName) + parts.extension;
}

bool readNamedText(const std::string& fileName, TextEncodingKind defaultEncoding,
                   bool defaultBigEndian, RuleText& text) {
  text = RuleText();
  text.bytes = readWholeFile(ruleBase.path() + fileName);
  if (text.bytes.empty()) return false;
  if (!detectEncoding(text)) {
    text.encoding = defaultEncoding;
    text.bigEndian = defaultBigEndian;
  }
  if (!decodeToUcs4(text)) {
    text = RuleText();
    return false;
  }
  cleanText(text);
  return true;
}

}  // namespace

bool readRuleText(const std::string& path, TextEncodingKind defaultEncoding, bool defaultBigEndian,
                  RuleText& text) {
  return readNamedText(ruleFileName(path), defaultEncoding, defaultBigEndian, text);
}

const RuleText* RuleFiles::find(const std::string& path, TextEncodingKind defaultEncoding,
                                bool defaultBigEndian) const {
  const auto found = texts_.find({ruleFileName(path), defaultEncoding, defaultBigEndian});
  return found == texts_.end() ? nullptr : &found->second;
}

const RuleText* RuleFiles::read(const std::string& path, TextEncodingKind defaultEncoding,
                                bool defaultBigEndian) {
  Key key = {ruleFileName(path), defaultEncoding, defaultBigEndian};
  const auto found = texts_.find(key);
  if (found != texts_.end()) return &found->second;
  RuleText text;
  if (!readNamedText(std::get<0>(key), defaultEncoding, defaultBigEndian, text)) return nullptr;
  return &texts_.emplace(std::move(key), std::move(text)).first->second;
}

bool detectEncoding(RuleText& text) {
  const std::vector<uint8_t>& bytes = text.bytes;
  const auto at = [&](size_t i) { return i < bytes.size() ? bytes[i] : uint8_t{0}; };
  text.encoding = TextEncodingKind::kUnknown;
  text.bigEndian = false;
  if ((at(0) == 0xFF && at(1) == 0xFE) || (at(0) == 0xFE && at(1) == 0xFF)) {
    text.encoding = encodingNamedInFirstLine(bytes);
    text.bigEndian = at(0) == 0xFE;
  } else if ((at(0) == 0xFF && at(3) == 0xFE) || (at(0) == 0xFE && at(3) == 0xFF)) {
    // Not the usual four-byte mark, and to be kept: a UCS-4 file says so with
    // these bytes.
    text.encoding = TextEncodingKind::kUcs4;
    text.bigEndian = at(0) == 0xFE;
  } else {
    text.encoding = narrowEncodingNamed(bytes);
  }
  return text.encoding != TextEncodingKind::kUnknown;
}

bool decodeToUcs4(RuleText& text) {
  switch (text.encoding) {
    case TextEncodingKind::kUtf16:
      text.chars = unitsOf<2>(text);
      joinSurrogatePairs(text.chars);
      break;
    case TextEncodingKind::kUcs2:
      text.chars = unitsOf<2>(text);
      break;
    case TextEncodingKind::kUcs4:
      text.chars = unitsOf<4>(text);
      break;
    default:
      return false;
  }
  text.bytes = {};
  return true;
}

// In place: what is written never overtakes what is read.
void cleanText(RuleText& text) {
  std::vector<uint32_t>& chars = text.chars;
  PairFinder instructionEnds(chars, '?', '>');
  PairFinder commentEnds(chars, '-', '-');
  text.markers.clear();
  text.lastSearches.clear();
  text.entities = {};
  size_t count = 0;
  for (size_t i = 0; i < chars.size(); ++i) {
    const uint32_t c = chars[i];
    if (pairAt(chars, i, '<', '?')) {
      // Without its end only the '<' goes.
      if (const auto end = instructionEnds.find(i + 2)) i = *end + 1;
      continue;
    }
    if (pairAt(chars, i, '-', '-')) {
      // The angle brackets and the '!' around a comment stay. Of one without its
      // end only the first hyphen goes.
      if (const auto end = commentEnds.find(i + 2)) i = *end + 1;
      continue;
    }
    if (c == '\r' || c == '\n' || c == '\t') {
      if (pairAt(chars, i, '\r', '\n')) ++i;
      chars[count++] = ' ';
      continue;
    }
    if (c == '<' || pairAt(chars, i, '/', '>'))
      text.markers.push_back(static_cast<uint32_t>(count));
    chars[count++] = c;
  }
  chars.resize(count);
}

std::optional<size_t> findString(const RuleText& text, size_t from, std::string_view pattern) {
  if (pattern.empty() || pattern.size() > limits::kLongestPattern) return std::nullopt;
  const auto behind = [&](std::optional<size_t> start) {
    return start ? std::optional(*start + pattern.size()) : std::nullopt;
  };
  const auto known = text.lastSearches.find(pattern);
  if (known != text.lastSearches.end()) {
    const LastSearch& last = known->second;
    if (from >= last.from && (!last.start || from <= *last.start)) return behind(last.start);
  }
  const Search search = searchFor(text, from, pattern);
  if (known != text.lastSearches.end()) {
    known->second = {from, search.start};
  } else if (search.places > kNearPlaces) {
    text.lastSearches.emplace(pattern, LastSearch{from, search.start});
  }
  return behind(search.start);
}

std::optional<Span> findElement(const RuleText& text, size_t from, std::string_view tag) {
  std::string pattern = "<";
  pattern.append(tag).push_back('>');
  const auto plain = findString(text, from, pattern);
  pattern.back() = ' ';
  const auto withAttributes = findString(text, from, pattern);
  if (!plain && !withAttributes) return std::nullopt;
  Span span;
  span.start = std::min(plain.value_or(SIZE_MAX), withAttributes.value_or(SIZE_MAX));
  pattern.back() = '>';
  pattern.insert(1, 1, '/');
  if (const auto end = findString(text, span.start, pattern)) {
    span.end = *end - pattern.size();
  } else if (const auto emptyEnd = findString(text, span.start, "/>")) {
    span.end = *emptyEnd - 2;
  } else {
    return std::nullopt;
  }
  return span;
}

std::string elementText(const RuleText& text, Span span) {
  return narrow(text, span.start, span.end);
}

std::optional<std::string> quotedAfter(const RuleText& text, size_t from) {
  const auto open = findChar(text, from, '"');
  if (!open) return std::nullopt;
  const auto close = findChar(text, *open + 1, '"');
  if (!close) return std::nullopt;
  return narrow(text, *open + 1, *close);
}

std::optional<size_t> findInSpan(const RuleText& text, Span span, std::string_view word) {
  for (size_t i = span.start; i + word.size() <= span.end; ++i) {
    if (matchesAt(text, i, word)) return i + word.size();
  }
  return std::nullopt;
}

std::optional<std::string> attributeInSpan(const RuleText& text, Span span, std::string_view word) {
  const auto found = findInSpan(text, span, word);
  return found ? quotedAfter(text, *found) : std::nullopt;
}

uint32_t parseHex(std::string_view digits) {
  size_t i = digits.find_first_not_of(" \t");
  uint32_t value = 0;
  for (; i < digits.size(); ++i) {
    const int digit = hexDigit(static_cast<uint8_t>(digits[i]));
    if (digit < 0) break;
    value = value << 4 | static_cast<uint32_t>(digit);
  }
  return value;
}

std::optional<HexNumber> nextHexNumber(const RuleText& text, Span span) {
  const size_t end = std::min(span.end, text.chars.size());
  size_t i = span.start;
  while (i < end && hexDigit(text.chars[i]) < 0) ++i;
  if (i >= end) return std::nullopt;
  HexNumber number = {0, 0};
  for (; i < end && hexDigit(text.chars[i]) >= 0; ++i) {
    number.value = number.value << 4 | static_cast<uint32_t>(hexDigit(text.chars[i]));
  }
  number.end = i;
  return number;
}

std::optional<std::string> entityReference(const RuleText& text, Span span) {
  const size_t end = std::min(span.end, text.chars.size());
  const auto ampersand = findChar(text, span.start, '&');
  if (!ampersand || *ampersand >= end) return std::nullopt;
  size_t start = *ampersand + 1;
  while (start < end && text.chars[start] == ' ') ++start;
  const auto semicolon = findChar(text, start, ';');
  if (!semicolon || *semicolon >= end) return std::nullopt;
  return narrow(text, start, *semicolon);
}

namespace {

size_t commonLength(const RuleText& text, size_t index, std::string_view name) {
  size_t length = 0;
  while (length < name.size() && text.chars[index + length] == static_cast<uint8_t>(name[length]))
    ++length;
  return length;
}

// As findString, and counted: thousands of entities that are looked for in all of a long text
// must not take the square of its length.
std::optional<size_t> findEntityName(const RuleText& text, size_t from, std::string_view name) {
  if (name.empty() || name.size() > limits::kLongestPattern) return std::nullopt;
  const uint64_t most = limits::entityComparisons(text.chars.size());
  uint64_t& comparisons = text.entities.comparisons;
  for (size_t i = from; i + name.size() < text.chars.size() && comparisons <= most; ++i) {
    const size_t length = commonLength(text, i, name);
    comparisons += length + 1;
    if (length == name.size()) return i + length;
  }
  return std::nullopt;
}

std::optional<std::string> findEntityFile(const RuleText& text, std::string_view name) {
  size_t from = 0;
  while (const auto found = findEntityName(text, from, name)) {
    from = *found;
    if (from >= text.chars.size() || text.chars[from] != ' ') continue;
    const auto system = findString(text, from, "SYSTEM ");
    if (!system || *system >= text.chars.size() || text.chars[*system] != '"') return std::nullopt;
    return quotedAfter(text, *system);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> entityFile(const RuleText& text, std::string_view name) {
  const auto known = text.entities.known.find(name);
  if (known != text.entities.known.end()) return known->second;
  std::optional<std::string> file = findEntityFile(text, name);
  text.entities.known.emplace(name, file);
  return file;
}

}  // namespace ksv
