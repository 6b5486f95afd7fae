// Runs over units of two bytes, four characters at a time.
#pragma once

#include "cconv/bulk/vectors/window.h"

namespace ksv::vector_runs::by_windows {
namespace {

// Takes 32 characters; false where one cannot be, and then none has been taken.
template <bool kBigEndian, bool kDesignates>
KSV_IN_LOOP bool takeUnits(const RunTables& run, BulkPosition& position) {
  constexpr uint32_t kUnits = 32;
  BulkPosition at = position;
  Window all = ~(Window{});
  for (uint32_t i = 0; i < kUnits; i += 4) {
    const uint8_t* const input = at.input + 2 * i;
    const Window entries = fourOf(
        run.at(readUnit(input, 2, kBigEndian)), run.at(readUnit(input + 2, 2, kBigEndian)),
        run.at(readUnit(input + 4, 2, kBigEndian)), run.at(readUnit(input + 6, 2, kBigEndian)));
    all &= entries;
    if (!putFour<kDesignates>(run, at, entries)) return false;
  }
  if (!wereThere(all)) return false;
  at.advance(2 * kUnits, kUnits);
  position = at;
  return true;
}

// Takes what stands in front of a line end that is converted, and the line end.
template <bool kBigEndian, bool kDesignates>
KSV_IN_LOOP bool takeLine(const RunTables& run, BulkPosition& at) {
  constexpr uint32_t kMost = 32;
  for (uint32_t i = 0; i < kMost; ++i) {
    const uint32_t value = readUnit(at.input, 2, kBigEndian);
    if (takeLineEnd<kDesignates>(run, at, value, 2)) return true;
    if (!takeKnown<kDesignates>(run, at, run.at(value), 2)) return false;
  }
  return true;
}

// kWritesAscii: ASCII is written as bytes, as it is.
template <bool kWritesAscii, bool kBigEndian, bool kDesignates = false>
void runUnits(const RunTables& run, BulkPosition& position, uint32_t wanted) {
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    if (kWritesAscii && mayTakeAscii<kDesignates>(run, at) &&
        takeAsciiUnits<kBigEndian>(run, at, wanted)) {
      continue;
    }
    if (takeUnits<kBigEndian, kDesignates>(run, at)) continue;
    if (run.lineEnds == nullptr || !takeLine<kBigEndian, kDesignates>(run, at)) break;
  }
  position = at;
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
