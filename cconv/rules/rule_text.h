// The text of a rule file: a small XML document in a 16- or 32-bit Unicode encoding, decoded
// and cleaned. It is not parsed into a tree; a RuleReader searches it forward.
//
// Positions count characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cconv/rules/text_encoding.h"

namespace ksv {

// What the last search for a pattern found: every search from a position between
// the two finds the same.
struct LastSearch {
  size_t from = SIZE_MAX;       // SIZE_MAX: none has been made
  std::optional<size_t> start;  // none: nothing up to the end of the text

  bool answers(size_t position) const { return position >= from && (!start || position <= *start); }
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
  // What all readers of the text share. Long searches, by pattern, so that a walk over a
  // text whose tags never close takes linear time.
  mutable std::map<std::string, LastSearch, std::less<>> lastSearches;
  mutable LastSearch lastOpeningQuote;
  mutable LastSearch lastClosingQuote;
  mutable EntityFiles entities;
  TextEncodingKind encoding = TextEncodingKind::kUnknown;
  bool bigEndian = false;
};

// What makes a text of the bytes of a file. Each says whether the file can be read on.
bool detectEncoding(RuleText& text);
bool decodeToUcs4(RuleText& text);
void cleanText(RuleText& text);

}  // namespace ksv
