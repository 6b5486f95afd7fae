// Runs over short entries that take many characters at once, with the vector
// instructions of the processor that the program finds itself on.
#pragma once

#include "cconv/bulk/bulk_run.h"

namespace ksv::vector_runs {

// Each gives the run for a form of input and a way to write ASCII, null where the
// processor has no instructions for it. A run may stop wherever it likes, in front of
// a character: the run by single characters goes on.
RunFunction byteCodes(AsciiOutput ascii);
RunFunction utf8(AsciiOutput ascii);
RunFunction twoByteUnits(AsciiOutput ascii, bool bigEndian);

// From UTF-8 to units of two bytes, on processors with less.
RunFunction utf8ToUnitsSse41(AsciiOutput ascii);
RunFunction utf8ToUnitsAvx2(AsciiOutput ascii);

// The runs for an output with escape sequences. The entries tell their groups.
RunFunction byteCodesDesignating();
RunFunction utf8Designating();
RunFunction twoByteUnitsDesignating(bool bigEndian);

// Characters of ISO-2022-JP in a group of one-byte codes, which are written as ASCII is,
// and in one of two-byte codes, across the escape sequences between them.
struct ShiftedTables {
  RunTables singles;
  RunTables pairs;
  uint32_t singleGroup;
  uint32_t pairGroup;
  // The last bytes of their sequences.
  char singleFinal;
  char pairFinal;
};
using ShiftedRunFunction = void (*)(const ShiftedTables& run, BulkPosition& position,
                                    uint32_t wanted);
ShiftedRunFunction iso2022Jp(AsciiOutput ascii);

}  // namespace ksv::vector_runs
