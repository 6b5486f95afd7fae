// Rule files: small XML documents in a 16- or 32-bit Unicode encoding. They are
// not parsed into a tree; elements and attributes are found by searching their
// text forward from a position.
//
// Positions and spans count characters. Every extractor narrows characters to
// their low bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "cconv/rules/code_table.h"

namespace ksv {

// What the last search for a pattern found: every search from a position between
// the two finds the same.
struct LastSearch {
  size_t from;
  std::optional<size_t> start;  // none: nothing up to the end of the text
};

// Where the entities of a text are declared, as far as that has been asked.
struct EntityFiles {
  std::map<std::string, std::optional<std::string>, std::less<>> known;
  uint64_t comparisons = 0;  // that asking has taken; bounded by limits.h
};

struct RuleText {
  // The file's bytes until decodeToUcs4, unused afterwards.
  std::vector<uint8_t> bytes;
  std::vector<uint32_t> chars;
  // Index of every '<', and of every '/' that a '>' follows, in text order.
  std::vector<uint32_t> markers;
  // Of long searches, by pattern, so that a walk over a text whose tags never close
  // takes linear time.
  mutable std::map<std::string, LastSearch, std::less<>> lastSearches;
  mutable EntityFiles entities;
  TextEncodingKind encoding = TextEncodingKind::kUnknown;
  bool bigEndian = false;
};

struct Span {
  size_t start = 0;
  size_t end = 0;
};

// Reads the file of that name (its directory is ignored) from the charset
// directory. The defaults hold for a file that neither marks nor names its
// encoding. False, with an empty text, for a file that cannot be read, is empty,
// or is in UTF-8 or Shift_JIS.
bool readRuleText(const std::string& path, TextEncodingKind defaultEncoding, bool defaultBigEndian,
                  RuleText& text);

// The subset files of one run over the charset directory: most of them belong to
// several charsets, and are read and cleaned once.
class RuleFiles {
 public:
  // As readRuleText; null for its false. The text stays where it is.
  const RuleText* read(const std::string& path, TextEncodingKind defaultEncoding,
                       bool defaultBigEndian);
  // What has been read already; null when that has not.
  const RuleText* find(const std::string& path, TextEncodingKind defaultEncoding,
                       bool defaultBigEndian) const;

 private:
  using Key = std::tuple<std::string, TextEncodingKind, bool>;
  std::map<Key, RuleText> texts_;
};

// The stages of readRuleText.
bool detectEncoding(RuleText& text);
bool decodeToUcs4(RuleText& text);
void cleanText(RuleText& text);

// The position just past the first occurrence of pattern at or after from.
std::optional<size_t> findString(const RuleText& text, size_t from, std::string_view pattern);

// The content of the next element named tag at or after from. It begins right
// behind "<tag>" or "<tag ", so it holds the attributes of a start tag too, and
// ends where "</tag>" begins or, when none follows, "/>".
std::optional<Span> findElement(const RuleText& text, size_t from, std::string_view tag);

// The characters of a span, up to a character whose low byte is zero.
std::string elementText(const RuleText& text, Span span);

// The first text in double quotes at or after from.
std::optional<std::string> quotedAfter(const RuleText& text, size_t from);

// The position just past the word inside the span.
std::optional<size_t> findInSpan(const RuleText& text, Span span, std::string_view word);

// The quoted text behind the attribute word (such as "domain=") in the span.
std::optional<std::string> attributeInSpan(const RuleText& text, Span span, std::string_view word);

// A hexadecimal number: blanks and tabs are skipped, and it ends at the first
// other character. The last eight digits count.
uint32_t parseHex(std::string_view digits);

// The first run of hexadecimal digits in the span, and the position behind it.
struct HexNumber {
  uint32_t value;
  size_t end;
};
std::optional<HexNumber> nextHexNumber(const RuleText& text, Span span);

// The name of the first entity reference in the span.
std::optional<std::string> entityReference(const RuleText& text, Span span);

// The file that the text declares for an entity: NAME SYSTEM "file".
std::optional<std::string> entityFile(const RuleText& text, std::string_view name);

}  // namespace ksv
