// Which 16-bit codes are characters, in the eyes of the scorers.
#pragma once

#include "detect/code_set.h"

namespace ksv::detect {

// UTF-16 units and the characters of plane 0 that text detection takes for
// assigned. Ordinary Unicode texts come out right with a repertoire of this age, and
// a larger one would let more of other encodings pass.
extern const CodeSet kAssignedCharacters;

// Those of the first set that no line end and no separator begins with.
extern const CodeSet kPlainCharacters;

// The codes, lead * 256 + trail, that Shift_JIS fills. Bounds on the whole code: a
// trail byte that no code has is accepted inside them.
extern const CodeSet kShiftJisCodes;

// What the encoding check accepts in UTF-16 and UCS-4: coarser than the first set.
extern const CodeSet kCheckedCharacters;

}  // namespace ksv::detect
