// The short entries of a lane.
#pragma once

#include <atomic>
#include <cstdint>

#include "cconv/bulk/entries.h"

namespace ksv {

// A table of short entries, filled as characters are found, in front of the pages:
// the whole answer for what most text consists of is then one load away. Each entry
// says all by itself, so threads need no order among them (publication.h): where an entry
// needs a group designated, it is up to its reader to know the group's escape sequence.
class ShortTable {
 public:
  // Indexes are the values of the Basic Multilingual Plane or byte pairs, and from
  // kSingles on single bytes.
  static constexpr uint32_t kSingles = 0x10000;
  static constexpr uint32_t kSize = kSingles + 0x100;
  static constexpr uint32_t kNoIndex = kSize;

  ShortTable();
  ~ShortTable();
  ShortTable(const ShortTable&) = delete;
  ShortTable& operator=(const ShortTable&) = delete;

  // False when there was no memory, or the tables are as many as they may get: then
  // there is nothing in it.
  bool isThere() const { return entries_ != nullptr; }
  // Of these two only the first may be over soon.
  bool hadNoMemory() const { return hadNoMemory_; }

  using Slot = std::atomic<ShortEntry>;
  const Slot* slots() const { return entries_; }
  void remember(uint32_t index, ShortEntry entry) {
    if (index < kSize && isThere()) entries_[index].store(entry, std::memory_order_relaxed);
  }

 private:
  Slot* entries_ = nullptr;
  bool hadNoMemory_ = false;
};

}  // namespace ksv
