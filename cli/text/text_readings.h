// What a text is by each charset that it may be in.
//
// Each charset reads the text by its real tables. A reading that is valid has a cost, which says
// how unusual its characters are in the language that the charset is used for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/text/byte_facts.h"
#include "cli/text/rereadable_text.h"
#include "cli/text/single_byte_tables.h"
#include "cli/text/text_language.h"
#include "kit/charsets/charset_names.h"

namespace ksv_cli {

using ksv_kit::CharsetChoice;
using ksv_kit::CharsetNames;

inline constexpr char kAscii[] = "ISO-646IRV";
inline constexpr char kUtf8[] = "UTF-8";

struct TextReading {
  std::string name;  // of the charset, as users know it
  CharsetChoice charset;
  bool isAllowed;  // of the language that is known, or of none
  bool isUnicode;
  uint64_t cost;
  uint64_t hash;                 // the same for equal texts, without a table
  const SingleByteTable* table;  // of a charset of one byte; else null

  // What is valid as UTF-8 is never read as anything else, though it may be refused.
  bool isUtf8() const { return name == kUtf8; }
  bool isPlain() const { return isUtf8() || name == kAscii; }
  bool isSameText(const TextReading& other, const ByteFacts& facts) const;
};

// All that are valid, the cheapest first. singleBytes stays the caller's as long as they do. Throws
// Failure when the text cannot be read.
std::vector<TextReading> readingsOf(RereadableText& text, const ByteFacts& facts,
                                    const CharsetNames& names, TextLanguage language,
                                    const SingleByteTables& singleBytes);

// Whether the whole text is of the charset. Throws Failure when it cannot be read.
bool isWhollyOf(RereadableText& text, const CharsetNames& names, const CharsetChoice& charset);

// What a text that is said to be in the charset is read as: the one that has the characters of
// vendors as well, if there is one.
CharsetChoice asItIsRead(const CharsetChoice& charset, const CharsetNames& names);

}  // namespace ksv_cli
