// Runs from UTF-8 to units of two bytes with the AVX2 instructions of x86-64.
#include <immintrin.h>

#include <algorithm>
#include <bit>

#include "cconv/convert/composition.h"
#include "cconv/convert/source_forms.h"
#include "cconv/convert/vector_runs.h"

#pragma GCC push_options
#pragma GCC target("avx2")

namespace ksv::vector_runs {
namespace {

struct Vector {
  static constexpr uint32_t kWindows = 2;
  static constexpr uint32_t kSigns = 0xFFFFFFFF;

  __m256i bits;

  KSV_IN_LOOP static __m128i window(const uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  }
  // Two windows, so many bytes apart.
  KSV_IN_LOOP static Vector load(const uint8_t* bytes, uint32_t step) {
    return {_mm256_inserti128_si256(_mm256_castsi128_si256(window(bytes)), window(bytes + step), 1)};
  }
  KSV_IN_LOOP void store(uint8_t* output, uint32_t step) const {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(output), _mm256_castsi256_si128(bits));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(output + step), _mm256_extracti128_si256(bits, 1));
  }
  KSV_IN_LOOP static Vector repeat(const uint8_t (&bytes)[16]) {
    return {_mm256_broadcastsi128_si256(window(bytes))};
  }
  KSV_IN_LOOP static Vector of16(uint16_t value) {
    return {_mm256_set1_epi16(static_cast<int16_t>(value))};
  }

  KSV_IN_LOOP friend Vector operator&(Vector a, Vector b) {
    return {_mm256_and_si256(a.bits, b.bits)};
  }
  KSV_IN_LOOP friend Vector operator|(Vector a, Vector b) {
    return {_mm256_or_si256(a.bits, b.bits)};
  }
  KSV_IN_LOOP Vector andNot(Vector other) const {
    return {_mm256_andnot_si256(bits, other.bits)};
  }
  template <int kBits>
  KSV_IN_LOOP Vector shiftedLeft() const {
    return {_mm256_slli_epi16(bits, kBits)};
  }
  template <int kBits>
  KSV_IN_LOOP Vector shiftedRight() const {
    return {_mm256_srli_epi16(bits, kBits)};
  }
  KSV_IN_LOOP Vector shuffled(Vector places) const {
    return {_mm256_shuffle_epi8(bits, places.bits)};
  }
  KSV_IN_LOOP Vector equals8(Vector other) const {
    return {_mm256_cmpeq_epi8(bits, other.bits)};
  }
  KSV_IN_LOOP Vector equals16(Vector other) const {
    return {_mm256_cmpeq_epi16(bits, other.bits)};
  }
  KSV_IN_LOOP Vector greater16(Vector other) const {
    return {_mm256_cmpgt_epi16(bits, other.bits)};
  }
  KSV_IN_LOOP uint32_t signs() const {
    return static_cast<uint32_t>(_mm256_movemask_epi8(bits));
  }
};

}  // namespace
}  // namespace ksv::vector_runs

#include "cconv/convert/vector_unicode_x86_64.h"

#pragma GCC pop_options

namespace ksv::vector_runs {

RunShort utf8ToUnitsAvx2(AsciiOutput ascii) { return utf8ToUnits(ascii); }

}  // namespace ksv::vector_runs
