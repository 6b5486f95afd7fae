// A code table in the packed form of the charset directory (packed_charsets.h), read where it
// stands. charsets/pack.py, which makes it, explains its tree.
#pragma once

#include <algorithm>
#include <cstdint>

namespace ksv {

// Keys below this find their page through a directory, all others among runs of pages. They are
// the codes of Unicode, and of all sets of two bytes.
constexpr uint32_t kDirectPageKeys = 0x110000;

// All numbers in it have been checked: nothing that find() reads lies outside.
struct PackedTable {
  struct Page {
    uint32_t base;
    uint32_t steps;  // the number of its template
  };
  // Pages one behind the other, of keys whose bits above the low four grow by the distance.
  struct Run {
    uint32_t firstPrefix;
    uint32_t firstPage;
    uint32_t count;
    uint32_t distance;
  };

  static constexpr uint32_t kKeysAPage = 16;
  static constexpr uint32_t kPagesABlock = 64;

  const uint32_t* directory = nullptr;  // a block for each 1,024 keys
  uint32_t directoryLength = 0;
  uint32_t runCount = 0;
  const Run* runs = nullptr;  // in ascending order
  const uint32_t* blocks = nullptr;
  const Page* pages = nullptr;
  const uint32_t* templates = nullptr;

  bool isThere() const { return pages != nullptr; }

  // The value of key, 0 when there is none.
  uint32_t find(uint32_t key) const {
    const Page& page = pages[pageOf(key)];
    const uint32_t step = templates[page.steps * kKeysAPage + key % kKeysAPage];
    return step == 0 ? 0 : page.base + step;
  }

 private:
  uint32_t pageOf(uint32_t key) const {
    if (key >= kDirectPageKeys) return pageInRuns(key / kKeysAPage);
    const uint32_t place = key / (kKeysAPage * kPagesABlock);
    if (place >= directoryLength) return 0;
    return blocks[directory[place] * kPagesABlock + key / kKeysAPage % kPagesABlock];
  }

  uint32_t pageInRuns(uint32_t keyPrefix) const {
    const Run* const behind =
        std::upper_bound(runs, runs + runCount, keyPrefix,
                         [](uint32_t prefix, const Run& run) { return prefix < run.firstPrefix; });
    if (behind == runs) return 0;
    const Run& run = behind[-1];
    const uint32_t distance = keyPrefix - run.firstPrefix;
    if (distance % run.distance != 0) return 0;
    const uint32_t place = distance / run.distance;
    return place < run.count ? run.firstPage + place : 0;
  }
};

}  // namespace ksv
