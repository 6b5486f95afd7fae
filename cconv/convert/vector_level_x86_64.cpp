#include <algorithm>
#include <atomic>

#include "cconv/convert/vector_level.h"

namespace ksv::vector_runs {
namespace {

constinit std::atomic<VectorLevel> limit = VectorLevel::kAvx512;

bool hasAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
         __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
         __builtin_cpu_supports("popcnt");
}

VectorLevel processorLevel() {
  if (hasAvx512()) return VectorLevel::kAvx512;
  if (__builtin_cpu_supports("avx2")) return VectorLevel::kAvx2;
  const bool sse41 = __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("sse4.1");
  return sse41 ? VectorLevel::kSse41 : VectorLevel::kNone;
}

}  // namespace

VectorLevel vectorLevel() {
  return std::min(processorLevel(), limit.load(std::memory_order_relaxed));
}

void limitVectors(VectorLevel level) { limit.store(level, std::memory_order_relaxed); }

}  // namespace ksv::vector_runs
