// Processors whose vector instructions are not made use of.
#include "cconv/bulk/vector_level.h"
#include "cconv/bulk/vector_runs.h"

namespace ksv::vector_runs {

VectorLevel vectorLevel() { return VectorLevel::kNone; }
void limitVectorsForTests(VectorLevel) {}
const LevelRuns& levelRuns() { return kNoRuns; }

}  // namespace ksv::vector_runs
