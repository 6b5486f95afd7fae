// Which vector instructions the processor has that the program finds itself on.
#pragma once

#include <cstdint>

namespace ksv::vector_runs {

enum class VectorLevel : uint8_t {
  kNone,
  kNeon,   // every aarch64
  kSse41,  // x86-64 with SSSE3, SSE4.1 and POPCNT
  kAvx2,   // with BMI1
  kAvx512  // with what moves bytes: BW, VL, DQ, VBMI, VBMI2, and BMI2 beside it
};

VectorLevel vectorLevel();

// For tests: as if the processor had no more than that. Holds for what is derived later.
void limitVectorsForTests(VectorLevel level);

}  // namespace ksv::vector_runs
