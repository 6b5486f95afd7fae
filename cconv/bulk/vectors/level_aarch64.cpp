#include <algorithm>
#include <atomic>

#include "cconv/bulk/vector_level.h"
#include "cconv/bulk/vector_runs.h"

namespace ksv::vector_runs {
namespace {

// Less than all in builds that tell how the library does without.
constinit std::atomic<VectorLevel> limit = VectorLevel::KSV_MOST_VECTORS;

}  // namespace

VectorLevel vectorLevel() {
  return std::min(VectorLevel::kNeon, limit.load(std::memory_order_relaxed));
}

void limitVectorsForTests(VectorLevel level) { limit.store(level, std::memory_order_relaxed); }

const LevelRuns& levelRuns() { return vectorLevel() == VectorLevel::kNeon ? kNeonRuns : kNoRuns; }

}  // namespace ksv::vector_runs
