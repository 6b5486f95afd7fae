// Runs by vectors read nothing but well-formed text of the Unicode forms and of ISO-2022-JP: what
// is not, they leave to the decoders, which take it as it is spelt. Whoever has to know whether a
// text is well-formed can be told which parts of it these runs have read, and need look at the
// others only.
#pragma once

#include <cstdint>

namespace ksv {

// What one run has read. In ISO-2022-JP a group of two-byte codes may be designated where it begins
// and where it ends; which one is the run's.
struct ReadPart {
  const uint8_t* begin;
  const uint8_t* end;
  bool beginsInPairs;
  bool endsInPairs;
};

struct RunWatch {
  void (*passed)(RunWatch& watch, const ReadPart& part) noexcept;
};

// The watch of this thread. It stays the caller's, who takes it away (null) before it ends.
void watchRuns(RunWatch* watch) noexcept;
RunWatch* runWatch() noexcept;

}  // namespace ksv
