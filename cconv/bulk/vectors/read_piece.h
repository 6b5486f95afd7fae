// Characters that have been read, but not put out yet.
#pragma once

#include "cconv/bulk/vectors/window.h"

namespace ksv::vector_runs::by_windows {
namespace {

struct ReadPiece {
  static constexpr uint32_t kMost = 256;

  uint16_t values[kMost + kBlock + kWindow];
  uint32_t count = 0;

  // Puts all of them out by their entries; false where one cannot be.
  template <bool kDesignates, typename EntryOf>
  KSV_IN_LOOP bool putAll(const RunTables& run, BulkPosition& at, EntryOf entryOf) const {
    Window all = ~(Window{});
    uint32_t i = 0;
    for (; i + 4 <= count; i += 4) {
      const Window entries = fourOf(entryOf(values[i]), entryOf(values[i + 1]),
                                    entryOf(values[i + 2]), entryOf(values[i + 3]));
      all &= entries;
      if (!putFour<kDesignates>(run, at, entries)) return false;
    }
    ShortEntry rest = kIsShortEntry;
    for (; i < count; ++i) {
      const ShortEntry entry = entryOf(values[i]);
      rest &= entry;
      if (!putOne<kDesignates>(run, at, entry)) return false;
    }
    return wereThere(all) && rest != 0;
  }
};

}  // namespace
}  // namespace ksv::vector_runs::by_windows
