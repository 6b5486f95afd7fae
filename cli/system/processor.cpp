#include "cli/system/processor.h"

#include "cconv/bulk/vector_level.h"

namespace ksv_cli {

const char* vectorInstructions() {
  using ksv::vector_runs::VectorLevel;
  switch (ksv::vector_runs::vectorLevel()) {
    case VectorLevel::kAvx512:
      return "AVX-512";
    case VectorLevel::kAvx2:
      return "AVX2";
    case VectorLevel::kSse41:
      return "SSE4.1";
    case VectorLevel::kNeon:
      return "NEON";
    case VectorLevel::kNone:
      break;
  }
  return "none";
}

}  // namespace ksv_cli
