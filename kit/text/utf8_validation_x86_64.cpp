#include <immintrin.h>

#include <array>
#include <cstring>

#include "common/x86_64_processor.h"
#include "kit/text/utf8_validation.h"

namespace ksv_kit {
namespace {

#define KSV_WITH_AVX2 __attribute__((target("avx2")))

constexpr size_t kBlock = 32;

// A set of halves of bytes, a bit each.
using Nibbles = uint16_t;
constexpr Nibbles kAnyNibble = 0xFFFF;
constexpr Nibbles between(int first, int last) {
  Nibbles set = 0;
  for (int nibble = first; nibble <= last; ++nibble) set |= static_cast<Nibbles>(1 << nibble);
  return set;
}
constexpr Nibbles kAscii = between(0x0, 0x7);
constexpr Nibbles kContinuation = between(0x8, 0xB);
constexpr Nibbles kLead = between(0xC, 0xF);

// Pairs of bytes that are a fault, by the halves of the first and the upper half of the second.
struct Fault {
  Nibbles firstUpper;
  Nibbles firstLower;
  Nibbles secondUpper;
};
constexpr Fault kFaults[8] = {
    {kLead, kAnyNibble, static_cast<Nibbles>(~kContinuation)},  // a character is cut short
    {kAscii, kAnyNibble, kContinuation},                        // a continuation of nothing
    {between(0xC, 0xC), between(0x0, 0x1), kContinuation},      // C0, C1
    {between(0xE, 0xE), between(0x0, 0x0), between(0x8, 0x9)},  // E0: below U+0800
    {between(0xE, 0xE), between(0xD, 0xD), between(0xA, 0xB)},  // ED: a surrogate
    {between(0xF, 0xF), between(0x4, 0xF), between(0x9, 0xB)},  // F4 and above: beyond U+10FFFF
    // F0: below U+10000; F5 and above: no lead at all
    {between(0xF, 0xF), static_cast<Nibbles>(between(0x0, 0x0) | between(0x5, 0xF)),
     between(0x8, 0x8)},
    // The eighth bit, 80: two continuations, which is right where a lead of three or four stands in
    // front of them.
    {kContinuation, kAnyNibble, kContinuation},
};

// For each nibble the faults whose set has it, twice: a table for each half of a vector.
constexpr std::array<uint8_t, kBlock> tableOf(Nibbles Fault::*set) {
  std::array<uint8_t, kBlock> table{};
  for (size_t nibble = 0; nibble < kBlock; ++nibble)
    for (int fault = 0; fault < 8; ++fault)
      if ((kFaults[fault].*set >> (nibble % 16) & 1) != 0)
        table[nibble] = static_cast<uint8_t>(table[nibble] | 1 << fault);
  return table;
}
constexpr auto kFirstUpper = tableOf(&Fault::firstUpper);
constexpr auto kFirstLower = tableOf(&Fault::firstLower);
constexpr auto kSecondUpper = tableOf(&Fault::secondUpper);

KSV_WITH_AVX2 inline __m256i load(const void* bytes) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(bytes));
}

KSV_WITH_AVX2 inline __m256i upperHalves(__m256i bytes) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
}

// The bytes that stand so many places in front of these.
template <int kPlaces>
KSV_WITH_AVX2 inline __m256i inFront(__m256i bytes, __m256i former) {
  const __m256i joined = _mm256_permute2x128_si256(former, bytes, 0x21);
  return _mm256_alignr_epi8(bytes, joined, 16 - kPlaces);
}

KSV_WITH_AVX2 inline __m256i faultsOf(__m256i bytes, __m256i former) {
  const __m256i first = inFront<1>(bytes, former);
  const __m256i lower = _mm256_and_si256(first, _mm256_set1_epi8(0x0F));
  const __m256i pairs = _mm256_and_si256(
      _mm256_and_si256(_mm256_shuffle_epi8(load(kFirstUpper.data()), upperHalves(first)),
                       _mm256_shuffle_epi8(load(kFirstLower.data()), lower)),
      _mm256_shuffle_epi8(load(kSecondUpper.data()), upperHalves(bytes)));
  // Behind E0 and above by two, behind F0 and above by three: 80 where a continuation has to be.
  const __m256i third = _mm256_subs_epu8(inFront<2>(bytes, former), _mm256_set1_epi8(0x60));
  const __m256i fourth = _mm256_subs_epu8(inFront<3>(bytes, former), _mm256_set1_epi8(0x70));
  const __m256i wanted =
      _mm256_and_si256(_mm256_or_si256(third, fourth), _mm256_set1_epi8(static_cast<char>(0x80)));
  return _mm256_xor_si256(wanted, pairs);
}

KSV_WITH_AVX2 bool isUtf8(const uint8_t* text, size_t length) {
  __m256i former = _mm256_setzero_si256();
  __m256i faults = _mm256_setzero_si256();
  bool formerIsAscii = true;
  size_t at = 0;
  for (; at + kBlock <= length; at += kBlock) {
    const __m256i bytes = load(text + at);
    const bool isAscii = _mm256_movemask_epi8(bytes) == 0;
    if (!isAscii || !formerIsAscii) faults = _mm256_or_si256(faults, faultsOf(bytes, former));
    former = bytes;
    formerIsAscii = isAscii;
  }
  // Zeroes behind the end show a character that it cuts.
  alignas(kBlock) uint8_t rest[kBlock] = {};
  std::memcpy(rest, text + at, length - at);
  faults = _mm256_or_si256(faults, faultsOf(load(rest), former));
  return _mm256_testz_si256(faults, faults) != 0;
}

}  // namespace

bool isSurelyUtf8(const uint8_t* text, size_t length) {
  static const bool hasAvx2 = ksv::x86_64::hasAvx2(ksv::x86_64::Leaf(1), ksv::x86_64::Leaf(7));
  return hasAvx2 && isUtf8(text, length);
}

}  // namespace ksv_kit
