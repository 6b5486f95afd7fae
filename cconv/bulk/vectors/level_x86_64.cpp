#include <cpuid.h>

#include <algorithm>
#include <atomic>

#include "cconv/bulk/vector_level.h"

// The processor is asked directly: what compilers offer for it comes with an initialiser
// that runs when the library is loaded.

namespace ksv::vector_runs {
namespace {

constinit std::atomic<VectorLevel> limit = VectorLevel::kAvx512;

// What a leaf of the CPUID instruction says; zeros where there is no such leaf.
struct Leaf {
  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
  uint32_t d = 0;

  explicit Leaf(uint32_t number) { __get_cpuid_count(number, 0, &a, &b, &c, &d); }
};

constexpr bool hasAll(uint32_t features, uint32_t wanted) { return (features & wanted) == wanted; }

// The registers that the system keeps for each thread.
uint32_t keptRegisters(const Leaf& basic) {
  if (!hasAll(basic.c, bit_OSXSAVE)) return 0;
  uint32_t low = 0;
  uint32_t high = 0;
  asm("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

VectorLevel processorLevel() {
  constexpr uint32_t kYmm = 0x06;
  constexpr uint32_t kZmm = 0xE6;
  const Leaf basic(1);
  const Leaf extended(7);
  if (!hasAll(basic.c, bit_SSSE3 | bit_SSE4_1)) return VectorLevel::kNone;
  const uint32_t kept = keptRegisters(basic);
  if (!hasAll(kept, kYmm) || !hasAll(basic.c, bit_AVX) || !hasAll(extended.b, bit_AVX2))
    return VectorLevel::kSse41;
  const bool avx512 = hasAll(kept, kZmm) && hasAll(basic.c, bit_POPCNT) &&
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
