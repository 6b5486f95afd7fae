// Runs over short entries that take many characters at once, with the vector
// instructions of the processor that the program finds itself on.
#pragma once

#include "cconv/bulk/bulk_run.h"

namespace ksv::vector_runs {

// Each gives the run for a form of input and a way to write ASCII, null where the
// processor has no instructions for it. A run may stop wherever it likes, in front of
// a character: the run by single characters goes on.
RunShort byteCodes(AsciiOutput ascii);
RunShort utf8(AsciiOutput ascii);
RunShort twoByteUnits(AsciiOutput ascii, bool bigEndian);

// From UTF-8 to units of two bytes, on processors with less.
RunShort utf8ToUnitsSse41(AsciiOutput ascii);
RunShort utf8ToUnitsAvx2(AsciiOutput ascii);

// The runs for an output with escape sequences. The entries tell their groups.
RunShort byteCodesDesignating();
RunShort utf8Designating();
RunShort twoByteUnitsDesignating(bool bigEndian);

// Characters of ISO-2022-JP in a group of one-byte codes, which are written as ASCII is,
// and in one of two-byte codes, across the escape sequences between them.
struct ShiftedRun {
  ShortRun singles;
  ShortRun pairs;
  uint32_t singleGroup;
  uint32_t pairGroup;
  // The last bytes of their sequences.
  char singleFinal;
  char pairFinal;
};
using RunShifted = void (*)(const ShiftedRun& run, BulkPosition& position, uint32_t wanted);
RunShifted iso2022Jp(AsciiOutput ascii);

}  // namespace ksv::vector_runs
