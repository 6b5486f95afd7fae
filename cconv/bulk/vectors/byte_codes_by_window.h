// Runs over codes of one or two bytes by windows, four characters at a time.
#pragma once

#include "cconv/bulk/vectors/window.h"

namespace ksv::vector_runs::by_windows {
namespace {

// Without the four lowest of the bits that are set.
KSV_IN_LOOP uint64_t withoutFour(uint64_t bits) {
  for (uint32_t i = 0; i < 4; ++i) bits &= bits - 1;
  return bits;
}

constexpr uint32_t kFours = 8;  // that are in a block at least

// Takes four characters so many times, with the first bytes of pairs among the next 64. False where
// one of them has no short entry: then none has been taken.
template <bool kDesignates>
KSV_IN_LOOP bool takeFours(const RunTables& run, BulkPosition& position, uint64_t pairs,
                           uint32_t fours) {
  BulkPosition at = position;
  uint64_t starts = ~(pairs << 1);
  Window all = ~(Window{});
  for (uint32_t i = 0; i < fours; ++i) {
    const auto place = static_cast<uint32_t>(std::countr_zero(starts));
    const uint32_t shape = pairs >> place & 0x7F;
    const Window indexes =
        shuffledWindow(windowAt(at.input + place), windowAt(kFourCodes.places[shape])) |
        windowAt(kFourCodes.singles[shape]);
    const Window entries = entriesAt(run, indexes);
    all &= entries;
    if (!putFour<kDesignates>(run, at, entries)) return false;
    starts = withoutFour(starts);
  }
  if (!wereThere(all)) return false;
  at.advance(static_cast<uint32_t>(std::countr_zero(starts)), 4 * fours);
  position = at;
  return true;
}

// Takes the last few characters in front of a stop.
template <bool kDesignates>
KSV_IN_LOOP bool takeBeforeStop(const RunTables& run, BulkPosition& at) {
  while (!isStop(run.stops, at.input[0])) {
    const ShortEntry single = run.at(ShortTable::kSingles + at.input[0]);
    if (single != kNoShortEntry) {
      if (!takeKnown<kDesignates>(run, at, single, 1)) return false;
      continue;
    }
    const uint32_t pair = static_cast<uint32_t>(at.input[0]) << 8 | at.input[1];
    if (!takeKnown<kDesignates>(run, at, run.at(pair), 2)) return false;
  }
  return true;
}

// The same in front of the first stop.
template <bool kDesignates>
KSV_IN_LOOP bool takeFoursBefore(uint64_t stops, const RunTables& run, BulkPosition& at,
                                 uint64_t pairs) {
  if (stops == 0) return takeFours<kDesignates>(run, at, pairs, kFours);
  // Where the second byte of a pair looks like a stop there are less, which is no harm.
  const uint64_t before = ~(pairs << 1) & ((stops & (0 - stops)) - 1);
  const uint32_t fours = std::min(countOf(before) / 4, kFours);
  return (fours == 0 || takeFours<kDesignates>(run, at, pairs, fours)) &&
         (fours == kFours || takeBeforeStop<kDesignates>(run, at));
}

KSV_IN_LOOP void putOneOrTwo(BulkPosition& at, Window codes, uint32_t two) {
  storeWindow(at.output, shuffledWindow(codes, windowAt(kOneOrTwo.places[two])));
  at.output += 8 + kKeptOfEight.counts[two];
}

// What the upper half of the bytes is written as.
class LookedUp {
 public:
  KSV_IN_LOOP LookedUp(const SingleCodes& singles, const IsOutside& hasOne)
      : first_(singles.first), second_(singles.second), hasOne_(hasOne) {}

  KSV_IN_LOOP Bytes first(Bytes bytes) const { return first_.of(bytes); }
  KSV_IN_LOOP Bytes second(Bytes bytes) const { return second_.of(bytes); }
  KSV_IN_LOOP uint32_t haveTwo(Bytes bytes) const { return signs(bytes) & ~signs(hasOne_(bytes)); }

 private:
  const UpperHalf first_;
  const UpperHalf second_;
  const IsOutside& hasOne_;
};

// The same where that is UTF-8 of the values 0x80 to 0xFF.
struct AsUtf8 {
  KSV_IN_LOOP static Bytes first(Bytes bytes) { return (bytesOf(unitsOf(bytes) >> 6) & 1) + 0xC2; }
  KSV_IN_LOOP static Bytes second(Bytes bytes) { return bytes & 0xBF; }
  KSV_IN_LOOP static uint32_t haveTwo(Bytes bytes) { return signs(bytes); }
};

// Codes of one byte, of which those that are not ASCII are written as one or two bytes.
template <AsciiOutput kAscii, typename Upper>
class NarrowCodes {
 public:
  KSV_IN_LOOP explicit NarrowCodes(const Upper& upper) : upper_(upper) {}

  KSV_IN_LOOP void putBlock(BulkPosition& at) const {
    const uint8_t* const input = at.input;
    for (uint32_t i = 0; i < kBlock; i += kRow) putRow(at, rowAt(input + i));
    at.advance(kBlock, kBlock);
  }

 private:
  KSV_IN_LOOP void putRow(BulkPosition& at, Bytes bytes) const {
    if (kAscii == AsciiOutput::kBytes && signs(bytes) == 0) {
      storeRow(at.output, bytes);
      at.output += kRow;
      return;
    }
    constexpr bool kIsBig = kAscii == AsciiOutput::kBigUnits;
    const Bytes first = chosen(bytes, upper_.first(bytes), kIsBig ? noBytes() : bytes);
    const Bytes second = chosen(bytes, upper_.second(bytes), kIsBig ? bytes : noBytes());
    uint32_t two = 0;
    if (kAscii == AsciiOutput::kBytes) two = upper_.haveTwo(bytes);
    putWindow(at, windowOf<0>(first), windowOf<0>(second), two);
    if constexpr (kWindows == 2)
      putWindow(at, windowOf<1>(first), windowOf<1>(second), two >> kWindow);
  }

  KSV_IN_LOOP static void putWindow(BulkPosition& at, Window first, Window second, uint32_t two) {
    const Window low = zippedLow(first, second);
    const Window high = zippedHigh(first, second);
    if constexpr (kAscii == AsciiOutput::kBytes) {
      putOneOrTwo(at, low, two & 0xFF);
      putOneOrTwo(at, high, two >> 8 & 0xFF);
    } else {
      storeWindow(at.output, low);
      storeWindow(at.output + kWindow, high);
      at.output += 2 * kWindow;
    }
  }

  const Upper& upper_;
};

// What a run asks of the upper half of the bytes.
struct UpperQuestions {
  const IsOutside isSingle;
  const IsOutside isShort;  // and written as one or two bytes
  const IsOutside hasOne;

  KSV_IN_LOOP explicit UpperQuestions(const SingleCodes& singles)
      : isSingle(singles.upperNone),
        isShort(singles.upperNoneOrWide),
        hasOne(singles.upperTwoBytes) {}
};

// Takes a block of codes of one byte; false where they are not all written as one or two, or in
// units as other than two.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takeNarrow(const RunTables& run, const UpperQuestions& upper, BulkPosition& at,
                            uint64_t high) {
  if ((high & ~whereInBlock(at.input, upper.isShort)) != 0) return false;
  if constexpr (kAscii == AsciiOutput::kBytes) {
    if (run.singles->upperAsUtf8) {
      NarrowCodes<kAscii, AsUtf8>(AsUtf8()).putBlock(at);
      return true;
    }
  } else {
    if ((high & whereInBlock(at.input, upper.hasOne)) != 0) return false;
  }
  NarrowCodes<kAscii, LookedUp>(LookedUp(*run.singles, upper.hasOne)).putBlock(at);
  return true;
}

template <AsciiOutput kAscii, bool kDesignates = false>
void runByteCodes(const RunTables& run, BulkPosition& position, uint32_t wanted) {
  const UpperQuestions upper(*run.singles);
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    const uint64_t high = whereInBlock(at.input, IsHigh());
    uint64_t stops = 0;
    if constexpr (kAscii != AsciiOutput::kOther) {
      stops = stopsInBlock(run, at.input);
      if ((stops & 1) != 0) {
        if (takeLineEnd<kDesignates>(run, at, at.input[0], 1)) continue;
        break;
      }
      if (mayTakeAscii<kDesignates>(run, at) && takeLeadingAscii<kAscii>(at, high | stops))
        continue;
    }
    const uint64_t leads = high & ~whereInBlock(at.input, upper.isSingle);
    if constexpr (kAscii != AsciiOutput::kOther) {
      if (!kDesignates && (leads | stops) == 0 && takeNarrow<kAscii>(run, upper, at, high))
        continue;
    }
    if (!takeFoursBefore<kDesignates>(stops, run, at, pairLeads(leads))) break;
  }
  position = at;
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
