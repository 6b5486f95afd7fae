// What the runs with the AVX-512 instructions of x86-64 are made of.
#pragma once

#include <immintrin.h>

#include <bit>

#include "cconv/bulk/bulk_run.h"
#include "cconv/bulk/vectors/chosen_run.h"
#include "cconv/bulk/vectors/shifted_places.h"
#include "cconv/bulk/vectors/target_region.h"

namespace ksv::vector_runs {

KSV_TARGET_BEGIN(KSV_AVX512)

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

KSV_IN_LOOP __m512i byteOfLanes(uint32_t place) {
  // A byte of each 32 bits, four times.
  return _mm512_add_epi8(
      _mm512_broadcast_i32x4(_mm_set_epi32(0x0C0C0C0C, 0x08080808, 0x04040404, 0)),
      _mm512_set1_epi8(static_cast<char>(place)));
}

// Puts out sixteen entries, of which so many are meant.
KSV_IN_LOOP void putPlainly(BulkPosition& at, __m512i entries, uint32_t count) {
  const __m512i lengths = _mm512_shuffle_epi8(entries, byteOfLanes(3));
  const __m512i longerThan = _mm512_set1_epi32(static_cast<int>(0xFF828180));
  uint64_t bytes = _mm512_cmpgt_epu8_mask(lengths, longerThan);
  // A branch, since what follows must not wait for the entries.
  if (count < kLanes) bytes &= lowBits(4 * count);
  _mm512_storeu_si512(at.output, _mm512_maskz_compress_epi8(bytes, entries));
  at.output += std::popcount(bytes);
}

// Has what instructions that unpack 128 bits at a time leave in order.
KSV_IN_LOOP __m512i spread(__m512i row) {
  return _mm512_permutexvar_epi64(_mm512_set_epi64(7, 3, 6, 2, 5, 1, 4, 0), row);
}

// Two rows of sixteen, as eight pairs and eight more.
KSV_IN_LOOP void pairUp(__m512i first, __m512i second, __m512i& low, __m512i& high) {
  const __m512i one = spread(first);
  const __m512i other = spread(second);
  low = _mm512_unpacklo_epi32(one, other);
  high = _mm512_unpackhi_epi32(one, other);
}

// Puts out eight escape sequences and codes side by side, of the lengths beside each
// other.
KSV_IN_LOOP void putPairs(BulkPosition& at, __m512i pairs, __m512i lengths, uint32_t count) {
  const __m512i longerThan = _mm512_set1_epi32(0x03020100);
  const uint64_t bytes =
      _mm512_cmpgt_epu8_mask(_mm512_shuffle_epi8(lengths, byteOfLanes(0)), longerThan) &
      lowBits(8 * count);
  _mm512_storeu_si512(at.output, _mm512_maskz_compress_epi8(bytes, pairs));
  at.output += std::popcount(bytes);
}

KSV_IN_LOOP __m512i groupsOf(__m512i entries) {
  return _mm512_and_si512(_mm512_srli_epi32(entries, kShortGroupShift),
                          _mm512_set1_epi32(kMostShortGroup));
}

// Of which entries the run has the escape sequence.
KSV_IN_LOOP uint32_t designable(const RunTables& run, __m512i entries) {
  const __m512i lengths =
      _mm512_permutexvar_epi32(groupsOf(entries), _mm512_loadu_si512(run.designations->lengths));
  return _mm512_test_epi32_mask(lengths, lengths);
}

// The same with an escape sequence wherever the group changes.
KSV_IN_LOOP void putDesignating(const RunTables& run, BulkPosition& at, __m512i entries,
                                uint32_t count) {
  const __m512i groups = groupsOf(entries);
  const __m512i current = _mm512_set1_epi32(static_cast<int>(designationIndex(at.designatedGroup)));
  const __mmask16 changes =
      _mm512_cmpneq_epi32_mask(groups, _mm512_alignr_epi32(groups, current, kLanes - 1));
  const __m512i escapes =
      _mm512_permutexvar_epi32(groups, _mm512_loadu_si512(run.designations->escapes));
  const __m512i escapeLengths = _mm512_maskz_permutexvar_epi32(
      changes, groups, _mm512_loadu_si512(run.designations->lengths));
  const __m512i codeLengths =
      _mm512_and_si512(_mm512_srli_epi32(entries, 24), _mm512_set1_epi32(3));
  __m512i pairs[2];
  __m512i lengths[2];
  pairUp(escapes, entries, pairs[0], pairs[1]);
  pairUp(escapeLengths, codeLengths, lengths[0], lengths[1]);
  putPairs(at, pairs[0], lengths[0], least(count, kLanes / 2));
  putPairs(at, pairs[1], lengths[1], count - least(count, kLanes / 2));
  if (count == 0) return;
  const auto last = static_cast<__mmask16>(1u << (count - 1));
  at.designatedGroup = designatedGroupAt(static_cast<uint32_t>(
      _mm_cvtsi128_si32(_mm512_castsi512_si128(_mm512_maskz_compress_epi32(last, groups)))));
}

// Puts out up to sixteen entries; how many, up to the first that is none. One whose group
// has come with another thread, since the run copied the sequences, is none.
template <bool kDesignates>
KSV_IN_LOOP uint32_t putEntries(const RunTables& run, BulkPosition& at, __m512i entries,
                                uint32_t count) {
  uint32_t known = _mm512_movepi32_mask(entries);
  if constexpr (kDesignates) known &= designable(run, entries);
  if (known != _bzhi_u32(0xFFFF, count)) [[unlikely]]
    count = static_cast<uint32_t>(std::countr_one(known));
  if constexpr (kDesignates) {
    putDesignating(run, at, entries, count);
  } else {
    putPlainly(at, entries, count);
  }
  return count;
}

// The entries of up to sixteen indexes. They are read without the ceremony of an atomic
// load: each is read whole, and says all by itself.
KSV_IN_LOOP __m512i entriesAt(const RunTables& run, __m512i indexes, uint32_t lanes,
                              __m512i otherwise) {
  return _mm512_mask_i32gather_epi32(otherwise, static_cast<__mmask16>(lanes), indexes, run.slots,
                                     sizeof(ShortEntry));
}

// Sixteen of 32 units.
KSV_IN_LOOP __m512i widenUnits(__m512i units, uint32_t half) {
  return _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(units)
                                         : _mm512_extracti64x4_epi64(units, 1));
}

// Sixteen of the first 32 bytes.
KSV_IN_LOOP __m512i widen(__m512i bytes, uint32_t half) {
  return _mm512_cvtepu8_epi32(half == 0 ? _mm512_castsi512_si128(bytes)
                                        : _mm512_extracti32x4_epi32(bytes, 1));
}

// Puts out up to 32 entries, of which entriesOf gives a half each; how many, up to the
// first that is none.
template <bool kDesignates, typename EntriesOf>
KSV_IN_LOOP uint32_t putHalves(const RunTables& run, BulkPosition& at, uint32_t count,
                               EntriesOf entriesOf) {
  const uint32_t first = least(count, kLanes);
  const uint32_t lanes = _bzhi_u32(0xFFFF, first);
  const uint32_t taken = putEntries<kDesignates>(run, at, entriesOf(0, lanes), first);
  if (taken < kLanes) return taken;
  if (count == kLanes) return taken;
  const uint32_t second = count - kLanes;
  return kLanes + putEntries<kDesignates>(run, at, entriesOf(1, _bzhi_u32(0xFFFF, second)), second);
}

// Of so many characters as are at hand, those to take: vectors full of them as long as
// there are enough, so that the number is mostly the same.
KSV_IN_LOOP uint32_t fullVectors(uint32_t characters) {
  if (characters >= 2 * kLanes) return 2 * kLanes;
  return characters >= kLanes ? kLanes : characters;
}

// Whether ASCII is written as it is where the conversion stands.
template <AsciiOutput kAscii, bool kDesignates>
KSV_IN_LOOP bool mayTakeAscii(const RunTables& run, const BulkPosition& at) {
  return kAscii != AsciiOutput::kOther &&
         (!kDesignates || at.designatedGroup == run.designations->asciiGroup);
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
  const __m512i one = spread(first);
  const __m512i other = spread(second);
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

KSV_IN_LOOP uint64_t notAscii(const RunTables& run, __m512i bytes) {
  return _mm512_movepi8_mask(bytes) | stopsIn(bytes, run.stops);
}

// Takes blocks of ASCII, two or more. A single one is left to what takes other
// characters as well: where they are strewn in, its coming could not be foreseen.
template <AsciiOutput kAscii>
KSV_IN_LOOP bool takeAsciiBlocks(const RunTables& run, BulkPosition& at, uint32_t wanted,
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
KSV_IN_LOOP bool takeLeadingAscii(const RunTables& run, BulkPosition& at, uint32_t room,
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

// Characters of one or two bytes, sorted by their bytes.
struct PairBlock {
  uint64_t isPair;
  __m512i firsts;
  __m512i seconds;

  KSV_IN_LOOP PairBlock(const uint8_t* input, __m512i bytes, uint64_t starts, uint64_t pairs)
      : isPair(_pext_u64(pairs, starts)),
        firsts(_mm512_maskz_compress_epi8(starts, bytes)),
        seconds(_mm512_maskz_compress_epi8(starts, load(input + 1))) {}

  // Of sixteen of the first 32: which are pairs, the first bytes, and both as one code.
  KSV_IN_LOOP uint32_t pairLanes(uint32_t half) const {
    return static_cast<uint32_t>(isPair >> (kLanes * half));
  }
  KSV_IN_LOOP __m512i first(uint32_t half) const { return widen(firsts, half); }
  KSV_IN_LOOP __m512i code(uint32_t half) const {
    return _mm512_or_si512(_mm512_slli_epi32(first(half), 8), widen(seconds, half));
  }
};

KSV_TARGET_END

}  // namespace ksv::vector_runs
