// Byte-order marks of the Unicode forms, on input and output.
#pragma once

#include <cstddef>

#include "ksv_cconv.h"

namespace ksv {

// What a decoder goes on with after looking for a mark at the input position.
enum class MarkResult {
  kNone,        // no mark: decode
  kSkipped,     // behind a mark now; status 21, so that the next call decodes
  kIncomplete,  // too few bytes to tell; status 12, and the mark is still sought
};

// Each looks for its form's mark once: the detect field is cleared by a first
// look that had bytes enough.
MarkResult skipUcs2Mark(ConverterRecord& record);
MarkResult skipUtf16Mark(ConverterRecord& record);
MarkResult skipUcs4Mark(ConverterRecord& record);
MarkResult skipUtf8Mark(ConverterRecord& record);

}  // namespace ksv
