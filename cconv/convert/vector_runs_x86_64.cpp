// Runs with the AVX-512 instructions of x86-64: entries are gathered for sixteen
// characters at a time, and their output bytes pushed together.
#include <immintrin.h>

#include <bit>

#include "cconv/convert/composition.h"
#include "cconv/convert/vector_runs.h"

namespace ksv::vector_runs {
namespace {

bool hasAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
         __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
         __builtin_cpu_supports("popcnt");
}

#pragma GCC push_options
#pragma GCC target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")

constexpr uint32_t kBlock = 64;  // bytes of a vector
constexpr uint32_t kLanes = 16;  // entries of a vector
// Characters that a run leaves at its end: with room for them, a vector can be stored
// behind any character that it takes.
constexpr uint32_t kReserve = 8;
// A block of input can be loaded, and the three bytes behind it.
constexpr uint32_t kLeastWanted = 24;

KSV_IN_LOOP __m512i load(const uint8_t* bytes) { return _mm512_loadu_si512(bytes); }

KSV_IN_LOOP uint64_t lowBits(uint64_t count) {
  return _bzhi_u64(~uint64_t{0}, static_cast<uint32_t>(count));
}

KSV_IN_LOOP uint32_t least(uint32_t one, uint32_t other) { return one < other ? one : other; }

// The place of the count-th of the bits that are set, where there is one.
KSV_IN_LOOP uint32_t placeOfBit(uint64_t bits, uint32_t count) {
  return static_cast<uint32_t>(std::countr_zero(_pdep_u64(uint64_t{1} << count, bits)));
}

// Puts out the characters of up to sixteen indexes; how many, up to the first that has
// no short entry. The entries are read without the ceremony of an atomic load: each is
// read whole, and says all by itself.
KSV_IN_LOOP uint32_t putEntries(const ShortRun& run, uint8_t*& output, __m512i indexes,
                                uint32_t count) {
  const __m512i lengthOfLane =
      _mm512_broadcast_i32x4(_mm_set_epi32(0x0F0F0F0F, 0x0B0B0B0B, 0x07070707, 0x03030303));
  const __m512i longerThan = _mm512_set1_epi32(static_cast<int>(0xFF828180));
  const uint32_t live = _bzhi_u32(0xFFFF, count);
  const __m512i entries = _mm512_mask_i32gather_epi32(
      _mm512_setzero_si512(), static_cast<__mmask16>(live), indexes, run.slots, 4);
  const __m512i lengths = _mm512_shuffle_epi8(entries, lengthOfLane);
  uint64_t bytes = _mm512_cmpgt_epu8_mask(lengths, longerThan);
  // A branch, since what follows must not wait for the entries.
  if (const uint32_t known = _mm512_movepi32_mask(entries); known != live) [[unlikely]] {
    count = static_cast<uint32_t>(std::countr_one(known));
    bytes &= lowBits(4 * count);
  }
  _mm512_storeu_si512(output, _mm512_maskz_compress_epi8(bytes, entries));
  output += std::popcount(bytes);
  return count;
}

// Sixteen of the first 32 bytes.
KSV_IN_LOOP __m512i widen(__m512i bytes, uint32_t half) {
  return _mm512_cvtepu8_epi32(half == 0 ? _mm512_castsi512_si128(bytes)
                                        : _mm512_extracti32x4_epi32(bytes, 1));
}

// Puts out the characters of up to 32 indexes, sixteen of which indexesOf makes; how
// many, up to the first that has no short entry.
template <typename IndexesOf>
KSV_IN_LOOP uint32_t putTwice(const ShortRun& run, uint8_t*& output, uint32_t count,
                              IndexesOf indexesOf) {
  if (count <= kLanes) return putEntries(run, output, indexesOf(0), count);
  const uint32_t taken = putEntries(run, output, indexesOf(0), kLanes);
  if (taken < kLanes) [[unlikely]] return taken;
  return kLanes + putEntries(run, output, indexesOf(1), count - kLanes);
}

// Of so many characters as are at hand, those to take: vectors full of them as long as
// there are enough, so that the number is mostly the same.
KSV_IN_LOOP uint32_t fullVectors(uint32_t characters) {
  if (characters >= 2 * kLanes) return 2 * kLanes;
  return characters >= kLanes ? kLanes : characters;
}

// ASCII bytes that have to be left to others.
KSV_IN_LOOP uint64_t stopsIn(__m512i bytes, const AsciiStops& stops) {
  uint64_t found = 0;
  if (!stops.any()) return found;
  if (stops.lineEnds) {
    found |= _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\r')) |
             _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\n'));
  }
  if (stops.escape) found |= _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(0x1B));
  if (stops.del) found |= _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(0x7F));
  return found;
}

// Interleaves 64 bytes each, in order: those of the first stand in front.
KSV_IN_LOOP void interleave(__m512i first, __m512i second, __m512i& low, __m512i& high) {
  const __m512i quarters = _mm512_set_epi64(7, 3, 6, 2, 5, 1, 4, 0);
  const __m512i one = _mm512_permutexvar_epi64(quarters, first);
  const __m512i other = _mm512_permutexvar_epi64(quarters, second);
  low = _mm512_unpacklo_epi8(one, other);
  high = _mm512_unpackhi_epi8(one, other);
}

KSV_IN_LOOP void storeTwo(uint8_t* output, __m512i low, __m512i high) {
  _mm512_storeu_si512(output, low);
  _mm512_storeu_si512(output + kBlock, high);
}

template <AsciiOutput kAscii>
KSV_IN_LOOP void writeAsciiBlock(uint8_t* output, __m512i bytes) {
  if constexpr (kAscii == AsciiOutput::kBytes) {
    _mm512_storeu_si512(output, bytes);
  } else {
    const __m512i zero = _mm512_setzero_si512();
    __m512i low;
    __m512i high;
    if constexpr (kAscii == AsciiOutput::kLittleUnits) {
      interleave(bytes, zero, low, high);
    } else {
      interleave(zero, bytes, low, high);
    }
    storeTwo(output, low, high);
  }
}

KSV_IN_LOOP uint64_t notAscii(const ShortRun& run, __m512i bytes) {
  return _mm512_movepi8_mask(bytes) | stopsIn(bytes, run.stops);
}

// Takes blocks of ASCII, two or more. A single one is left to what takes other
// characters as well: where they are strewn in, its coming could not be foreseen.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takeAsciiBlocks(const ShortRun& run, BulkPosition& at, uint32_t wanted,
                                 __m512i bytes) {
  if (notAscii(run, bytes) != 0 || wanted - at.characters < 2 * kBlock + kLeastWanted) return false;
  __m512i next = load(at.input + kBlock);
  if (notAscii(run, next) != 0) return false;
  do {
    writeAsciiBlock<kAscii>(at.output, bytes);
    at.output += kBlock * kAsciiWidth<kAscii>;
    at.advance(kBlock, kBlock);
    bytes = next;
    next = load(at.input + kBlock);
  } while (wanted - at.characters >= 2 * kBlock + kLeastWanted && notAscii(run, next) == 0);
  return true;
}

// Takes the ASCII bytes that a block begins with, if they are many.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takeLeadingAscii(const ShortRun& run, BulkPosition& at, uint32_t room,
                                  __m512i bytes) {
  constexpr uint32_t kLeast = 32;
  const auto leading = static_cast<uint32_t>(std::countr_zero(notAscii(run, bytes)));
  if (leading < kLeast) return false;
  const uint32_t taken = least(leading, room);
  writeAsciiBlock<kAscii>(at.output, bytes);
  at.output += taken * kAsciiWidth<kAscii>;
  at.advance(taken, taken);
  return true;
}

// The bytes that a pair begins with, from those that a pair can begin with: in a row of
// these every second one, from the first on.
KSV_IN_LOOP uint64_t pairLeads(uint64_t leads) {
  constexpr uint64_t kEven = 0x5555555555555555;
  const uint64_t evenStarts = leads & ~(leads << 1) & kEven;
  const uint64_t fromEven = leads & ~(leads + evenStarts);
  return (fromEven & kEven) | (leads & ~fromEven & ~kEven);
}

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
  KSV_IN_LOOP void put(uint8_t*& output, __m512i bytes, uint64_t high,
                              uint64_t twoBytes) const {
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

template <AsciiOutput kAscii>
void runByteCodes(const ShortRun& run, BulkPosition& position, uint32_t wanted) {
  const ClassLookup lookup(run.singles->classes);
  const NarrowLookup narrow(*run.singles);
  const __m512i pairBit = _mm512_set1_epi8(SingleCodes::kNone);
  const __m512i pairOrWideBit =
      _mm512_set1_epi8(SingleCodes::kNone | SingleCodes::kIsWide);
  const __m512i twoBit = _mm512_set1_epi8(SingleCodes::kHasTwoBytes);
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    const uint32_t room = wanted - at.characters - kReserve;
    const __m512i bytes = load(at.input);
    if (kAscii != AsciiOutput::kOther && takeAsciiBlocks<kAscii>(run, at, wanted, bytes)) continue;
    const uint64_t high = _mm512_movepi8_mask(bytes);
    const __m512i classes = lookup.of(bytes, high);
    const uint64_t leads = _mm512_test_epi8_mask(classes, pairBit);
    if constexpr (kAscii != AsciiOutput::kOther) {
      if (room >= kBlock && _mm512_test_epi8_mask(classes, pairOrWideBit) == 0) {
        narrow.put<kAscii>(at.output, bytes, high, _mm512_test_epi8_mask(classes, twoBit));
        at.advance(kBlock, kBlock);
        continue;
      }
      if (takeLeadingAscii<kAscii>(run, at, room, bytes)) continue;
    }
    const uint64_t pairs = pairLeads(leads);
    // 32 or more; 32 only where the last one ends with the block.
    const uint64_t starts = ~(pairs << 1);
    const auto characters = static_cast<uint32_t>(std::popcount(starts));
    const uint64_t isPair = _pext_u64(pairs, starts);
    const __m512i firsts = _mm512_maskz_compress_epi8(starts, bytes);
    const __m512i seconds = _mm512_maskz_compress_epi8(starts, load(at.input + 1));
    const __m512i singles = _mm512_set1_epi32(ShortTable::kSingles);
    const uint32_t count = fullVectors(least(characters, room));
    const uint32_t taken = putTwice(
        run, at.output, count, [&](uint32_t half) [[gnu::always_inline]] {
          const __m512i first = widen(firsts, half);
          const __m512i pair = _mm512_or_si512(_mm512_slli_epi32(first, 8), widen(seconds, half));
          return _mm512_mask_mov_epi32(_mm512_or_si512(first, singles),
                                       static_cast<__mmask16>(isPair >> (kLanes * half)), pair);
        });
    if (taken < count) [[unlikely]] {
      at.advance(placeOfBit(starts, taken), taken);
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

// The values of sixteen characters of up to three bytes, from each of their bytes.
KSV_IN_LOOP __m512i valuesOf(__m512i first, __m512i second, __m512i third, __mmask16 isTwo,
                             __mmask16 isThree) {
  const __m512i six = _mm512_set1_epi32(0x3F);
  const __m512i two =
      _mm512_or_si512(_mm512_slli_epi32(_mm512_and_si512(first, _mm512_set1_epi32(0x1F)), 6),
                      _mm512_and_si512(second, six));
  // Of the marker of a longer lead no bit is left.
  const __m512i three =
      _mm512_or_si512(_mm512_slli_epi32(two, 6), _mm512_and_si512(third, six));
  return _mm512_mask_mov_epi32(_mm512_mask_mov_epi32(first, isTwo, two), isThree, three);
}

// Takes a block of characters below U+0100 that are all written as one byte.
KSV_IN_LOOP bool takeLatin(const ShortRun& run, BulkPosition& at, __m512i bytes,
                           uint64_t continuations, uint64_t leads) {
  const SingleCodes& singles = *run.singles;
  const uint64_t upperLeads = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\xC3'));
  const uint64_t lowerLeads = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\xC2'));
  if ((upperLeads | lowerLeads) != leads || leads << 1 != continuations) return false;
  if (stopsIn(bytes, run.stops) != 0) return false;
  const __m512i values = _mm512_mask_add_epi8(bytes, upperLeads << 1, bytes,
                                              _mm512_set1_epi8(0x40));
  const uint64_t lastLead = leads & uint64_t{1} << 63;
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
  at.advance(kBlock - static_cast<uint32_t>(lastLead >> 63), characters);
  return true;
}

// How many of so many values are written as they are.
KSV_IN_LOOP uint32_t leadingPlain(const ClassLookup& pages, __m512i values, uint32_t count) {
  constexpr uint64_t kHighBytes = 0xAAAAAAAAAAAAAAAA;
  const __m512i classes = pages.of(values, _mm512_movepi8_mask(values));
  const uint64_t plain =
      _mm512_test_epi8_mask(classes, _mm512_set1_epi8(PlainPages::kIsPlain));
  uint32_t others = static_cast<uint32_t>(~_pext_u64(plain, kHighBytes));
  for (const StandaloneMark& mark : kStandaloneMarks) {
    others |= _mm512_cmpeq_epi16_mask(values,
                                      _mm512_set1_epi16(static_cast<int16_t>(mark.unicode)));
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

  // The values of sixteen of the first 32 characters.
  KSV_IN_LOOP __m512i values(uint32_t half) const {
    return valuesOf(widen(first, half), widen(second, half), widen(third, half),
                    static_cast<__mmask16>(isTwo >> (kLanes * half)),
                    static_cast<__mmask16>(isThree >> (kLanes * half)));
  }

  // The values of the first 32 characters, as units.
  KSV_IN_LOOP __m512i units() const {
    const __m512i six = _mm512_set1_epi16(0x3F);
    const __m512i lead = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(first));
    const __m512i two = _mm512_or_si512(
        _mm512_slli_epi16(_mm512_and_si512(lead, _mm512_set1_epi16(0x1F)), 6),
        _mm512_and_si512(_mm512_cvtepu8_epi16(_mm512_castsi512_si256(second)), six));
    const __m512i three = _mm512_or_si512(
        _mm512_slli_epi16(two, 6),
        _mm512_and_si512(_mm512_cvtepu8_epi16(_mm512_castsi512_si256(third)), six));
    return _mm512_mask_mov_epi16(_mm512_mask_mov_epi16(lead, static_cast<__mmask32>(isTwo), two),
                                 static_cast<__mmask32>(isThree), three);
  }
};

template <bool kBigEndian>
KSV_IN_LOOP __m512i swapped(__m512i units) {
  if constexpr (!kBigEndian) return units;
  const __m512i other = _mm512_broadcast_i32x4(
      _mm_set_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1));
  return _mm512_shuffle_epi8(units, other);
}

template <AsciiOutput kAscii>
constexpr bool kWritesUnits =
    kAscii == AsciiOutput::kLittleUnits || kAscii == AsciiOutput::kBigUnits;

// Takes so many values, up to 32, if they are all written as they are.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takePlain(const ClassLookup& pages, BulkPosition& at, __m512i values,
                           uint32_t count) {
  if (leadingPlain(pages, values, count) < count) return false;
  _mm512_storeu_si512(at.output, swapped<kAscii == AsciiOutput::kBigUnits>(values));
  at.output += 2 * count;
  return true;
}

template <AsciiOutput kAscii>
void runUtf8(const ShortRun& run, BulkPosition& position, uint32_t wanted) {
  const ClassLookup pages(reinterpret_cast<const uint8_t*>(run.pages->classes));
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    const uint32_t room = wanted - at.characters - kReserve;
    const __m512i bytes = load(at.input);
    if (kAscii != AsciiOutput::kOther && takeAsciiBlocks<kAscii>(run, at, wanted, bytes)) continue;
    const uint64_t twoOrMore = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8('\xC0'));
    const uint64_t continuations = _mm512_movepi8_mask(bytes) & ~twoOrMore;
    if (kAscii == AsciiOutput::kBytes && room >= kBlock &&
        takeLatin(run, at, bytes, continuations, twoOrMore)) {
      continue;
    }
    if (kAscii != AsciiOutput::kOther && takeLeadingAscii<kAscii>(run, at, room, bytes)) continue;
    const Utf8Block block(at.input, bytes, continuations, twoOrMore);
    if constexpr (kWritesUnits<kAscii>) {
      const uint32_t count = least(least(block.characters, room), 2 * kLanes);
      if (count > 0 && takePlain<kAscii>(pages, at, block.units(), count)) {
        at.advance(placeOfBit(block.ends, count), count);
        continue;
      }
    }
    const uint32_t count = fullVectors(least(block.characters, room));
    const uint32_t taken = putTwice(run, at.output, count, [&](uint32_t half)
                                    [[gnu::always_inline]] { return block.values(half); });
    if (taken < count || taken == 0) [[unlikely]] {
      at.advance(placeOfBit(block.ends, taken), taken);
      break;
    }
    at.advance(placeOfBit(block.ends, count), count);
  }
  position = at;
}

// Takes a block of units that are all ASCII; false when they are not.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takeAsciiUnitBlock(const ShortRun& run, BulkPosition& at, __m512i units) {
  constexpr uint32_t kUnits = kBlock / 2;
  if (_mm512_test_epi16_mask(units, _mm512_set1_epi16('\xFF' << 8 | 0x80)) != 0) return false;
  const __m256i bytes = _mm512_cvtepi16_epi8(units);
  if (stopsIn(_mm512_castsi256_si512(bytes), run.stops) != 0) return false;
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(at.output), bytes);
  at.output += kUnits;
  at.advance(kBlock, kUnits);
  return true;
}

template <AsciiOutput kAscii, bool kBigEndian>
void runUnits(const ShortRun& run, BulkPosition& position, uint32_t wanted) {
  const ClassLookup pages(reinterpret_cast<const uint8_t*>(run.pages->classes));
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted + kLanes) {
    const __m512i units = swapped<kBigEndian>(load(at.input));
    if (kAscii == AsciiOutput::kBytes && takeAsciiUnitBlock<kAscii>(run, at, units)) continue;
    if constexpr (kWritesUnits<kAscii>) {
      if (takePlain<kAscii>(pages, at, units, 2 * kLanes)) {
        at.advance(kBlock, 2 * kLanes);
        continue;
      }
    }
    const uint32_t taken =
        putTwice(run, at.output, 2 * kLanes, [&](uint32_t half) [[gnu::always_inline]] {
          return _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(units)
                                                 : _mm512_extracti64x4_epi64(units, 1));
        });
    if (taken < 2 * kLanes) [[unlikely]] {
      at.advance(2 * taken, taken);
      break;
    }
    at.advance(kBlock, 2 * kLanes);
  }
  position = at;
}

#pragma GCC pop_options

// Of the runs for each way to write ASCII, the one for this.
template <typename RunFor>
RunShort chosen(AsciiOutput ascii, RunFor runFor) {
  if (!hasAvx512()) return nullptr;
  switch (ascii) {
    case AsciiOutput::kBytes:
      return runFor.template operator()<AsciiOutput::kBytes>();
    case AsciiOutput::kLittleUnits:
      return runFor.template operator()<AsciiOutput::kLittleUnits>();
    case AsciiOutput::kBigUnits:
      return runFor.template operator()<AsciiOutput::kBigUnits>();
    case AsciiOutput::kOther:
      break;
  }
  return runFor.template operator()<AsciiOutput::kOther>();
}

}  // namespace

RunShort byteCodes(AsciiOutput ascii) {
  return chosen(ascii, []<AsciiOutput kAscii>() -> RunShort { return runByteCodes<kAscii>; });
}

RunShort utf8(AsciiOutput ascii) {
  return chosen(ascii, []<AsciiOutput kAscii>() -> RunShort { return runUtf8<kAscii>; });
}

RunShort twoByteUnits(AsciiOutput ascii, bool bigEndian) {
  return chosen(ascii, [bigEndian]<AsciiOutput kAscii>() -> RunShort {
    return bigEndian ? runUnits<kAscii, true> : runUnits<kAscii, false>;
  });
}

}  // namespace ksv::vector_runs
