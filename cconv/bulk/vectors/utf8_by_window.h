// Runs over UTF-8 by windows.
#pragma once

#include "cconv/bulk/vectors/read_piece.h"

namespace ksv::vector_runs::by_windows {
namespace {

struct IsContinuation {
  KSV_IN_LOOP Bytes operator()(Bytes bytes) const {
    return as<Bytes>(as<SignedBytes>(bytes) < -0x40);
  }
};

struct IsLeadOfThree {
  KSV_IN_LOOP Bytes operator()(Bytes bytes) const { return as<Bytes>((bytes & 0xF0) == 0xE0); }
};

// Which bytes of a block are what. A block may begin behind the first byte of a character, which
// belongs to the block before: so the next one can be begun with before this one is understood.
struct Utf8Block {
  uint64_t high;
  uint64_t leads;   // of two or three bytes
  uint64_t threes;  // leads of three
  uint64_t continuations;
  uint64_t bad;       // what is not part of a well-formed character of up to three bytes
  uint64_t expected;  // the places where continuations have to stand
  uint64_t expectedBehind;
  bool isWhole;  // and may be followed by the next block

  // expectedHere: continuations of a character of the block before.
  KSV_IN_LOOP Utf8Block(const uint8_t* input, uint64_t expectedHere) {
    Bytes others[kRows];
    for (uint32_t i = 0; i < kRows; ++i)
      others[i] = otherLeads(rowAt(input + i * kRow), rowAt(input + i * kRow + 1));
    high = whereInBlock(input, IsHigh());
    continuations = whereInBlock(input, IsContinuation());
    threes = whereInBlock(input, IsLeadOfThree());
    leads = high & ~continuations;
    expected = leads << 1 | threes << 2 | expectedHere;
    expectedBehind = leads >> 63 | threes >> 62;
    bad = signsOfBlock(others) | (expected ^ continuations);
    isWhole = bad == 0 && (expectedBehind & ~continuationsAt(input + kBlock)) == 0;
  }

  // How many bytes are whole characters.
  KSV_IN_LOOP uint32_t wholeBytes() const {
    if (isWhole && expectedBehind == 0) return kBlock;
    const uint64_t seen = (bad & (0 - bad)) - 1;  // all where there is none
    const bool isMissing = bad == 0 || (expected & bad & (0 - bad)) != 0;
    if (!isMissing) return static_cast<uint32_t>(std::countr_zero(bad));
    return kBlock - 1 - static_cast<uint32_t>(std::countl_zero((leads & seen) | 1));
  }

 private:
  KSV_IN_LOOP static uint64_t continuationsAt(const uint8_t* input) {
    return ((input[0] & 0xC0) == 0x80 ? 1 : 0) | ((input[1] & 0xC0) == 0x80 ? 2 : 0);
  }
  // The leads of four bytes and more, of more bytes than needed, and of surrogates.
  KSV_IN_LOOP static Bytes otherLeads(Bytes bytes, Bytes next) {
    const auto below = as<Bytes>(as<SignedBytes>(next) < -0x60);
    return as<Bytes>((bytes & 0xFE) == 0xC0) | as<Bytes>((bytes & 0xF0) == 0xF0) |
           (as<Bytes>(bytes == 0xE0) & below) | (as<Bytes>(bytes == 0xED) & ~below);
  }
};

// How many bytes are whole characters, in front of the first of the places.
KSV_IN_LOOP uint32_t wholeBytesBefore(uint64_t places, const Utf8Block& block) {
  return std::min(block.wholeBytes(), static_cast<uint32_t>(std::countr_zero(places)));
}

KSV_IN_LOOP uint64_t firstBits(uint32_t count) {
  return count < 64 ? (uint64_t{1} << count) - 1 : ~uint64_t{0};
}

// The values of the characters that begin at half a row of bytes; continuations
// stand for themselves.
KSV_IN_LOOP Units valuesAt(const uint8_t* input) {
  const Units lead = widened(input);
  const Units two = (lead & 0x1F) << 6 | (widened(input + 1) & 0x3F);
  const Units three = two << 6 | (widened(input + 2) & 0x3F);
  const auto isTwo = as<Units>(lead > 0xBF);
  const auto isThree = as<Units>(lead > 0xDF);
  return (isThree & three) | (~isThree & ((isTwo & two) | (~isTwo & lead)));
}

// The pages of a run that are plain, a bit each: a row for each upper half of a byte.
struct PlainBits {
  uint8_t low[kWindow] = {};
  uint8_t high[kWindow] = {};
};

KSV_IN_LOOP uint8_t plainBitsOf(const uint8_t* eightPages) {
  // The product has the lower bit of each byte among its upper eight.
  const uint64_t plain = blockAt(eightPages) & blockOf(PlainPages::kIsPlain);
  return static_cast<uint8_t>(plain * 0x0102040810204080 >> 56);
}

KSV_IN_LOOP PlainBits plainBits(const RunTables& run) {
  PlainBits bits;
  for (uint32_t row = 0; row < 16; ++row) {
    bits.low[row] = plainBitsOf(run.pages->classes + 16 * row);
    bits.high[row] = plainBitsOf(run.pages->classes + 16 * row + 8);
  }
  // The first page is not where there are stops; those blocks do not have.
  if (run.singles->upperAsUnits) bits.low[0] |= 1;
  return bits;
}

// Whether values are written as they are.
class PlainCheck {
 public:
  KSV_IN_LOOP explicit PlainCheck(const PlainBits& bits)
      : low_(repeated(bits.low)), high_(repeated(bits.high)) {}

  // The signs of pages that are not plain.
  KSV_IN_LOOP Bytes otherPages(Bytes pages) const {
    static constexpr uint8_t kBits[kWindow] = {1, 2, 4, 8, 16, 32, 64, 128,
                                               1, 2, 4, 8, 16, 32, 64, 128};
    const Bytes row = upperHalves(pages);
    const Bytes isUpper = bytesOf(unitsOf(pages) << 4);
    const Bytes bits = chosen(isUpper, shuffled(high_, row), shuffled(low_, row));
    return as<Bytes>((bits & shuffled(repeated(kBits), lowerHalves(pages))) == 0);
  }

  // Of values that may be marks, all of one and some others.
  KSV_IN_LOOP static Units mayBeMarks(Units values) {
    return as<Units>(values == 0x309A) | as<Units>((values & 0xFE00) == 0x0200);
  }
  KSV_IN_LOOP static Units areMarks(Units values) {
    Units found = unitsOf(noBytes());
    for (const StandaloneMark& mark : kStandaloneMarks)
      found |= as<Units>(values == static_cast<uint16_t>(mark.unicode));
    return found;
  }

 private:
  const Bytes low_;
  const Bytes high_;
};

KSV_IN_LOOP void putKeptUnits(uint8_t*& output, Window units, uint32_t kept) {
  storeWindow(output, shuffledWindow(units, windowAt(kKeptOfEight.units[kept])));
  output += 2 * kKeptOfEight.counts[kept];
}

constexpr uint32_t kParts = 2 * kBlock / kRow;
using ValuesOfBlock = Units[kParts];

KSV_IN_LOOP void readValues(const uint8_t* input, ValuesOfBlock& values) {
  for (uint32_t i = 0; i < kParts; ++i) values[i] = valuesAt(input + i * kRow / 2);
}

// Puts out the units of which a bit is set.
KSV_IN_LOOP void putKept(uint8_t*& output, const ValuesOfBlock& values, uint64_t kept) {
  for (const Units& some : values) {
    putKeptUnits(output, windowOf<0>(bytesOf(some)), kept & 0xFF);
    if constexpr (kWindows == 2) putKeptUnits(output, windowOf<1>(bytesOf(some)), kept >> 8 & 0xFF);
    kept >>= kRow / 2;
  }
}

template <bool kBigEndian>
KSV_IN_LOOP Units inOrder(Units units) {
  return kBigEndian ? units << 8 | units >> 8 : units;
}

// Takes the characters of a block, if they are all written as they are.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takePlainBlock(const PlainCheck& plain, BulkPosition& at, uint64_t starts,
                                uint32_t bytes) {
  ValuesOfBlock values;
  Units marks = unitsOf(noBytes());
  Bytes pages = noBytes();
  readValues(at.input, values);
  for (uint32_t i = 0; i < kParts; i += 2) {
    marks |= plain.mayBeMarks(values[i]) | plain.mayBeMarks(values[i + 1]);
    pages |= plain.otherPages(lowerBytes(values[i] >> 8, values[i + 1] >> 8));
  }
  if (signs(pages) != 0) return false;
  if (signs(bytesOf(marks)) != 0) {
    Units found = unitsOf(noBytes());
    for (const Units& some : values) found |= plain.areMarks(some);
    if (signs(bytesOf(found)) != 0) return false;
  }
  for (Units& some : values) some = inOrder<kAscii == AsciiOutput::kBigUnits>(some);
  putKept(at.output, values, starts);
  at.advance(bytes, countOf(starts));
  return true;
}

// Characters of UTF-8 that have been read, but not put out yet.
struct Utf8Piece : ReadPiece {
  // Reads on up to so many well-formed characters as long as no block is ASCII, nor anything that
  // has to be left to others. Returns the place behind them.
  KSV_IN_LOOP const uint8_t* read(const RunTables& run, const uint8_t* input, uint32_t most) {
    uint64_t expected = 0;
    while (count < most) {
      const Utf8Block block(input, expected);
      if (!block.isWhole || block.high == 0 || stopsInBlock(run, input) != 0) break;
      readBlock(input, ~block.continuations);
      input += kBlock;
      expected = block.expectedBehind;
    }
    input += countOf(expected);
    if (count > 0) return input;
    const Utf8Block block(input, 0);
    const uint32_t bytes = wholeBytesBefore(stopsInBlock(run, input), block);
    readBlock(input, ~block.continuations & firstBits(bytes));
    return input + bytes;
  }

  // The bytes of a character, which is well-formed.
  static uint32_t bytesOf(uint32_t value) { return value < 0x80 ? 1 : value < 0x800 ? 2 : 3; }

 private:
  KSV_IN_LOOP void readBlock(const uint8_t* input, uint64_t starts) {
    ValuesOfBlock some;
    readValues(input, some);
    auto* output = reinterpret_cast<uint8_t*>(values + count);
    putKept(output, some, starts);
    count += countOf(starts);
  }
};

// Takes well-formed characters by their short entries, at most so many and a block. False where
// there is none.
template <bool kDesignates>
KSV_IN_LOOP bool takeByEntries(const RunTables& run, BulkPosition& at, uint32_t most) {
  Utf8Piece piece;
  const uint8_t* const behind = piece.read(run, at.input, most);
  const BulkPosition start = at;
  const auto entryOf = [&](uint16_t value) { return run.at(value); };
  if (piece.putAll<kDesignates>(run, at, entryOf)) {
    at.input = behind;
    at.characters += piece.count;
    at.units += piece.count;
    return piece.count > 0;
  }
  at = start;
  for (uint32_t i = 0; i < piece.count; ++i) {
    const uint32_t value = piece.values[i];
    if (!takeKnown<kDesignates>(run, at, run.at(value), Utf8Piece::bytesOf(value))) break;
  }
  return false;
}

// How many characters are read at once: few at first, since what there is none for may come soon.
class PieceLength {
 public:
  // As many as are wanted, but for a block.
  KSV_IN_LOOP uint32_t next(uint32_t wanted) {
    const uint32_t length = length_;
    length_ = std::min(2 * length_, ReadPiece::kMost);
    return std::min(length, wanted - kLeastWanted);
  }

 private:
  uint32_t length_ = kBlock / 2;
};

struct IsLatinLead {
  KSV_IN_LOOP Bytes operator()(Bytes bytes) const { return as<Bytes>((bytes & 0xFE) == 0xC2); }
};

// Characters below U+0100 that are all written as one byte.
class LatinCodes {
 public:
  KSV_IN_LOOP explicit LatinCodes(const SingleCodes& singles)
      : isOne_(singles.upperOther),
        written_(singles.first),
        areWrittenAsThemselves_(singles.upperAsItself) {}

  // Takes a block of them.
  KSV_IN_LOOP bool take(BulkPosition& at) const {
    const Utf8Block block(at.input, 0);
    const uint32_t whole = block.wholeBytes();
    const uint64_t starts = ~block.continuations & firstBits(whole);
    const uint64_t leads = block.leads & starts;
    if (whole == 0 || (leads & ~whereInBlock(at.input, IsLatinLead())) != 0) return false;
    Bytes codes[kRows];
    Bytes areOne[kRows];
    for (uint32_t i = 0; i < kRows; ++i) {
      const Bytes bytes = rowAt(at.input + i * kRow);
      codes[i] = rowAt(at.input + i * kRow + 1) | bytesOf(unitsOf(bytes & 1) << 6);
      areOne[i] = isOne_(codes[i]);
      codes[i] = chosen(bytes, written(codes[i]), bytes);
    }
    if ((leads & ~signsOfBlock(areOne)) != 0) return false;
    putKeptBytes(at, codes, starts);
    at.advance(whole, countOf(starts));
    return true;
  }

 private:
  KSV_IN_LOOP Bytes written(Bytes codes) const {
    return areWrittenAsThemselves_ ? codes : written_.of(codes);
  }

  KSV_IN_LOOP static void putKeptBytes(BulkPosition& at, const Bytes (&rows)[kRows],
                                       uint64_t kept) {
    for (const Bytes& row : rows) {
      putKeptWindow(at, windowOf<0>(row), kept & 0xFFFF);
      if constexpr (kWindows == 2) putKeptWindow(at, windowOf<1>(row), kept >> kWindow & 0xFFFF);
      kept >>= kRow;
    }
  }
  KSV_IN_LOOP static void putKeptWindow(BulkPosition& at, Window bytes, uint32_t kept) {
    const auto halves = as<TwoHalves>(bytes);
    putKeptEight(at, TwoHalves{halves[0], 0}, kept & 0xFF);
    putKeptEight(at, TwoHalves{halves[1], 0}, kept >> 8);
  }
  KSV_IN_LOOP static void putKeptEight(BulkPosition& at, TwoHalves eight, uint32_t kept) {
    storeHalf(at.output, shuffledWindow(as<Window>(eight), halfWindowAt(kKeptOfEight.bytes[kept])));
    at.output += kKeptOfEight.counts[kept];
  }

  const IsOutside isOne_;
  const UpperHalf written_;
  const bool areWrittenAsThemselves_;
};

// Takes blocks of characters that are written as they are, in units, up to what has to be left to
// others.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takePlainBlocks(const RunTables& run, const PlainCheck& plain, BulkPosition& at,
                                 uint32_t wanted) {
  uint64_t expected = 0;
  bool any = false;
  while (wanted - at.characters >= kLeastWanted) {
    const Utf8Block block(at.input, expected);
    if (!block.isWhole || (block.high == 0 && any) || stopsInBlock(run, at.input) != 0) break;
    if (!takePlainBlock<kAscii>(plain, at, ~block.continuations, kBlock)) break;
    expected = block.expectedBehind;
    any = true;
  }
  at.input += countOf(expected);
  if (any) return true;
  const Utf8Block block(at.input, 0);
  const uint32_t bytes = wholeBytesBefore(stopsInBlock(run, at.input), block);
  return bytes > 0 &&
         takePlainBlock<kAscii>(plain, at, ~block.continuations & firstBits(bytes), bytes);
}

template <AsciiOutput kAscii, bool kDesignates = false>
void runUtf8(const RunTables& run, BulkPosition& position, uint32_t wanted) {
  constexpr bool kWritesUnits = writesUnits(kAscii);
  const PlainCheck plain{kWritesUnits ? plainBits(run) : PlainBits{}};
  PieceLength pieceLength;
  const LatinCodes latin(*run.singles);
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    if constexpr (kAscii != AsciiOutput::kOther) {
      const uint64_t high = whereInBlock(at.input, IsHigh());
      const uint64_t stops = stopsInBlock(run, at.input);
      if ((stops & 1) != 0) {
        if (takeLineEnd<kDesignates>(run, at, at.input[0], 1)) continue;
        break;
      }
      if (mayTakeAscii<kDesignates>(run, at) && takeLeadingAscii<kAscii>(at, high | stops))
        continue;
      if (kWritesUnits && takePlainBlocks<kAscii>(run, plain, at, wanted)) continue;
      if (!kWritesUnits && !kDesignates && stops == 0 && latin.take(at)) continue;
    }
    if (!takeByEntries<kDesignates>(run, at, pieceLength.next(wanted - at.characters))) break;
  }
  position = at;
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
