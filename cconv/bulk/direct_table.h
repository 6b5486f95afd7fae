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

// Bytes 0 to 5 of an entry in memory are the output; its length, the units that it
// counts for, and whether it is a line end stand in the 16 bits above. An output that
// begins with an escape sequence counts for one unit; the length of that sequence
// stands in place of the units, and beside it the group that it designates.

using Entry = uint64_t;
constexpr Entry kNoEntry = 0;
constexpr int32_t kLongestOutput = 6;
constexpr int32_t kMostUnits = 63;
// The input of an entry, an escape sequence in front included.
constexpr size_t kLongestCode = 8;
constexpr Entry kCarriageReturn = Entry{1} << 62;
constexpr Entry kLineFeed = Entry{1} << 63;
constexpr Entry kLineEnd = kCarriageReturn | kLineFeed;

inline Entry makeEntry(const uint8_t* output, int32_t length, int32_t units) {
  Entry entry = 0;
  for (int32_t i = 0; i < length; ++i) entry |= Entry{output[i]} << (8 * i);
  return entry | static_cast<Entry>(length) << 48 | static_cast<Entry>(units) << 52;
}
constexpr uint32_t outputLength(Entry entry) { return entry >> 48 & 0xF; }
constexpr uint32_t unitCount(Entry entry) { return entry >> 52 & 0x3F; }

// The groups that escape sequences designate, counted from the one before the first.
constexpr uint32_t kBeforeDesignatedGroups = 2000;
constexpr uint32_t kMostDesignatedGroup = 12;
constexpr uint32_t designationIndex(uint32_t group) {
  return group == 0 ? 0 : group - kBeforeDesignatedGroups;
}

// Of an entry with an escape sequence.
constexpr Entry designatingEntry(Entry entry, uint32_t escapeLength, uint32_t group) {
  return (entry & ~(Entry{0x3FF} << 52)) | Entry{escapeLength} << 52 |
         Entry{designationIndex(group)} << 58;
}
constexpr uint32_t designatedGroupAt(uint32_t index) { return kBeforeDesignatedGroups + index; }
constexpr uint32_t designatedGroupOf(Entry entry) { return designatedGroupAt(entry >> 58 & 0xF); }
constexpr uint32_t escapeLengthOf(Entry entry) { return entry >> 52 & 0x3F; }
constexpr Entry withoutDesignation(Entry entry) {
  const uint32_t escapeLength = escapeLengthOf(entry);
  const Entry bytes = (entry & 0xFFFFFFFFFFFF) >> (8 * escapeLength);
  return (entry & kLineEnd) | Entry{1} << 52 |
         static_cast<Entry>(outputLength(entry) - escapeLength) << 48 | bytes;
}

inline void storeBytes(uint8_t* output, Entry entry) {
  // Compiles to one store on a little-endian machine.
  uint8_t bytes[8];
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<uint8_t>(entry >> (8 * i));
  std::memcpy(output, bytes, sizeof bytes);
}

// Short entries hold up to three bytes of output that count for one unit, in their
// lower 24 bits; the length stands above them, and above that the group that they need
// designated, where a table holds entries of several groups.

using ShortEntry = uint32_t;
constexpr ShortEntry kNoShortEntry = 0;
constexpr ShortEntry kIsShortEntry = 1u << 31;

constexpr ShortEntry shortEntryOf(Entry entry) {
  const uint32_t length = outputLength(entry);
  const bool isShort = length >= 1 && length <= 3 && unitCount(entry) == 1;
  if (!isShort || (entry & kLineEnd) != 0) return kNoShortEntry;
  return kIsShortEntry | length << 24 | static_cast<uint32_t>(entry & 0xFFFFFF);
}
constexpr int kShortGroupShift = 26;
constexpr int kMostShortGroup = 0xF;

// The short entry of an entry with an escape sequence.
constexpr ShortEntry shortEntryWithGroup(Entry entry) {
  const ShortEntry bare = shortEntryOf(withoutDesignation(entry));
  if (bare == kNoShortEntry) return kNoShortEntry;
  return bare | designationIndex(designatedGroupOf(entry)) << kShortGroupShift;
}

constexpr uint32_t shortLength(ShortEntry entry) { return entry >> 24 & 0x3; }

// Puts out four bytes, of which those behind the length mean nothing.
inline void storeShort(uint8_t* output, ShortEntry entry) {
  uint8_t bytes[4];
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(entry >> (8 * i));
  std::memcpy(output, bytes, sizeof bytes);
}

// Lets the step-by-step engine convert one character, given as its input bytes, in
// a record of its own with nothing pending. kNoEntry when the answer is not "one
// character, written", and when it may change as tables are loaded. Where line ends
// are converted the entry tells them, since what one writes depends on the one before.
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
