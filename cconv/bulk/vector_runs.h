// Runs over short entries that take many characters at once, with the vector
// instructions of the processor that the program finds itself on.
#pragma once

#include "cconv/bulk/bulk_run.h"

namespace ksv::vector_runs {

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

// What there is with the instructions of one kind of processor. Each gives the run for a form of
// input and a way to write ASCII, null where runs by single characters are as fast. A run
// may stop wherever it likes, in front of a character: the run by single characters goes on.
struct LevelRuns {
  RunFunction (*byteCodes)(AsciiOutput ascii);
  RunFunction (*utf8)(AsciiOutput ascii);
  RunFunction (*twoByteUnits)(AsciiOutput ascii, bool bigEndian);

  // The runs for an output with escape sequences. The entries tell their groups.
  RunFunction (*byteCodesDesignating)();
  RunFunction (*utf8Designating)();
  RunFunction (*twoByteUnitsDesignating)(bool bigEndian);

  ShiftedRunFunction (*iso2022Jp)(AsciiOutput ascii);
};

// Of the processor that the program finds itself on.
const LevelRuns& levelRuns();

// For source files that make them.
extern const LevelRuns kNoRuns;
extern const LevelRuns kSse41Runs;
extern const LevelRuns kAvx2Runs;
extern const LevelRuns kAvx512Runs;
extern const LevelRuns kNeonRuns;

}  // namespace ksv::vector_runs
