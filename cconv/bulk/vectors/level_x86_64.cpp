#include <algorithm>
#include <atomic>

#include "cconv/bulk/vector_level.h"
#include "cconv/bulk/vector_runs.h"
#include "common/x86_64_processor.h"

namespace ksv::vector_runs {
namespace {

using x86_64::hasAll;

// Less than all in builds that tell how the library does on lesser processors.
constinit std::atomic<VectorLevel> limit = VectorLevel::KSV_MOST_VECTORS;

VectorLevel processorLevel() {
  const x86_64::Leaf basic(1);
  const x86_64::Leaf extended(7);
  if (!hasAll(basic.c, bit_SSSE3 | bit_SSE4_1 | bit_POPCNT)) return VectorLevel::kNone;
  if (!x86_64::hasAvx2(basic, extended) || !hasAll(extended.b, bit_BMI)) return VectorLevel::kSse41;
  const bool avx512 =
      hasAll(x86_64::keptRegisters(basic), x86_64::kZmm) &&
      hasAll(extended.b, bit_AVX512F | bit_AVX512BW | bit_AVX512VL | bit_AVX512DQ | bit_BMI2) &&
      hasAll(extended.c, bit_AVX512VBMI | bit_AVX512VBMI2);
  return avx512 ? VectorLevel::kAvx512 : VectorLevel::kAvx2;
}

}  // namespace

VectorLevel vectorLevel() {
  static const VectorLevel level = processorLevel();
  return std::min(level, limit.load(std::memory_order_relaxed));
}

void limitVectorsForTests(VectorLevel level) { limit.store(level, std::memory_order_relaxed); }

const LevelRuns& levelRuns() {
  switch (vectorLevel()) {
    case VectorLevel::kAvx512:
      return kAvx512Runs;
    case VectorLevel::kAvx2:
      return kAvx2Runs;
    case VectorLevel::kSse41:
      return kSse41Runs;
    case VectorLevel::kNeon:
    case VectorLevel::kNone:
      break;
  }
  return kNoRuns;
}

}  // namespace ksv::vector_runs
