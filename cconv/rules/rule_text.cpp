#include "cconv/rules/rule_text.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "cconv/rules/rule_base.h"
#include "cconv/rules/rule_path.h"
#include "cconv/rules/text_units.h"
#include "common/platform.h"

namespace ksv {
namespace {

constexpr size_t kLongestPattern = 511;

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
  platform::InputFile file(path.c_str());
  if (file.size() > 0 && file.size() <= std::numeric_limits<int32_t>::max()) {
    bytes.resize(static_cast<size_t>(file.size()));
    if (file.read(bytes.data(), bytes.size()) != bytes.size()) bytes.clear();
  }
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

std::vector<uint32_t> unitsOf(const RuleText& text, uint32_t width) {
  std::vector<uint32_t> units(text.bytes.size() / width);
  for (size_t i = 0; i < units.size(); ++i) {
    units[i] = readUnit(&text.bytes[i * width], width, text.bigEndian);
  }
  return units;
}

// A surrogate takes the next unit whatever it is; as the last unit it is dropped.
std::vector<uint32_t> joinSurrogatePairs(const std::vector<uint32_t>& units) {
  std::vector<uint32_t> chars;
  chars.reserve(units.size());
  for (size_t i = 0; i < units.size(); ++i) {
    const uint32_t unit = units[i];
    if (!isSurrogate(unit)) {
      chars.push_back(unit);
    } else if (++i < units.size()) {
      chars.push_back(joinRuleFileSurrogates(unit, units[i]));
    }
  }
  return chars;
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

bool matchesAt(const RuleText& text, size_t index, const std::string& pattern) {
  if (pattern.size() > text.chars.size() - index) return false;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (text.chars[index + i] != static_cast<uint8_t>(pattern[i])) return false;
  }
  return true;
}

// The position of the first occurrence of pattern at or after from.
std::optional<size_t> searchFor(const RuleText& text, size_t from, const std::string& pattern) {
  if (pattern[0] == '<' || pattern[0] == '/') {
    auto marker = std::lower_bound(text.markers.begin(), text.markers.end(), from);
    for (; marker != text.markers.end(); ++marker) {
      if (matchesAt(text, *marker, pattern)) return *marker;
    }
    // Every '<' is a marker, so there is nothing left to find.
    if (pattern[0] == '<') return std::nullopt;
  }
  // A pattern that ends exactly at the end of the text is not found here.
  for (size_t i = from; i + pattern.size() < text.chars.size(); ++i) {
    if (matchesAt(text, i, pattern)) return i;
  }
  return std::nullopt;
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

}  // namespace

bool readRuleText(const std::string& path, TextEncodingKind defaultEncoding, bool defaultBigEndian,
                  RuleText& text) {
  text = RuleText();
  PathParts parts = splitPath(path);
  lowerFileName(parts);
  text.bytes = readWholeFile(ruleBase.charsetPath + parts.fileName + parts.extension);
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
      text.chars = joinSurrogatePairs(unitsOf(text, 2));
      break;
    case TextEncodingKind::kUcs2:
      text.chars = unitsOf(text, 2);
      break;
    case TextEncodingKind::kUcs4:
      text.chars = unitsOf(text, 4);
      break;
    default:
      return false;
  }
  text.bytes = {};
  return true;
}

void cleanText(RuleText& text) {
  const std::vector<uint32_t> source = std::move(text.chars);
  PairFinder instructionEnds(source, '?', '>');
  PairFinder commentEnds(source, '-', '-');
  text.chars.clear();
  text.chars.reserve(source.size());
  text.markers.clear();
  text.lastSearches.clear();
  for (size_t i = 0; i < source.size(); ++i) {
    const uint32_t c = source[i];
    if (pairAt(source, i, '<', '?')) {
      // Without its end only the '<' goes.
      if (const auto end = instructionEnds.find(i + 2)) i = *end + 1;
      continue;
    }
    if (pairAt(source, i, '-', '-')) {
      // The angle brackets and the '!' around a comment stay. Of one without its
      // end only the first hyphen goes.
      if (const auto end = commentEnds.find(i + 2)) i = *end + 1;
      continue;
    }
    if (c == '\r' || c == '\n' || c == '\t') {
      if (pairAt(source, i, '\r', '\n')) ++i;
      text.chars.push_back(' ');
      continue;
    }
    if (c == '<' || pairAt(source, i, '/', '>')) {
      text.markers.push_back(static_cast<uint32_t>(text.chars.size()));
    }
    text.chars.push_back(c);
  }
}

std::optional<size_t> findString(const RuleText& text, size_t from, const std::string& pattern) {
  if (pattern.empty() || pattern.size() > kLongestPattern) return std::nullopt;
  const auto [entry, isNew] = text.lastSearches.try_emplace(pattern);
  LastSearch& last = entry->second;
  if (isNew || from < last.from || (last.start && from > *last.start)) {
    last = {from, searchFor(text, from, pattern)};
  }
  if (!last.start) return std::nullopt;
  return *last.start + pattern.size();
}

std::optional<Span> findElement(const RuleText& text, size_t from, const std::string& tag) {
  const auto plain = findString(text, from, "<" + tag + ">");
  const auto withAttributes = findString(text, from, "<" + tag + " ");
  if (!plain && !withAttributes) return std::nullopt;
  Span span;
  span.start = std::min(plain.value_or(SIZE_MAX), withAttributes.value_or(SIZE_MAX));
  const std::string endTag = "</" + tag + ">";
  if (const auto end = findString(text, span.start, endTag)) {
    span.end = *end - endTag.size();
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

std::optional<size_t> findInSpan(const RuleText& text, Span span, const std::string& word) {
  for (size_t i = span.start; i + word.size() <= span.end; ++i) {
    if (matchesAt(text, i, word)) return i + word.size();
  }
  return std::nullopt;
}

std::optional<std::string> attributeInSpan(const RuleText& text, Span span,
                                           const std::string& word) {
  const auto found = findInSpan(text, span, word);
  return found ? quotedAfter(text, *found) : std::nullopt;
}

uint32_t parseHex(const std::string& digits) {
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

std::optional<std::string> entityFile(const RuleText& text, const std::string& name) {
  size_t from = 0;
  while (const auto found = findString(text, from, name)) {
    from = *found;
    if (from >= text.chars.size() || text.chars[from] != ' ') continue;
    const auto system = findString(text, from, "SYSTEM ");
    if (!system || *system >= text.chars.size() || text.chars[*system] != '"') return std::nullopt;
    return quotedAfter(text, *system);
  }
  return std::nullopt;
}

}  // namespace ksv
