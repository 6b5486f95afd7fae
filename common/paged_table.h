// A map from 16-bit numbers to 16-bit numbers that are mostly 0.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv {

// Pages of entries, equal ones kept once, and an index that finds the page of a key:
// two loads whatever the key. Entries for all keys in a row would be 128 KB a table;
// the Shift_JIS mapping takes 16 KB one way and 46 KB the other, most of it characters,
// so that the tables stay in a processor's cache beside the text. Searching in ranges
// or hashing would save nothing further and cost time.
template <size_t kPageBits, size_t kPages>
struct PagedTable {
  static constexpr size_t kPageSize = size_t{1} << kPageBits;

  uint8_t index[0x10000 / kPageSize];
  uint16_t pages[kPages * kPageSize];

  constexpr uint16_t operator[](uint16_t key) const {
    return pages[index[key >> kPageBits] * kPageSize + key % kPageSize];
  }
};

}  // namespace ksv
