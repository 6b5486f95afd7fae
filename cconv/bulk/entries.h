// Entries: what the output of one character is, in one word.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

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
constexpr Entry kIsCarriageReturn = Entry{1} << 62;
constexpr Entry kIsLineFeed = Entry{1} << 63;
constexpr Entry kIsLineEnd = kIsCarriageReturn | kIsLineFeed;

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
  return (entry & kIsLineEnd) | Entry{1} << 52 |
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
  if (!isShort || (entry & kIsLineEnd) != 0) return kNoShortEntry;
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

}  // namespace ksv
