// Direct tables: from the code of a character straight to its output bytes. They
// are derived from the step-by-step engine, a page at a time, and shared by all
// converters of the process.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "cconv/bulk/engine_answer.h"
#include "cconv/bulk/entries.h"
#include "ksv_cconv.h"

namespace ksv {

// Pages of 256 entries, each made when it is first needed.
class DirectTable {
 public:
  using Page = std::array<Entry, 256>;

  explicit DirectTable(size_t pages) : pages_(pages) {}
  ~DirectTable();
  DirectTable(const DirectTable&) = delete;
  DirectTable& operator=(const DirectTable&) = delete;

  using Slot = std::atomic<const Page*>;
  const Slot* slots() const { return pages_.data(); }

  // How often a page found no memory. What was learned from the table meanwhile may be less
  // than there is.
  uint32_t timesWithoutMemory() const {
    return timesWithoutMemory_.load(std::memory_order_relaxed);
  }

  // Makes the page that a slot lacks. Null when there is no memory, or the tables
  // are as large as they may get. makeBytes writes the input bytes of an entry and
  // returns their number, 0 for what has no entry.
  template <typename MakeBytes>
  const Page* makePage(const ConverterRecord& record, uint32_t index, MakeBytes makeBytes);

 private:
  // A page that counts against the bound; null when there is none to be had.
  Page* newPage();
  static void deletePage(const Page* page);
  // Enters the page, which nobody changes any more, unless another thread was first; gives
  // the one that is there.
  const Page* publish(uint32_t index, const Page* made);

  std::vector<Slot> pages_;
  std::atomic<uint32_t> timesWithoutMemory_ = 0;
};

template <typename MakeBytes>
const DirectTable::Page* DirectTable::makePage(const ConverterRecord& record, uint32_t index,
                                               MakeBytes makeBytes) {
  Page* made = newPage();
  if (made == nullptr) return nullptr;
  for (uint32_t slot = 0; slot < made->size(); ++slot) {
    uint8_t bytes[kLongestCode];
    const int32_t length = makeBytes(index << 8 | slot, bytes);
    if (length > 0) (*made)[slot] = askEngine(record, bytes, length);
  }
  return publish(index, made);
}

// The way to a table's entries for one run of the bulk path. It keeps the table's
// place in a variable of its own: the output that is written on the way could, for
// all the compiler knows, be the table itself.
class TableCursor {
 public:
  TableCursor(DirectTable& table, const ConverterRecord& record)
      : slots_(table.slots()), table_(table), record_(record) {}

  // Null when there is no page and none can be made.
  template <typename MakeBytes>
  const DirectTable::Page* page(uint32_t index, MakeBytes makeBytes) const {
    const DirectTable::Page* page = slots_[index].load(std::memory_order_acquire);
    return page != nullptr ? page : table_.makePage(record_, index, makeBytes);
  }

 private:
  const DirectTable::Slot* slots_;
  DirectTable& table_;
  const ConverterRecord& record_;
};

}  // namespace ksv
