#include "cconv/rules/rule_text.h"

#include <cstring>

#include "cconv/rules/text_units.h"

namespace ksv {
namespace {

// "UTF-16" and "ISO-10646-UCS-2" in 16-bit little-endian units, without the zero
// byte behind the last letter: in a big-endian file they match one byte later.
constexpr char kUtf16Name[] = "U\0T\0F\0-\0001\0006";
constexpr size_t kUtf16NameSize = 11;
constexpr char kUcs2Name[] = "I\0S\0O\0-\0001\0000\0006\0004\0006\0-\0U\0C\0S\0-\0002";
constexpr size_t kUcs2NameSize = 29;
static_assert(sizeof kUtf16Name == kUtf16NameSize + 1);
static_assert(sizeof kUcs2Name == kUcs2NameSize + 1);

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

}  // namespace

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
  text.lastOpeningQuote = text.lastClosingQuote = {};
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

}  // namespace ksv
