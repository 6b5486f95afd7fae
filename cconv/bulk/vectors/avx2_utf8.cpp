// Runs from UTF-8 to units of two bytes with the AVX2 instructions of x86-64.
#include <immintrin.h>

#include <algorithm>
#include <bit>

#include "cconv/bulk/unicode_sources.h"
#include "cconv/bulk/vector_runs.h"
#include "cconv/bulk/vectors/target_region.h"
#include "cconv/engine/composition.h"

KSV_TARGET_BEGIN("avx2")

namespace ksv::vector_runs {
namespace {

constexpr uint32_t kWindows = 2;

}  // namespace
}  // namespace ksv::vector_runs

#include "cconv/bulk/vectors/utf8_windows_x86_64.h"

namespace ksv::vector_runs {
namespace {

KSV_IN_LOOP Bytes loaded(const uint8_t* bytes, uint32_t step) {
  return as<Bytes>(_mm256_set_m128i(window(bytes + step), window(bytes)));
}

KSV_IN_LOOP void store(Bytes bytes, uint8_t* output, uint32_t step) {
  const auto both = as<__m256i>(bytes);
  storeWindow(output, _mm256_castsi256_si128(both));
  storeWindow(output + step, _mm256_extracti128_si256(both, 1));
}

KSV_IN_LOOP Bytes repeated(const uint8_t (&bytes)[16]) {
  return as<Bytes>(_mm256_broadcastsi128_si256(window(bytes)));
}

KSV_IN_LOOP Bytes shuffled(Bytes bytes, Bytes places) {
  return as<Bytes>(_mm256_shuffle_epi8(as<__m256i>(bytes), as<__m256i>(places)));
}

KSV_IN_LOOP uint32_t signs(Bytes bytes) {
  return static_cast<uint32_t>(_mm256_movemask_epi8(as<__m256i>(bytes)));
}

}  // namespace
}  // namespace ksv::vector_runs

KSV_TARGET_END

namespace ksv::vector_runs {

RunFunction utf8ToUnitsAvx2(AsciiOutput ascii) { return utf8ToUnits(ascii); }

}  // namespace ksv::vector_runs
