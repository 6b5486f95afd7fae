// That no result of a batch overwrites an input or another result.
#pragma once

#include "cli/jobs/operands.h"
#include "cli/jobs/output_plan.h"

namespace ksv_cli {

// Throws UsageError where one would be overwritten, and Failure for a result of which nothing can
// be told: nothing has been written by then. Returns the inputs that are refused, with those of
// which nothing can be told.
RefusedInputs checkThatNothingIsOverwritten(const OutputPlan& plan, const Inputs& inputs);

}  // namespace ksv_cli
