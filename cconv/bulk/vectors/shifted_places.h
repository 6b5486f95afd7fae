// Where the characters of a block of ISO-2022-JP (RFC 1468) stand, by bits of its 64 bytes. For
// runs with whatever instructions: all of it is compiled where it is used.
#pragma once

#include <bit>
#include <cstdint>

#include "cconv/bulk/position.h"

namespace ksv::vector_runs {

// The bytes that a pair begins with, from those that a pair can begin with: in a row of
// these every second one, from the first on.
KSV_IN_LOOP uint64_t pairLeads(uint64_t leads) {
  constexpr uint64_t kEven = 0x5555555555555555;
  const uint64_t evenStarts = leads & ~(leads << 1) & kEven;
  const uint64_t fromEven = leads & ~(leads + evenStarts);
  return (fromEven & kEven) | (leads & ~fromEven & ~kEven);
}

// What the bytes are by themselves.
struct ShiftedBytes {
  uint64_t toDouble;  // that a designation of two-byte codes begins with
  uint64_t toSingle;
  uint64_t graphic;   // which two-byte codes consist of
  uint64_t notAscii;  // or that have to be left to others
};

struct ShiftedPlaces {
  // Characters that begin behind so many bytes are left to the next block: an escape sequence may
  // not be whole there.
  static constexpr uint32_t kSeen = 62;

  uint64_t starts;
  uint64_t pairs;     // the first bytes of pairs
  uint64_t inDouble;  // bytes behind the designation of two-byte codes

  KSV_IN_LOOP ShiftedPlaces(const ShiftedBytes& bytes, bool beginsInDouble) {
    constexpr uint64_t kFirst = 1;
    const uint64_t shifts = bytes.toDouble | bytes.toSingle;
    // Between each toDouble and the toSingle behind it, the difference sets all bits. It is
    // right up to the first sequence that designates what is designated already.
    inDouble = bytes.toSingle - bytes.toDouble - (beginsInDouble ? kFirst : 0);
    const uint64_t doubleBefore = inDouble << 1 | (beginsInDouble ? kFirst : 0);
    const uint64_t idle = (bytes.toDouble & doubleBefore) | (bytes.toSingle & ~doubleBefore);
    const uint64_t escapes = shifts | shifts << 1 | shifts << 2;
    const uint64_t codes = inDouble & bytes.graphic & ~escapes;
    pairs = pairLeads(codes);
    const uint64_t halves = pairs & ~(codes >> 1);
    const uint64_t single = ~inDouble & ~escapes;
    const uint64_t stops = idle | halves | (inDouble & ~escapes & ~bytes.graphic) |
                           (single & bytes.notAscii) | kFirst << kSeen;
    const uint64_t seen = (stops & (0 - stops)) - 1;
    starts = (pairs | single) & seen;
  }
};

}  // namespace ksv::vector_runs
