// That no result of a batch overwrites an input or another result.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "cli/jobs/output_plan.h"
#include "cli/system/failure.h"

namespace ksv_cli {

// Inputs that cannot be converted, since nothing can be told of them; by their numbers.
using RefusedInputs = std::map<size_t, Failure>;

// Throws UsageError where one would be overwritten, and Failure for a result of which nothing can
// be told: nothing has been written by then.
RefusedInputs checkThatNothingIsOverwritten(const OutputPlan& plan,
                                            const std::vector<std::string>& inputs);

}  // namespace ksv_cli
