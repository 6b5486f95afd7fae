#include <algorithm>
#include <atomic>

#include "cconv/bulk/vector_level.h"
#include "common/x86_64_processor.h"

namespace ksv::vector_runs {
namespace {

using x86_64::hasAll;

constinit std::atomic<VectorLevel> limit = VectorLevel::kAvx512;

VectorLevel processorLevel() {
  const x86_64::Leaf basic(1);
  const x86_64::Leaf extended(7);
  if (!hasAll(basic.c, bit_SSSE3 | bit_SSE4_1)) return VectorLevel::kNone;
  if (!x86_64::hasAvx2(basic, extended)) return VectorLevel::kSse41;
  const bool avx512 = hasAll(x86_64::keptRegisters(basic), x86_64::kZmm) &&
                      hasAll(basic.c, bit_POPCNT) &&
                      hasAll(extended.b, bit_AVX512F | bit_AVX512BW | bit_AVX512VL | bit_AVX512DQ |
                                             bit_BMI | bit_BMI2) &&
                      hasAll(extended.c, bit_AVX512VBMI | bit_AVX512VBMI2);
  return avx512 ? VectorLevel::kAvx512 : VectorLevel::kAvx2;
}

}  // namespace

VectorLevel vectorLevel() {
  static const VectorLevel level = processorLevel();
  return std::min(level, limit.load(std::memory_order_relaxed));
}

void limitVectorsForTests(VectorLevel level) { limit.store(level, std::memory_order_relaxed); }

}  // namespace ksv::vector_runs
