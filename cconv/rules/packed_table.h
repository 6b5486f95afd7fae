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
  // Pages of one template, of keys whose bits above the low four grow by the distance, and whose
  // bases grow by the step.
  struct Run {
    uint32_t firstPrefix;
    uint32_t count;
    uint32_t distance;
    uint32_t firstBase;
    uint32_t step;
    uint32_t steps;

    Page page(uint32_t place) const { return {firstBase + place * step, steps}; }
  };

  // The first page and the first template are empty.
  static constexpr Page kEmptyPage = {0, 0};
  static constexpr uint32_t kKeysAPage = 16;
  static constexpr uint32_t kPagesABlock = 64;

  const uint32_t* directory = nullptr;  // a block for each 1,024 keys
  uint32_t directoryLength = 0;
  uint32_t runCount = 0;
  const Run* runs = nullptr;  // in ascending order
  const uint32_t* blocks = nullptr;
  const Page* pages = nullptr;
  const uint16_t* narrowTemplates = nullptr;
  uint32_t narrowCount = 0;
  const uint32_t* wideTemplates = nullptr;  // their numbers go on behind the narrow ones

  bool isThere() const { return pages != nullptr; }

  // The value of key, 0 when there is none.
  uint32_t find(uint32_t key) const {
    return valueIn(key < kDirectPageKeys ? pages[pageOf(key)] : pageInRuns(key / kKeysAPage), key);
  }

  // Calls take(key, value) for each key that has a value, in ascending order, until it says false.
  template <class Take>
  void forEach(Take take) const {
    for (uint32_t place = 0; place < directoryLength; ++place) {
      for (uint32_t i = 0; i < kPagesABlock; ++i) {
        const uint32_t page = blocks[directory[place] * kPagesABlock + i];
        const uint32_t prefix = place * kPagesABlock + i;
        if (page != 0 && !takePage(pages[page], prefix, take)) return;
      }
    }
    for (const Run* run = runs; run != runs + runCount; ++run) {
      for (uint32_t i = 0; i < run->count; ++i)
        if (!takePage(run->page(i), run->firstPrefix + i * run->distance, take)) return;
    }
  }

 private:
  uint32_t valueIn(const Page& page, uint32_t key) const {
    const uint32_t step =
        page.steps < narrowCount
            ? narrowTemplates[page.steps * kKeysAPage + key % kKeysAPage]
            : wideTemplates[(page.steps - narrowCount) * kKeysAPage + key % kKeysAPage];
    return step == 0 ? 0 : page.base + step;
  }

  template <class Take>
  bool takePage(const Page& page, uint32_t prefix, Take take) const {
    for (uint32_t i = 0; i < kKeysAPage; ++i) {
      const uint32_t key = prefix * kKeysAPage + i;
      const uint32_t value = valueIn(page, key);
      if (value != 0 && !take(key, value)) return false;
    }
    return true;
  }

  uint32_t pageOf(uint32_t key) const {
    const uint32_t place = key / (kKeysAPage * kPagesABlock);
    if (place >= directoryLength) return 0;
    return blocks[directory[place] * kPagesABlock + key / kKeysAPage % kPagesABlock];
  }

  Page pageInRuns(uint32_t keyPrefix) const {
    const Run* const behind =
        std::upper_bound(runs, runs + runCount, keyPrefix,
                         [](uint32_t prefix, const Run& run) { return prefix < run.firstPrefix; });
    if (behind == runs) return kEmptyPage;
    const Run& run = behind[-1];
    const uint32_t distance = keyPrefix - run.firstPrefix;
    if (distance % run.distance != 0) return kEmptyPage;
    const uint32_t place = distance / run.distance;
    return place < run.count ? run.page(place) : kEmptyPage;
  }
};

}  // namespace ksv
