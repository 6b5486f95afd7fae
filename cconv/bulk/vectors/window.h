// Windows of sixteen bytes, and rows of them: what runs on processors without AVX-512 are made
// of. All headers of them are compiled with the instructions of the file that includes them, which
// says before how many windows a row has (kWindows), and includes in front of them what they need
// from elsewhere.
#pragma once

namespace ksv::vector_runs::by_windows {
namespace {

constexpr uint32_t kWindow = 16;  // bytes
constexpr uint32_t kRow = kWindow * kWindows;
constexpr uint32_t kBlock = 64;
constexpr uint32_t kRows = kBlock / kRow;
// Characters for which there must be room where a block is taken, and what is stored behind it.
constexpr uint32_t kLeastWanted = 72;

using Window = uint8_t __attribute__((vector_size(kWindow)));
using FourValues = uint32_t __attribute__((vector_size(kWindow)));
using TwoHalves = uint64_t __attribute__((vector_size(kWindow)));
using Bytes = uint8_t __attribute__((vector_size(kRow)));
using SignedBytes = int8_t __attribute__((vector_size(kRow)));
using Units = uint16_t __attribute__((vector_size(kRow)));

// What there are no operators for:
// windows and rows in memory, and sixteen bytes for each window of a row;
Window windowAt(const void* bytes);
void storeWindow(uint8_t* output, Window bytes);
Window halfWindowAt(const uint8_t* bytes);
void storeHalf(uint8_t* output, Window bytes);
Bytes rowAt(const uint8_t* bytes);
void storeRow(uint8_t* output, Bytes bytes);
Bytes repeated(const uint8_t (&bytes)[kWindow]);
// bytes by their places in a window, zeroes where a place has its upper bit;
Window shuffledWindow(Window bytes, Window places);
Bytes shuffled(Bytes bytes, Bytes places);
// the upper bit of each byte;
uint32_t signs(Bytes bytes);
uint64_t signsOfBlock(const Bytes (&rows)[kRows]);
// of each byte by that bit;
Bytes chosen(Bytes signs, Bytes where, Bytes otherwise);
// a row of units from half as many bytes, a window of a row, the lower bytes of the units of two
// rows in whatever order, and the bytes of two windows by turns;
Units widened(const uint8_t* bytes);
template <uint32_t kWhich>
Window windowOf(Bytes row);
Bytes lowerBytes(Units first, Units second);
Window zippedLow(Window first, Window second);
Window zippedHigh(Window first, Window second);
// four values, and the lengths of four short entries as an index: the lower bits of all, and the
// upper ones above them;
Window fourOf(uint32_t first, uint32_t second, uint32_t third, uint32_t fourth);
uint32_t lengthsOfFour(Window entries);
// what the upper half of the bytes, 0x80 to 0xFF, stands for: zero for the lower half.
class UpperHalf {
 public:
  KSV_IN_LOOP explicit UpperHalf(const uint8_t (&meanings)[128]) : meanings_(meanings) {}

  Bytes of(Bytes bytes) const;

 private:
  const uint8_t (&meanings_)[128];
};

// The same vector of another kind. The library's own cast is compiled for every processor.
template <typename To, typename From>
KSV_IN_LOOP To as(From vector) {
  return (To)vector;
}

KSV_IN_LOOP Units unitsOf(Bytes bytes) { return as<Units>(bytes); }
KSV_IN_LOOP Bytes bytesOf(Units units) { return as<Bytes>(units); }

// A row of zeroes.
KSV_IN_LOOP Bytes noBytes() { return Bytes{}; }

// The halves of each byte.
KSV_IN_LOOP Bytes lowerHalves(Bytes bytes) { return bytes & 0x0F; }
KSV_IN_LOOP Bytes upperHalves(Bytes bytes) { return bytesOf(unitsOf(bytes) >> 4) & 0x0F; }

// Asks of each byte of a block, and tells the answers by its bits.
template <typename Question>
KSV_IN_LOOP uint64_t whereInBlock(const uint8_t* input, const Question& question) {
  Bytes answers[kRows];
  for (uint32_t i = 0; i < kRows; ++i) answers[i] = question(rowAt(input + i * kRow));
  return signsOfBlock(answers);
}

struct IsHigh {
  KSV_IN_LOOP Bytes operator()(Bytes bytes) const { return bytes; }
};

struct IsStop {
  const AsciiStops& stops;

  KSV_IN_LOOP Bytes operator()(Bytes bytes) const {
    Bytes found = noBytes();
    if (stops.lineEnds) found |= as<Bytes>(bytes == '\r') | as<Bytes>(bytes == '\n');
    if (stops.escape) found |= as<Bytes>(bytes == 0x1B);
    if (stops.del) found |= as<Bytes>(bytes == 0x7F);
    return found;
  }
};

KSV_IN_LOOP uint64_t stopsInBlock(const RunTables& run, const uint8_t* input) {
  return run.stops.any() ? whereInBlock(input, IsStop{run.stops}) : 0;
}

// Whether a byte is outside a set of those above ASCII.
class IsOutside {
 public:
  KSV_IN_LOOP explicit IsOutside(const SingleCodes::UpperSet& set) : rows_(repeated(set.rows)) {}

  KSV_IN_LOOP Bytes operator()(Bytes bytes) const {
    static constexpr uint8_t kRowBits[kWindow] = {0, 0, 0, 0, 0,  0,  0,  0,
                                                  1, 2, 4, 8, 16, 32, 64, 128};
    return as<Bytes>((shuffled(rows_, lowerHalves(bytes)) &
                      shuffled(repeated(kRowBits), upperHalves(bytes))) == 0);
  }

 private:
  const Bytes rows_;
};

KSV_IN_LOOP uint32_t countOf(uint64_t bits) { return static_cast<uint32_t>(std::popcount(bits)); }

// Writes a block of ASCII.
template <AsciiOutput kAscii>
KSV_IN_LOOP void writeAsciiBlock(uint8_t* output, const uint8_t* input) {
  if constexpr (kAscii == AsciiOutput::kBytes) {
    for (uint32_t i = 0; i < kBlock; i += kRow) storeRow(output + i, rowAt(input + i));
  } else {
    for (uint32_t i = 0; i < kBlock; i += kRow / 2) {
      const Units units = widened(input + i);
      storeRow(output + 2 * i, bytesOf(kAscii == AsciiOutput::kBigUnits ? units << 8 : units));
    }
  }
}

// Takes the ASCII that a block begins with, by where it has something else, if it is much.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takeLeadingAscii(BulkPosition& at, uint64_t others) {
  constexpr uint32_t kLeast = 16;
  const auto leading = static_cast<uint32_t>(std::countr_zero(others));
  if (leading < kLeast) return false;
  writeAsciiBlock<kAscii>(at.output, at.input);
  at.output += leading * kAsciiWidth<kAscii>;
  at.advance(leading, leading);
  return true;
}

// The entries of four indexes. They are loaded one by one: to gather them is slower on many
// processors, and very much so where they are guarded against leaks of what was gathered.
KSV_IN_LOOP Window entriesAt(const RunTables& run, Window indexes) {
  const auto halves = as<TwoHalves>(indexes);
  const uint64_t low = halves[0];
  const uint64_t high = halves[1];
  return fourOf(run.at(static_cast<uint32_t>(low)), run.at(static_cast<uint32_t>(low >> 32)),
                run.at(static_cast<uint32_t>(high)), run.at(static_cast<uint32_t>(high >> 32)));
}

KSV_IN_LOOP void putFourPlainly(BulkPosition& at, Window entries) {
  const uint32_t lengths = lengthsOfFour(entries);
  storeWindow(at.output, shuffledWindow(entries, windowAt(kPushedFour.places[lengths])));
  at.output += kPushedFour.bytes[lengths];
}

// Puts out an entry, behind the escape sequence of its group where that is not the current one.
// False where the run has not got the sequence: the group has come with another thread, since it
// was copied.
KSV_IN_LOOP bool putDesignating(const RunTables& run, BulkPosition& at, ShortEntry entry) {
  const uint32_t group = entry >> kShortGroupShift & kMostShortGroup;
  const bool changes = designatedGroupAt(group) != at.designatedGroup;
  const uint32_t length = run.designations->lengths[group];
  // Whether it changes cannot be foreseen, so the sequence is put out in any case.
  storeShort(at.output, run.designations->escapes[group]);
  at.output += changes ? length : 0;
  at.designatedGroup = designatedGroupAt(group);
  at.take(entry);
  return !changes || length != 0;
}

template <bool kDesignates>
KSV_IN_LOOP bool putOne(const RunTables& run, BulkPosition& at, ShortEntry entry) {
  if constexpr (kDesignates) return putDesignating(run, at, entry);
  at.take(entry);
  return true;
}

// Takes the character of an entry, if that is there.
template <bool kDesignates>
KSV_IN_LOOP bool takeKnown(const RunTables& run, BulkPosition& at, ShortEntry entry,
                           uint32_t bytes) {
  if (entry == kNoShortEntry || !putOne<kDesignates>(run, at, entry)) return false;
  at.advance(bytes, 1);
  return true;
}

// Puts out four entries, whether they are there or not. False where an escape sequence is not.
template <bool kDesignates>
KSV_IN_LOOP bool putFour(const RunTables& run, BulkPosition& at, Window entries) {
  if constexpr (kDesignates) {
    const auto values = as<FourValues>(entries);
    const auto others = as<TwoHalves>((values >> kShortGroupShift & kMostShortGroup) ^
                                      designationIndex(at.designatedGroup));
    if ((others[0] | others[1]) != 0) {
      bool areKnown = true;
      for (uint32_t i = 0; i < 4; ++i) areKnown &= putDesignating(run, at, values[i]);
      return areKnown;
    }
  }
  putFourPlainly(at, entries);
  return true;
}

// Whether ASCII is written as it is where the conversion stands.
template <bool kDesignates>
KSV_IN_LOOP bool mayTakeAscii(const RunTables& run, const BulkPosition& at) {
  return !kDesignates || at.designatedGroup == run.designations->asciiGroup;
}

// Whether four entries, of which all bits are kept that all have, were there.
KSV_IN_LOOP bool wereThere(Window all) {
  const auto halves = as<TwoHalves>(all);
  constexpr uint64_t kThere = uint64_t{kIsShortEntry} << 32 | kIsShortEntry;
  return (halves[0] & halves[1] & kThere) == kThere;
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
