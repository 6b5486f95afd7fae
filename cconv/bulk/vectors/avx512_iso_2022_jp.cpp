// Runs over ISO-2022-JP (RFC 1468) with the AVX-512 instructions of x86-64.
#include "cconv/bulk/vectors/avx512_iso_2022_jp.h"

#include "cconv/bulk/vectors/avx512_block.h"
#include "cconv/bulk/vectors/shifted_places.h"

namespace ksv::vector_runs {
namespace {

KSV_TARGET_BEGIN(KSV_AVX512)

KSV_IN_LOOP uint64_t equals(__m512i bytes, char c) {
  return _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(c));
}

KSV_IN_LOOP ShiftedBytes shiftedBytes(const ShiftedTables& run, const uint8_t* input,
                                      __m512i bytes) {
  const __m512i second = load(input + 1);
  const __m512i third = load(input + 2);
  const uint64_t escape = equals(bytes, 0x1B);
  return {escape & equals(second, '$') & equals(third, run.pairFinal),
          escape & equals(second, '(') & equals(third, run.singleFinal),
          _mm512_cmpgt_epi8_mask(bytes, _mm512_set1_epi8(0x20)) & ~equals(bytes, 0x7F),
          notAscii(run.singles, bytes)};
}

// The characters of a block, and where each of them stands.
struct ShiftedBlock : ShiftedPlaces {
  uint32_t characters;

  KSV_IN_LOOP ShiftedBlock(const ShiftedBytes& bytes, bool beginsInDouble)
      : ShiftedPlaces(bytes, beginsInDouble),
        characters(static_cast<uint32_t>(std::popcount(starts))) {}

  // The byte behind so many characters, one or more.
  KSV_IN_LOOP uint32_t behind(uint32_t count) const {
    const uint32_t last = placeOfBit(starts, count - 1);
    return last + 1 + static_cast<uint32_t>(pairs >> last & 1);
  }
};

// The entries of ASCII, up to sixteen.
template <AsciiOutput kAscii>
KSV_IN_LOOP __m512i asciiEntries(__m512i codes, uint32_t lanes) {
  constexpr uint32_t kLength = kAscii == AsciiOutput::kBytes ? 1 : 2;
  const __m512i code = kAscii == AsciiOutput::kBigUnits ? _mm512_slli_epi32(codes, 8) : codes;
  return _mm512_maskz_or_epi32(static_cast<__mmask16>(lanes), code,
                               _mm512_set1_epi32(static_cast<int>(kIsShortEntry | kLength << 24)));
}

// Goes on behind so many characters; what is designated there stays so.
KSV_IN_LOOP void goBehind(const ShiftedTables& run, BulkPosition& at, const ShiftedBlock& block,
                          uint32_t count) {
  const uint32_t behind = block.behind(count);
  at.decoderState = (block.inDouble >> (behind - 1) & 1) != 0 ? run.pairGroup : run.singleGroup;
  at.advance(behind, count);
}

template <AsciiOutput kAscii>
void runIso2022Jp(const ShiftedTables& run, BulkPosition& position, uint32_t wanted) {
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    const uint32_t room = wanted - at.characters - kReserve;
    const __m512i bytes = load(at.input);
    const bool inDouble = at.decoderState == run.pairGroup;
    if (!inDouble && takeAsciiBlocks<kAscii>(run.singles, at, wanted, bytes)) continue;
    const ShiftedBlock block(shiftedBytes(run, at.input, bytes), inDouble);
    if (block.characters == 0) break;
    const PairBlock codes(at.input, bytes, block.starts, block.pairs);
    const auto entriesOf = [&](uint32_t half, uint32_t lanes) __attribute__((always_inline)) {
      const uint32_t pairLanes = lanes & codes.pairLanes(half);
      const __m512i singles = asciiEntries<kAscii>(codes.first(half), lanes & ~pairLanes);
      return entriesAt(run.pairs, codes.code(half), pairLanes, singles);
    };
    const uint32_t count = least(least(block.characters, room), 2 * kLanes);
    const uint32_t taken = putHalves<false>(run.pairs, at, count, entriesOf);
    if (taken < count) [[unlikely]] {
      if (taken > 0) goBehind(run, at, block, taken);
      break;
    }
    goBehind(run, at, block, count);
  }
  position = at;
}

KSV_TARGET_END

}  // namespace

ShiftedRunFunction iso2022JpAvx512(AsciiOutput ascii) {
  if (ascii == AsciiOutput::kOther) return nullptr;
  return chosenRun(ascii,
                   []<AsciiOutput kAscii>() -> ShiftedRunFunction { return runIso2022Jp<kAscii>; });
}

}  // namespace ksv::vector_runs
