// Well-formedness of text in a Unicode encoding form.
//
// The converters of the library take any value that the bytes spell, so the
// command looks at Unicode input itself before it hands it on.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kit/charsets/unicode_form.h"

namespace ksv_kit {

enum class ScanEnd {
  kAll,         // everything is well-formed
  kIncomplete,  // the last bytes begin a character and do not end it
  kInvalid      // bytes that cannot be part of well-formed text
};

struct ScanResult {
  size_t wellFormed;  // bytes of whole characters from the beginning
  ScanEnd end;        // what stands behind them
  size_t badLength;   // bytes of it: the rest, or the maximal ill-formed subpart
};

// Scans text of the form; for kNone everything is well-formed. UTF-8 is that of
// RFC 3629; UTF-16 has paired surrogates only; UCS-2 and UCS-4 have none, and
// UCS-4 ends at 10FFFF. A lone surrogate is one bad unit.
ScanResult scanUnicode(UnicodeForm form, bool bigEndian, const uint8_t* text, size_t length);

// The length of the byte-order mark at the beginning of the text, 0 without one.
// A mark that is found sets bigEndian. When the order is fixed, only the mark of
// that order counts.
size_t byteOrderMark(UnicodeForm form, bool orderIsFixed, const uint8_t* text, size_t length,
                     bool& bigEndian);

}  // namespace ksv_kit
