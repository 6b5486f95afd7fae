// A code table in the packed form of the charset directory (packed_charsets.h), read where it
// stands. charsets/pack.py, which makes it, explains its tree.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv {

// Keys below this find their page through a directory, all others through a hash of what
// stands above their low four bits. They are the codes of Unicode, and of all sets of two bytes.
constexpr uint32_t kDirectPageKeys = 0x110000;

struct PageSlot {
  uint32_t keyPrefix;
  uint32_t page;  // 0: the slot is free
};

// The slot that holds keyPrefix, or the free slot where it belongs. The number of slots is a
// power of two, and one of them is free, so the walk ends.
inline size_t pageSlotOf(const PageSlot* slots, size_t count, uint32_t keyPrefix) {
  const size_t mask = count - 1;
  size_t slot = (keyPrefix * 0x9E3779B1u) >> 7 & mask;
  while (slots[slot].page != 0 && slots[slot].keyPrefix != keyPrefix) slot = (slot + 1) & mask;
  return slot;
}

// All numbers in it have been checked: nothing that find() reads lies outside.
struct PackedTable {
  struct Page {
    uint32_t base;
    uint32_t steps;  // the number of its template
  };

  static constexpr uint32_t kKeysAPage = 16;
  static constexpr uint32_t kPagesABlock = 64;

  const uint32_t* directory = nullptr;  // a block for each 1,024 keys
  uint32_t directoryLength = 0;
  uint32_t slotCount = 0;
  const PageSlot* slots = nullptr;
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
    if (key >= kDirectPageKeys) return hashedPage(key / kKeysAPage);
    const uint32_t place = key / (kKeysAPage * kPagesABlock);
    if (place >= directoryLength) return 0;
    return blocks[directory[place] * kPagesABlock + key / kKeysAPage % kPagesABlock];
  }

  uint32_t hashedPage(uint32_t keyPrefix) const {
    return slotCount == 0 ? 0 : slots[pageSlotOf(slots, slotCount, keyPrefix)].page;
  }
};

}  // namespace ksv
