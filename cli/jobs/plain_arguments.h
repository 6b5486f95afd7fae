// Command lines of whole options and operands, as nearly all are.
#pragma once

#include <string>
#include <vector>

#include "cli/jobs/recorded_options.h"

namespace ksv_cli {

// The job that was asked for, with all values in their places. Null, and nothing changed, for
// everything that is not plain: where the library's parser may read the line otherwise, or refuses
// it, or has something to tell.
const RecordedJob* readPlainArguments(const RecordedCommand& command,
                                      const std::vector<std::string>& arguments);

}  // namespace ksv_cli
