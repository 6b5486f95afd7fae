// Charsets by name, for the calls that set a converter up.
//
// A name of at most 16 bytes is two numbers and a length, lowered and compared in a
// few operations. Longer names, and those that find no place, are left to the numbers
// of names.h, which tell every name. Names are found while others are entered.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cconv/limits.h"

namespace ksv {

struct LoadedCharset;

class CharsetNames {
 public:
  // By one thread at a time. The first charset that is entered under a name keeps it.
  void enter(std::string_view name, LoadedCharset* charset);
  // Without regard to the case of A to Z. Null when the name is not entered, which does
  // not say that no charset has it.
  LoadedCharset* find(std::string_view name) const;

 private:
  static constexpr size_t kSlots = limits::kSlotsOfQuickNames;

  struct Key {
    uint64_t first = 0;  // the first eight bytes, or as many as there are
    uint64_t last = 0;   // the last eight of a longer name, which may be some of the same
    size_t length = 0;

    bool operator==(const Key&) const = default;
  };
  struct Slot {
    Key key;
    std::atomic<LoadedCharset*> charset = nullptr;  // null: free; set behind the key
  };

  static Key keyOf(std::string_view name);
  static size_t hashOf(std::string_view name);

  std::array<Slot, kSlots> slots_;
  size_t count_ = 0;
};

}  // namespace ksv
