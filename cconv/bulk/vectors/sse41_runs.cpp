// Runs with the SSE4.1 instructions of x86-64.
#include <immintrin.h>

#include <algorithm>
#include <bit>

#include "cconv/bulk/unicode_sources.h"
#include "cconv/bulk/vector_runs.h"
#include "cconv/bulk/vectors/chosen_run.h"
#include "cconv/bulk/vectors/shifted_places.h"
#include "cconv/bulk/vectors/target_region.h"
#include "cconv/bulk/window_tables.h"
#include "cconv/engine/composition.h"
#include "common/byte_order.h"

KSV_TARGET_BEGIN("ssse3,sse4.1,popcnt")

namespace ksv::vector_runs::by_windows {
namespace {

constexpr uint32_t kWindows = 1;

}  // namespace
}  // namespace ksv::vector_runs::by_windows

#include "cconv/bulk/vectors/rows_sse41.h"
#include "cconv/bulk/vectors/window_runs.h"

KSV_TARGET_END

namespace ksv::vector_runs {

constinit const LevelRuns kSse41Runs = by_windows::kRuns;

}  // namespace ksv::vector_runs
