// Runs over short entries that take many characters at once, with the vector
// instructions of the processor that the program finds itself on.
#pragma once

#include "cconv/convert/bulk_run.h"

namespace ksv::vector_runs {

// Each gives the run for a form of input and a way to write ASCII, null where the
// processor has no instructions for it. A run may stop wherever it likes, in front of
// a character: the run by single characters goes on.
RunShort byteCodes(AsciiOutput ascii);
RunShort utf8(AsciiOutput ascii);
RunShort twoByteUnits(AsciiOutput ascii, bool bigEndian);

}  // namespace ksv::vector_runs
