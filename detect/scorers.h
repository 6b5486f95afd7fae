// The scorers. Each reads a chunk from the offset start, counts good and bad
// characters of its encoding, adds the counts to the candidate's and returns the
// candidate's score: the percentage of good characters.
//
// Which counts are added differs, and callers depend on it: most scorers drop those
// of a chunk without a good character, and those of a chunk in which they meet a byte
// that no text holds (NUL and ESC, in some others too).
#pragma once

#include <cstddef>
#include <cstdint>

#include "detect/candidate.h"

namespace ksv::detect {

using Scorer = int32_t (*)(Candidate& candidate, const Chunk& chunk, size_t start);

int32_t scoreAscii(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreShiftJis(Candidate& candidate, const Chunk& chunk, size_t start);
// Takes a pair for good only when Shift_JIS has a character there.
int32_t scoreShiftJisCodes(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreEucJp(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreEucJpFix(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreSimplifiedChinese(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreTraditionalChinese(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreKorean(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreIso2022Jp(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreUtf8(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreUtf16BigEndian(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreUtf16LittleEndian(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreUcs4BigEndian(Candidate& candidate, const Chunk& chunk, size_t start);
int32_t scoreUcs4LittleEndian(Candidate& candidate, const Chunk& chunk, size_t start);

}  // namespace ksv::detect
