// Runs with the vector instructions of aarch64.
#include <arm_neon.h>

#include <algorithm>
#include <bit>

#include "cconv/bulk/unicode_sources.h"
#include "cconv/bulk/vector_runs.h"
#include "cconv/bulk/vectors/chosen_run.h"
#include "cconv/bulk/vectors/shifted_places.h"
#include "cconv/bulk/window_tables.h"
#include "cconv/engine/composition.h"
#include "common/byte_order.h"

namespace ksv::vector_runs::by_windows {
namespace {

constexpr uint32_t kWindows = 1;

}  // namespace
}  // namespace ksv::vector_runs::by_windows

#include "cconv/bulk/vectors/window_aarch64.h"
#include "cconv/bulk/vectors/window_runs.h"

namespace ksv::vector_runs {

constinit const LevelRuns kNeonRuns = by_windows::kRuns;

}  // namespace ksv::vector_runs
