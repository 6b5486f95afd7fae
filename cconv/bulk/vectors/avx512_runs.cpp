// Runs with the AVX-512 instructions of x86-64: entries are gathered for sixteen
// characters at a time, and their output bytes pushed together.
#include <algorithm>

#include "cconv/bulk/unicode_sources.h"
#include "cconv/bulk/vector_runs.h"
#include "cconv/bulk/vectors/avx512_block.h"
#include "cconv/bulk/vectors/avx512_iso_2022_jp.h"
#include "cconv/bulk/window_tables.h"
#include "cconv/engine/composition.h"
#include "common/byte_order.h"

KSV_TARGET_BEGIN(KSV_AVX512)

namespace ksv::vector_runs::by_windows {
namespace {

constexpr uint32_t kWindows = 2;

}  // namespace
}  // namespace ksv::vector_runs::by_windows

#include "cconv/bulk/vectors/rows_avx2.h"
#include "cconv/bulk/vectors/units_by_window.h"
#include "cconv/bulk/vectors/utf8_by_window.h"

namespace ksv::vector_runs {
namespace {

template <AsciiOutput kAscii>
constexpr bool kWritesUnits = writesUnits(kAscii);

struct ClassLookup {
  __m512i quarters[4];

  KSV_IN_LOOP explicit ClassLookup(const uint8_t* classes)
      : quarters{load(classes), load(classes + kBlock), load(classes + 2 * kBlock),
                 load(classes + 3 * kBlock)} {}

  KSV_IN_LOOP __m512i of(__m512i bytes, uint64_t high) const {
    return _mm512_mask_blend_epi8(high, _mm512_permutex2var_epi8(quarters[0], bytes, quarters[1]),
                                  _mm512_permutex2var_epi8(quarters[2], bytes, quarters[3]));
  }
};

// Codes of one byte, of which those that are not ASCII are written as one or two bytes.
struct NarrowLookup {
  __m512i first[2];
  __m512i second[2];

  KSV_IN_LOOP explicit NarrowLookup(const SingleCodes& singles)
      : first{load(singles.first), load(singles.first + kBlock)},
        second{load(singles.second), load(singles.second + kBlock)} {}

  template <AsciiOutput kAscii>
  KSV_IN_LOOP void put(uint8_t*& output, __m512i bytes, uint64_t high, uint64_t twoBytes) const {
    constexpr bool kLittle = kAscii == AsciiOutput::kLittleUnits;
    constexpr bool kBig = kAscii == AsciiOutput::kBigUnits;
    const __m512i zero = _mm512_setzero_si512();
    const __m512i firsts = _mm512_mask_blend_epi8(
        high, kBig ? zero : bytes, _mm512_permutex2var_epi8(first[0], bytes, first[1]));
    const __m512i seconds = _mm512_mask_blend_epi8(
        high, kBig ? bytes : zero, _mm512_permutex2var_epi8(second[0], bytes, second[1]));
    __m512i low;
    __m512i highHalf;
    interleave(firsts, seconds, low, highHalf);
    if constexpr (kLittle || kBig) {
      storeTwo(output, low, highHalf);
      output += 2 * kBlock;
    } else {
      constexpr uint64_t kFirsts = 0x5555555555555555;
      const uint64_t lowBytes = kFirsts | _pdep_u64(twoBytes, ~kFirsts);
      const uint64_t highBytes = kFirsts | _pdep_u64(twoBytes >> 32, ~kFirsts);
      _mm512_storeu_si512(output, _mm512_maskz_compress_epi8(lowBytes, low));
      output += std::popcount(lowBytes);
      _mm512_storeu_si512(output, _mm512_maskz_compress_epi8(highBytes, highHalf));
      output += std::popcount(highBytes);
    }
  }
};

template <AsciiOutput kAscii, bool kDesignates = false>
void runByteCodes(const RunTables& run, BulkPosition& position, uint32_t wanted) {
  const ClassLookup lookup(run.singles->classes);
  const NarrowLookup narrow(*run.singles);
  const __m512i pairBit = _mm512_set1_epi8(SingleCodes::kNone);
  const __m512i pairOrWideBit = _mm512_set1_epi8(SingleCodes::kNone | SingleCodes::kIsWide);
  const __m512i twoBit = _mm512_set1_epi8(SingleCodes::kHasTwoBytes);
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    const uint32_t room = wanted - at.characters - kReserve;
    const __m512i bytes = load(at.input);
    const bool writesAscii = mayTakeAscii<kAscii, kDesignates>(run, at);
    if (writesAscii && takeAsciiBlocks<kAscii>(run, at, wanted, bytes)) continue;
    const uint64_t high = _mm512_movepi8_mask(bytes);
    const __m512i classes = lookup.of(bytes, high);
    const uint64_t leads = _mm512_test_epi8_mask(classes, pairBit);
    if constexpr (kAscii != AsciiOutput::kOther && !kDesignates) {
      const uint64_t two = _mm512_test_epi8_mask(classes, twoBit);
      // In units all codes are written as two bytes, which not all need be.
      const bool areUnits = !kWritesUnits<kAscii> || ~two == 0;
      if (room >= kBlock && areUnits && _mm512_test_epi8_mask(classes, pairOrWideBit) == 0) {
        narrow.put<kAscii>(at.output, bytes, high, two);
        at.advance(kBlock, kBlock);
        continue;
      }
    }
    if (writesAscii && takeLeadingAscii<kAscii>(run, at, room, bytes)) continue;
    const uint64_t pairs = pairLeads(leads);
    // 32 or more; 32 only where the last one ends with the block.
    const uint64_t starts = ~(pairs << 1);
    const auto characters = static_cast<uint32_t>(std::popcount(starts));
    const PairBlock codes(at.input, bytes, starts, pairs);
    const uint32_t count = fullVectors(least(characters, room));
    const auto entriesOf = [&](uint32_t half, uint32_t lanes) __attribute__((always_inline)) {
      const __m512i singles =
          _mm512_or_si512(codes.first(half), _mm512_set1_epi32(ShortTable::kSingles));
      const __m512i indexes = _mm512_mask_mov_epi32(
          singles, static_cast<__mmask16>(codes.pairLanes(half)), codes.code(half));
      return entriesAt(run, indexes, lanes, _mm512_setzero_si512());
    };
    const uint32_t taken = putHalves<kDesignates>(run, at, count, entriesOf);
    if (taken < count) [[unlikely]] {
      at.advance(placeOfBit(starts, taken), taken);
      if (takeLineEnd<kDesignates>(run, at, at.input[0], 1)) continue;
      break;
    }
    at.advance(placeOfBit(starts, count), count);
  }
  position = at;
}

// How many bytes of a block, which begins with a character, are whole characters of up
// to three bytes.
KSV_IN_LOOP uint64_t wholeCharacters(uint64_t continuations, uint64_t twoOrMore,
                                     uint64_t threeOrMore, uint64_t four) {
  const uint64_t missing =
      (twoOrMore & ~(continuations >> 1)) | (threeOrMore & ~(continuations >> 2));
  const uint64_t stray = continuations & ~(twoOrMore << 1 | threeOrMore << 2);
  return static_cast<uint64_t>(std::countr_zero(missing | stray | four));
}

// Takes a block of characters below U+0100 that are all written as one byte.
KSV_IN_LOOP bool takeLatin(const RunTables& run, BulkPosition& at, __m512i bytes,
                           uint64_t continuations, uint64_t leads) {
  const SingleCodes& singles = *run.singles;
  const uint64_t upperLeads = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\xC3'));
  const uint64_t lowerLeads = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\xC2'));
  if ((upperLeads | lowerLeads) != leads || leads << 1 != continuations) return false;
  if (stopsIn(bytes, run.stops) != 0) return false;
  const __m512i values =
      _mm512_mask_add_epi8(bytes, upperLeads << 1, bytes, _mm512_set1_epi8(0x40));
  const auto classOf = _mm512_permutex2var_epi8(load(singles.classes + 2 * kBlock), values,
                                                load(singles.classes + 3 * kBlock));
  if (_mm512_mask_test_epi8_mask(continuations, classOf, classOf) != 0) return false;
  const __m512i looked = _mm512_mask_mov_epi8(
      values, continuations,
      _mm512_permutex2var_epi8(load(singles.first), values, load(singles.first + kBlock)));
  const uint64_t kept = ~leads;
  _mm512_storeu_si512(at.output, _mm512_maskz_compress_epi8(kept, looked));
  const auto characters = static_cast<uint32_t>(std::popcount(kept));
  at.output += characters;
  // A lead at the end is left for the next block. Its byte is at hand sooner than the bits.
  at.advance(at.input[kBlock - 1] >= 0xC0 ? kBlock - 1 : kBlock, characters);
  return true;
}

// How many of so many values are written as they are.
KSV_IN_LOOP uint32_t leadingPlain(const ClassLookup& pages, __m512i values, uint32_t count) {
  constexpr uint64_t kHighBytes = 0xAAAAAAAAAAAAAAAA;
  const __m512i classes = pages.of(values, _mm512_movepi8_mask(values));
  const uint64_t plain = _mm512_test_epi8_mask(classes, _mm512_set1_epi8(PlainPages::kIsPlain));
  uint32_t others = static_cast<uint32_t>(~_pext_u64(plain, kHighBytes));
  for (const StandaloneMark& mark : kStandaloneMarks) {
    others |=
        _mm512_cmpeq_epi16_mask(values, _mm512_set1_epi16(static_cast<int16_t>(mark.unicode)));
  }
  const auto leading = static_cast<uint32_t>(std::countr_zero(others));
  return least(leading, count);
}

// The characters of a block, sorted by their bytes.
struct Utf8Block {
  uint64_t starts;
  uint64_t ends;  // each character ends where the next starts
  uint64_t isTwo;
  uint64_t isThree;
  uint32_t characters;
  __m512i first;
  __m512i second;
  __m512i third;

  KSV_IN_LOOP Utf8Block(const uint8_t* input, __m512i bytes, uint64_t continuations,
                        uint64_t twoOrMore) {
    const uint64_t threeOrMore = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8('\xE0'));
    const uint64_t four = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8('\xF0'));
    const uint64_t whole = wholeCharacters(continuations, twoOrMore, threeOrMore, four);
    starts = ~continuations & lowBits(whole);
    ends = whole < kBlock ? starts | uint64_t{1} << whole : starts;
    isTwo = _pext_u64(twoOrMore, starts);
    isThree = _pext_u64(threeOrMore, starts);
    characters = static_cast<uint32_t>(std::popcount(starts));
    first = _mm512_maskz_compress_epi8(starts, bytes);
    second = _mm512_maskz_compress_epi8(starts, load(input + 1));
    third = _mm512_maskz_compress_epi8(starts, load(input + 2));
  }

  // Which of the first 32 characters are not well-formed for all that: of more bytes than they
  // need, or surrogates.
  KSV_IN_LOOP uint32_t illFormed(__m512i units) const {
    const __m512i upper = _mm512_and_si512(units, _mm512_set1_epi16(static_cast<int16_t>(0xF800)));
    const uint32_t shortThrees = _mm512_testn_epi16_mask(upper, upper);
    const uint32_t surrogates =
        _mm512_cmpeq_epi16_mask(upper, _mm512_set1_epi16(static_cast<int16_t>(0xD800)));
    const uint32_t ascii = _mm512_cmplt_epu16_mask(units, _mm512_set1_epi16(0x80));
    return (static_cast<uint32_t>(isThree) & (shortThrees | surrogates)) |
           (static_cast<uint32_t>(isTwo & ~isThree) & ascii);
  }

  // The values of the first 32 characters. Of the marker of a longer lead no bit is left.
  KSV_IN_LOOP __m512i units() const {
    const __m512i six = _mm512_set1_epi16(0x3F);
    const __m512i lead = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(first));
    const __m512i two = _mm512_or_si512(
        _mm512_slli_epi16(_mm512_and_si512(lead, _mm512_set1_epi16(0x1F)), 6),
        _mm512_and_si512(_mm512_cvtepu8_epi16(_mm512_castsi512_si256(second)), six));
    const __m512i three =
        _mm512_or_si512(_mm512_slli_epi16(two, 6),
                        _mm512_and_si512(_mm512_cvtepu8_epi16(_mm512_castsi512_si256(third)), six));
    return _mm512_mask_mov_epi16(_mm512_mask_mov_epi16(lead, static_cast<__mmask32>(isTwo), two),
                                 static_cast<__mmask32>(isThree), three);
  }
};

template <bool kBigEndian>
KSV_IN_LOOP __m512i swapped(__m512i units) {
  if constexpr (!kBigEndian) return units;
  const __m512i other =
      _mm512_broadcast_i32x4(_mm_set_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1));
  return _mm512_shuffle_epi8(units, other);
}

// Takes so many values, up to 32, if they are all written as they are.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takePlain(const RunTables& run, BulkPosition& at, __m512i values, uint32_t count) {
  const ClassLookup pages(run.pages->classes);
  if (leadingPlain(pages, values, count) < count) return false;
  _mm512_storeu_si512(at.output, swapped<kAscii == AsciiOutput::kBigUnits>(values));
  at.output += 2 * count;
  return true;
}

template <AsciiOutput kAscii, bool kDesignates = false>
void runUtf8(const RunTables& run, BulkPosition& position, uint32_t wanted) {
  // The pages of line ends that are converted are not plain.
  if (kWritesUnits<kAscii> && run.lineEnds != nullptr)
    return by_windows::runUtf8<kAscii>(run, position, wanted);
  [[maybe_unused]] by_windows::PieceLength pieceLength;
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    const uint32_t room = wanted - at.characters - kReserve;
    const __m512i bytes = load(at.input);
    if (takeLineEnd<kDesignates>(run, at, at.input[0], 1)) continue;
    const bool writesAscii = mayTakeAscii<kAscii, kDesignates>(run, at);
    if (writesAscii && takeAsciiBlocks<kAscii>(run, at, wanted, bytes)) continue;
    const uint64_t twoOrMore = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8('\xC0'));
    const uint64_t continuations = _mm512_movepi8_mask(bytes) & ~twoOrMore;
    if (kAscii == AsciiOutput::kBytes && !kDesignates && room >= kBlock &&
        takeLatin(run, at, bytes, continuations, twoOrMore)) {
      continue;
    }
    if (writesAscii && takeLeadingAscii<kAscii>(run, at, room, bytes)) continue;
    if constexpr (!kWritesUnits<kAscii> && !kDesignates) {
      // Faster than gathering.
      const bool isRoom = wanted - at.characters >= by_windows::kLeastWanted;
      if (!isRoom ||
          !by_windows::takeByEntries<false>(run, at, pieceLength.next(wanted - at.characters)))
        break;
      continue;
    }
    const Utf8Block block(at.input, bytes, continuations, twoOrMore);
    const __m512i units = block.units();
    if (block.illFormed(units) != 0) [[unlikely]]
      break;
    if constexpr (kWritesUnits<kAscii>) {
      const uint32_t count = least(least(block.characters, room), 2 * kLanes);
      if (count > 0 && takePlain<kAscii>(run, at, units, count)) {
        at.advance(placeOfBit(block.ends, count), count);
        continue;
      }
    }
    const uint32_t count = fullVectors(least(block.characters, room));
    const auto entriesOf = [&](uint32_t half, uint32_t lanes) __attribute__((always_inline)) {
      return entriesAt(run, widenUnits(units, half), lanes, _mm512_setzero_si512());
    };
    const uint32_t taken = putHalves<kDesignates>(run, at, count, entriesOf);
    if (taken < count || taken == 0) [[unlikely]] {
      at.advance(placeOfBit(block.ends, taken), taken);
      break;
    }
    at.advance(placeOfBit(block.ends, count), count);
  }
  position = at;
}

// Takes a block of units that are all ASCII; false when they are not.
KSV_IN_LOOP bool takeAsciiUnitBlock(const RunTables& run, BulkPosition& at, __m512i units) {
  constexpr uint32_t kUnits = kBlock / 2;
  if (_mm512_test_epi16_mask(units, _mm512_set1_epi16('\xFF' << 8 | 0x80)) != 0) return false;
  const __m256i bytes = _mm512_cvtepi16_epi8(units);
  if (stopsIn(_mm512_castsi256_si512(bytes), run.stops) != 0) return false;
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(at.output), bytes);
  at.output += kUnits;
  at.advance(kBlock, kUnits);
  return true;
}

template <AsciiOutput kAscii, bool kBigEndian, bool kDesignates = false>
void runUnits(const RunTables& run, BulkPosition& position, uint32_t wanted) {
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted + kLanes) {
    const __m512i units = swapped<kBigEndian>(load(at.input));
    if (kAscii == AsciiOutput::kBytes && mayTakeAscii<kAscii, kDesignates>(run, at) &&
        takeAsciiUnitBlock(run, at, units)) {
      continue;
    }
    if constexpr (kWritesUnits<kAscii>) {
      if (takePlain<kAscii>(run, at, units, 2 * kLanes)) {
        at.advance(kBlock, 2 * kLanes);
        continue;
      }
    }
    if constexpr (!kWritesUnits<kAscii> && !kDesignates) {
      if (by_windows::takeUnits<kBigEndian, false>(run, at)) continue;
      if (run.lineEnds == nullptr || !by_windows::takeLine<kBigEndian, false>(run, at)) break;
      continue;
    }
    const auto entriesOf = [&](uint32_t half, uint32_t lanes) __attribute__((always_inline)) {
      return entriesAt(run, widenUnits(units, half), lanes, _mm512_setzero_si512());
    };
    const uint32_t taken = putHalves<kDesignates>(run, at, 2 * kLanes, entriesOf);
    if (taken < 2 * kLanes) [[unlikely]] {
      at.advance(2 * taken, taken);
      break;
    }
    at.advance(kBlock, 2 * kLanes);
  }
  position = at;
}

KSV_TARGET_END

RunFunction byteCodes(AsciiOutput ascii) {
  return chosenRun(ascii, []<AsciiOutput kAscii>() -> RunFunction { return runByteCodes<kAscii>; });
}

RunFunction utf8(AsciiOutput ascii) {
  return chosenRun(ascii, []<AsciiOutput kAscii>() -> RunFunction { return runUtf8<kAscii>; });
}

RunFunction twoByteUnits(AsciiOutput ascii, bool bigEndian) {
  return chosenRun(ascii, [bigEndian]<AsciiOutput kAscii>() -> RunFunction {
    return bigEndian ? runUnits<kAscii, true> : runUnits<kAscii, false>;
  });
}

RunFunction byteCodesDesignating() { return runByteCodes<AsciiOutput::kBytes, true>; }

RunFunction utf8Designating() { return runUtf8<AsciiOutput::kBytes, true>; }

RunFunction twoByteUnitsDesignating(bool bigEndian) {
  return bigEndian ? runUnits<AsciiOutput::kBytes, true, true>
                   : runUnits<AsciiOutput::kBytes, false, true>;
}

}  // namespace

constinit const LevelRuns kAvx512Runs = {byteCodes,       utf8,
                                         twoByteUnits,    byteCodesDesignating,
                                         utf8Designating, twoByteUnitsDesignating,
                                         iso2022JpAvx512};

}  // namespace ksv::vector_runs
