// Direct tables: from the code of a character straight to its output bytes. They
// are derived from the step-by-step engine, a page at a time, and shared by all
// converters of the process.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ksv_cconv.h"

namespace ksv {

// Bytes 0 to 5 of an entry in memory are the output; its length and the units that
// it counts for stand in the 16 bits above.

using Entry = uint64_t;
constexpr Entry kNoEntry = 0;
constexpr int32_t kLongestOutput = 6;

inline Entry makeEntry(const uint8_t* output, int32_t length, int32_t units) {
  Entry entry = 0;
  for (int32_t i = 0; i < length; ++i) entry |= Entry{output[i]} << (8 * i);
  return entry | static_cast<Entry>(length) << 48 | static_cast<Entry>(units) << 52;
}
constexpr uint32_t outputLength(Entry entry) { return entry >> 48 & 0xF; }
constexpr uint32_t unitCount(Entry entry) { return static_cast<uint32_t>(entry >> 52); }

inline void storeBytes(uint8_t* output, Entry entry) {
  // Compiles to one store on a little-endian machine.
  uint8_t bytes[8];
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<uint8_t>(entry >> (8 * i));
  std::memcpy(output, bytes, sizeof bytes);
}

// Lets the step-by-step engine convert one character, given as its input bytes, in
// a record of its own with nothing pending. kNoEntry when the answer is not "one
// character, written", when it may change as tables are loaded, and for a line end
// that is to be rewritten.
Entry askEngine(const ConverterRecord& record, const uint8_t* input, int32_t length);

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

  // Makes the page that a slot lacks. Null when there is no memory, or the tables
  // are as large as they may get. makeBytes writes the input bytes of an entry and
  // returns their number, 0 for what has no entry.
  template <typename MakeBytes>
  const Page* makePage(const ConverterRecord& record, uint32_t index, MakeBytes makeBytes);

 private:
  // A page that counts against the bound; null when there is none to be had.
  static Page* newPage();
  static void deletePage(const Page* page);
  // Enters the page, unless another thread was first; gives the one that is there.
  const Page* publish(uint32_t index, const Page* made);

  std::vector<Slot> pages_;
};

template <typename MakeBytes>
const DirectTable::Page* DirectTable::makePage(const ConverterRecord& record, uint32_t index,
                                               MakeBytes makeBytes) {
  Page* made = newPage();
  if (made == nullptr) return nullptr;
  for (uint32_t slot = 0; slot < made->size(); ++slot) {
    uint8_t bytes[4];
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
