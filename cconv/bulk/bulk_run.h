// What runs of the bulk path over many characters are made of.
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cconv/bulk/position.h"
#include "cconv/bulk/short_table.h"
#include "common/byte_blocks.h"

namespace ksv {

// How all of ASCII is written, line ends left out where they are converted.
enum class AsciiOutput : uint8_t {
  kOther,
  kBytes,        // as it is
  kLittleUnits,  // as units of two bytes
  kBigUnits
};

constexpr bool writesUnits(AsciiOutput ascii) {
  return ascii == AsciiOutput::kLittleUnits || ascii == AsciiOutput::kBigUnits;
}

// What runs over ASCII leave to others, or to the engine.
struct AsciiStops {
  bool lineEnds = false;
  bool escape = false;
  bool del = false;

  bool any() const { return lineEnds || escape || del; }
};

constexpr bool isStop(const AsciiStops& stops, uint8_t c) {
  return (stops.lineEnds && (c == '\r' || c == '\n')) || (stops.escape && c == 0x1B) ||
         (stops.del && c == 0x7F);
}

// What codes below 0x100 are by themselves, for runs that take many at once: single
// bytes, or the first values of Unicode.
struct SingleCodes {
  static constexpr uint8_t kNone = 1;         // no code, or the first byte of a longer one
  static constexpr uint8_t kIsWide = 2;       // not written as below
  static constexpr uint8_t kHasTwoBytes = 4;  // written as two bytes, not one

  alignas(64) uint8_t classes[256];
  // What the upper half is written as.
  alignas(64) uint8_t first[128];
  alignas(64) uint8_t second[128];

  // A set of the upper half: a bit for each upper half of a byte, by the lower one.
  struct UpperSet {
    alignas(16) uint8_t rows[16];
  };
  UpperSet upperNone;
  UpperSet upperNoneOrWide;
  UpperSet upperTwoBytes;
  UpperSet upperOther;  // than written as one byte
  // Whether those of the upper half that are not wide are all written as UTF-8 writes the values
  // 0x80 to 0xFF, or as the byte itself: then there is nothing to look up.
  bool upperAsUtf8;
  bool upperAsItself;
  // Whether all of the upper half is written as units, the values 0x80 to 0xFF.
  bool upperAsUnits;

  // When the classes and what they are written as are known.
  void describeUpper(AsciiOutput ascii) {
    upperNone = upperOf(kNone);
    upperNoneOrWide = upperOf(kNone | kIsWide);
    upperTwoBytes = upperOf(kHasTwoBytes);
    upperOther = upperOf(kNone | kIsWide | kHasTwoBytes);
    const bool isBig = ascii == AsciiOutput::kBigUnits;
    upperAsUtf8 = upperAsItself = true;
    upperAsUnits = writesUnits(ascii);
    for (uint32_t i = 0; i < 128; ++i) {
      const uint8_t kind = classes[0x80 + i];
      upperAsUnits = upperAsUnits && kind == kHasTwoBytes &&
                     (isBig ? second : first)[i] == 0x80 + i && (isBig ? first : second)[i] == 0;
      if ((kind & (kNone | kIsWide)) != 0) continue;
      const bool hasTwo = kind == kHasTwoBytes;
      upperAsUtf8 =
          upperAsUtf8 && hasTwo && first[i] == 0xC2 + (i >> 6) && second[i] == (0x80 | (i & 0x3F));
      upperAsItself = upperAsItself && !hasTwo && first[i] == 0x80 + i;
    }
  }

 private:
  UpperSet upperOf(uint8_t wanted) const {
    UpperSet set = {};
    for (uint32_t byte = 0x80; byte < 0x100; ++byte) {
      if ((classes[byte] & wanted) != 0)
        set.rows[byte & 0xF] |= static_cast<uint8_t>(1u << (byte >> 4 & 7));
    }
    return set;
  }
};

// The pages of 256 values, of which those are plain that are written as they are, in
// units of two bytes, but for the marks that may compose.
struct PlainPages {
  static constexpr uint8_t kIsPlain = 1;
  static constexpr uint8_t kIsNot = 2;

  alignas(64) uint8_t classes[256];  // 0 where nobody has looked yet
};

// The same, while threads look at more and more pages. Each class says all by itself: a
// copy that lacks one takes its page for one that nobody has looked at.
class SharedPages {
 public:
  uint8_t at(uint32_t page) const {
    return static_cast<uint8_t>(words_[page / 8].load(std::memory_order_relaxed) >> page % 8 * 8);
  }
  void add(uint32_t page, uint8_t pageClass) {
    words_[page / 8].fetch_or(uint64_t{pageClass} << page % 8 * 8, std::memory_order_relaxed);
  }
  void copyTo(PlainPages& pages) const {
    for (uint32_t page = 0; page < 256; page += 8) {
      const uint64_t eight = words_[page / 8].load(std::memory_order_relaxed);
      for (uint32_t i = 0; i < 8; ++i)
        pages.classes[page + i] = static_cast<uint8_t>(eight >> 8 * i);
    }
  }

 private:
  std::atomic<uint64_t> words_[256 / 8];
};

// The escape sequences of the groups that an output designates, for runs over
// characters of several groups.
struct Designations {
  static constexpr size_t kGroups = 16;
  static constexpr uint32_t kLongestEscape = 4;

  // By the index of the group. The length is 0 where the sequence is not known.
  alignas(64) uint32_t escapes[kGroups];
  alignas(64) uint32_t lengths[kGroups];
  uint32_t asciiGroup;  // while which is designated, ASCII is written as it is
};

// The same, while threads find more and more groups. Each sequence says all by itself. A
// copy may lack those of groups that short entries name which the run reads later: such an
// entry is unknown to the run, which leaves it to those who read the sequence with it.
class SharedDesignations {
 public:
  explicit SharedDesignations(uint32_t asciiGroup) : asciiGroup_(asciiGroup) {}

  // At least one byte.
  void add(uint32_t index, uint32_t escape, uint32_t length) {
    sequences_[index].store(uint64_t{length} << 32 | escape, std::memory_order_relaxed);
  }
  void copyTo(Designations& designations) const {
    for (size_t index = 0; index < Designations::kGroups; ++index) {
      const uint64_t sequence = sequences_[index].load(std::memory_order_relaxed);
      designations.escapes[index] = static_cast<uint32_t>(sequence);
      designations.lengths[index] = static_cast<uint32_t>(sequence >> 32);
    }
    designations.asciiGroup = asciiGroup_;
  }
  // Before other threads know of it.
  void setAsciiGroup(uint32_t group) { asciiGroup_ = group; }

 private:
  std::atomic<uint64_t> sequences_[Designations::kGroups] = {};
  uint32_t asciiGroup_;
};

// Line ends that are converted, of a lane.
struct LineEndEntries {
  Entry carriageReturn = kNoEntry;
  Entry lineFeed = kNoEntry;

  bool areThere() const { return carriageReturn != kNoEntry && lineFeed != kNoEntry; }
};

// What the runs of one call have in common.
struct RunTables {
  const ShortTable::Slot* slots;
  AsciiStops stops;
  const SingleCodes* singles;
  const PlainPages* pages = nullptr;           // where units are written
  const Designations* designations = nullptr;  // where escape sequences are
  const LineEndEntries* lineEnds = nullptr;    // where they are converted

  ShortEntry at(uint32_t index) const { return slots[index].load(std::memory_order_relaxed); }
  bool hasSingles(uint8_t byte) const {
    return byte >= 0x80 && at(ShortTable::kSingles + byte) != kNoShortEntry;
  }
};

// Takes characters that have short entries while there are any, until so many have been
// taken since the call began.
using RunFunction = void (*)(const RunTables& run, BulkPosition& position, uint32_t wanted);

// Takes the character of a short entry, read from so many bytes.
KSV_IN_LOOP bool takeOne(const RunTables& run, BulkPosition& at, uint32_t index, uint32_t bytes) {
  const ShortEntry entry = run.at(index);
  if (entry == kNoShortEntry) return false;
  at.take(entry);
  at.advance(bytes, 1);
  return true;
}

// Takes four characters in a row, read from so many bytes together, if all have short
// entries.
KSV_IN_LOOP bool takeFour(const RunTables& run, BulkPosition& at, const uint32_t (&indexes)[4],
                          uint32_t bytes) {
  const ShortEntry first = run.at(indexes[0]);
  const ShortEntry second = run.at(indexes[1]);
  const ShortEntry third = run.at(indexes[2]);
  const ShortEntry fourth = run.at(indexes[3]);
  if ((first & second & third & fourth & kIsShortEntry) == 0) return false;
  at.take(first);
  at.take(second);
  at.take(third);
  at.take(fourth);
  at.advance(bytes, 4);
  return true;
}

// Takes the character there, read from so many bytes, if it is a line end that is converted.
template <bool kDesignates>
KSV_IN_LOOP bool takeLineEnd(const RunTables& run, BulkPosition& at, uint32_t value,
                             uint32_t bytes) {
  if (run.lineEnds == nullptr || (value != '\r' && value != '\n')) return false;
  at.takeWhole(value == '\r' ? run.lineEnds->carriageReturn : run.lineEnds->lineFeed, bytes,
               kDesignates);
  return true;
}

constexpr bool kIsLittleEndian = std::endian::native == std::endian::little;

// How many of eight bytes stand before the first that is not ASCII.
constexpr uint32_t leadingAscii(uint64_t eight) {
  return static_cast<uint32_t>(bytesBeforeHighBit(eight & kHighBits));
}

// Of eight ASCII bytes: one more than the last of them is the high bit.
constexpr bool hasDelete(uint64_t eight) { return ((eight + blockOf(1)) & kHighBits) != 0; }

constexpr bool hasStop(uint64_t eight, const AsciiStops& stops) {
  return (stops.lineEnds && (hasByte(eight, '\r') || hasByte(eight, '\n'))) ||
         (stops.escape && hasByte(eight, 0x1B)) || (stops.del && hasDelete(eight));
}

constexpr uint32_t kAsciiBlock = 64;

KSV_IN_LOOP bool isAsciiBlock(const uint8_t* input, const AsciiStops& stops) {
  uint64_t all = 0;
  uint64_t allAndOne = 0;
  for (uint32_t i = 0; i < kAsciiBlock; i += 8) {
    const uint64_t eight = blockAt(input + i);
    all |= eight;
    allAndOne |= eight + blockOf(1);
  }
  if ((all & kHighBits) != 0 || (stops.del && (allAndOne & kHighBits) != 0)) return false;
  if (!stops.lineEnds && !stops.escape) return true;
  for (uint32_t i = 0; i < kAsciiBlock; i += 8) {
    if (hasStop(blockAt(input + i), stops)) return false;
  }
  return true;
}

// Writes count ASCII bytes.
template <AsciiOutput kAscii, uint32_t kCount>
KSV_IN_LOOP void writeAscii(uint8_t* output, const uint8_t* input) {
  if constexpr (kAscii == AsciiOutput::kBytes) {
    std::memcpy(output, input, kCount);
  } else {
    for (uint32_t i = 0; i < kCount; ++i) {
      output[2 * i + (kAscii == AsciiOutput::kBigUnits ? 1 : 0)] = input[i];
      output[2 * i + (kAscii == AsciiOutput::kBigUnits ? 0 : 1)] = 0;
    }
  }
}

template <AsciiOutput kAscii>
constexpr uint32_t kAsciiWidth = kAscii == AsciiOutput::kBytes ? 1 : 2;

// Takes leading ASCII bytes, 1 to 8, and whole blocks of them where there are; the
// number taken of the first eight. None before what it has to stop at.
template <AsciiOutput kAscii>
KSV_IN_LOOP uint32_t takeAscii(const RunTables& run, BulkPosition& at, uint32_t wanted,
                               uint32_t leading) {
  if (leading == 8) {
    uint32_t blocks = 0;
    while (wanted - at.characters >= kAsciiBlock && isAsciiBlock(at.input, run.stops)) {
      writeAscii<kAscii, kAsciiBlock>(at.output, at.input);
      at.output += kAsciiBlock * kAsciiWidth<kAscii>;
      at.advance(kAsciiBlock, kAsciiBlock);
      ++blocks;
    }
    if (blocks > 0) return 8;
  }
  // Behind the leading ones it may stop in vain, which is no harm.
  if (run.stops.any() && hasStop(blockAt(at.input) & ~kHighBits, run.stops)) return 0;
  writeAscii<kAscii, 8>(at.output, at.input);
  at.output += leading * kAsciiWidth<kAscii>;
  at.advance(leading, leading);
  return leading;
}

// The same for eight or more units of two bytes, written as bytes.
template <bool kBigEndian>
KSV_IN_LOOP bool takeAsciiUnits(const RunTables& run, BulkPosition& at, uint32_t wanted) {
  constexpr uint32_t kUnits = 8;
  constexpr bool kHighByteFirst = kBigEndian == kIsLittleEndian;
  constexpr uint64_t kNotAscii = kHighByteFirst ? 0x80FF80FF80FF80FF : 0xFF80FF80FF80FF80;
  bool any = false;
  while (wanted - at.characters >= kUnits) {
    if (((blockAt(at.input) | blockAt(at.input + 8)) & kNotAscii) != 0) break;
    uint8_t bytes[kUnits];
    for (uint32_t i = 0; i < kUnits; ++i) bytes[i] = at.input[2 * i + (kBigEndian ? 1 : 0)];
    if (run.stops.any() && hasStop(blockAt(bytes), run.stops)) break;
    std::memcpy(at.output, bytes, kUnits);
    at.output += kUnits;
    at.advance(2 * kUnits, kUnits);
    any = true;
  }
  return any;
}

}  // namespace ksv
