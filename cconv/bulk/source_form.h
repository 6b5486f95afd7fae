// How the bulk path finds the characters of each form of input.
//
// next() finds the entry of the character at input, or kNoEntry, how many bytes it
// is read from, and its place in the table of short entries. At least kLongestInput
// bytes of input follow. runShort() goes ahead over characters that have short
// entries (of up to kLongestShortInput bytes), several at a time where they come in a
// row; takeLast() takes one of them
// out of no more bytes than are left; runByVectors() tells what goes ahead faster still.
// Lengths come from the input alone, not from the entry: so the processor begins with
// the next character before the tables have answered for this one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cconv/bulk/bulk_run.h"
#include "cconv/bulk/direct_table.h"
#include "cconv/bulk/vector_runs.h"

namespace ksv::source_forms {

struct Found {
  Entry entry;
  uint32_t length;
  uint32_t shortIndex;
};
constexpr Found kNothing = {kNoEntry, 0, ShortTable::kNoIndex};

inline void putUnit(uint8_t* bytes, uint32_t value, uint32_t width, bool bigEndian) {
  for (uint32_t i = 0; i < width; ++i) {
    bytes[bigEndian ? width - 1 - i : i] = static_cast<uint8_t>(value >> (8 * i));
  }
}

// What forms without escape sequences have in common.
struct Unshifted {
  static constexpr ptrdiff_t kLongestInput = 4;  // bytes that a character is read from
  static constexpr bool kShifts = false;
  static constexpr bool kIsUnicode = false;
  static constexpr uint32_t kShiftStates = 1;
  static uint32_t shiftOf(const BulkPosition&) { return 0; }
};

}  // namespace ksv::source_forms
