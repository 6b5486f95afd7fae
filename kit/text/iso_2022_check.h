// Well-formedness of ISO-2022-JP.
//
// The converter waits at an escape sequence that it does not know as if the rest of
// it were to come, and takes any two bytes for a pair; so the command looks at such
// text itself before it hands it on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kit/text/unicode_check.h"

namespace ksv_kit {

// Whether a text is a known escape sequence or begins one.
enum class Designation { kNone, kBeginning, kWhole };
Designation designationIn(std::string_view text);

// Scans a text piece by piece: what is handed in begins behind the well-formed bytes
// of the scan before, or behind its bad ones. Bad are an escape sequence that is not
// known, bytes above 7F outside half-width katakana, and a first byte without a
// second one in text of pairs.
class Iso2022Scanner {
 public:
  ScanResult scan(const uint8_t* text, size_t length);

  // Whether pairs stand behind what was scanned so far.
  bool isInPairs() const { return set_ == Set::kPairs; }
  // Goes on behind well-formed text that was not scanned, which ends in pairs or in single bytes.
  void goBehind(bool inPairs) {
    set_ = inPairs ? Set::kPairs : Set::kSingle;
    escapesAtEnd_ = 0;
  }

  // Bytes of the escape sequences at the end of what was well-formed so far.
  size_t escapesAtEnd() const { return escapesAtEnd_; }

 private:
  enum class Set { kSingle, kKana, kPairs };

  size_t plainLength(const uint8_t* text, size_t length) const;
  size_t skipPlain(const uint8_t* text, size_t at, size_t length);
  size_t skipPlainBlocks(const uint8_t* text, size_t at, size_t length) const;
  ScanResult scanEscape(const uint8_t* text, size_t length);
  ScanResult scanCharacter(const uint8_t* text, size_t length) const;

  Set set_ = Set::kSingle;
  size_t escapesAtEnd_ = 0;
};

}  // namespace ksv_kit
