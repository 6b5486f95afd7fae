// What the engine knows of a codec: a pair of functions, and what may be said about them.
#pragma once

#include "cconv/engine/run_watch.h"
#include "common/faults.h"
#include "ksv_cconv.h"

namespace ksv {

// A decoder reads one character at the input position and leaves status 11
// (decoded, positions advanced), 12 (the input ends inside it; position
// unchanged), 13 (invalid), 0 (nothing left), or 21 when it has only read a
// byte-order mark. An encoder maps and writes the current character and leaves
// 21 (written), 22 (no room), 23 (not representable) or 1; with status 31 on
// entry it writes what closes the text and leaves 0.
using CodecFunction = void (*)(ConverterRecord& record);

// How the bulk path finds the characters of a decoder's input.
enum class SourceForm {
  kOther,      // only the decoder knows
  kByRules,    // the rule-driven decoder: by the widths of the groups
  kByteCodes,  // a byte that is a code stands alone whatever follows, then pairs, ...
  kTwoByteCodes,
  kIso2022Jp,
  kUtf8,
  kUtf16,
  kUcs2,  // one unit a character
  kUcs4,
};

struct CodecEntry {
  char name[264];
  CodecFunction function;
  SourceForm sourceForm = SourceForm::kOther;
  bool writesMark = false;  // an encoder that begins with a byte-order mark on request
  bool keepsState = false;  // an encoder that writes escape sequences
  // For a library that has no more of this one than a converter record.
  const FaultAccess* faults = &kFaultAccess;
  void (*watchRuns)(RunWatch* watch) noexcept = ksv::watchRuns;
};

}  // namespace ksv
