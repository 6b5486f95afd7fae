// What has become of a text that a manifest tells of, and of the original that was kept of it.
#pragma once

#include <string>

#include "cli/jobs/run_history.h"

namespace ksv_cli {

// The sum of a file, unless it changes meanwhile; empty: there is none. Throws Failure.
std::string sumOfFile(const std::string& path);

// The file is left alone where another program has written to it.
inline constexpr char kIsChanged[] = " has been changed since it was converted, and is left alone";

// Whether the result has another place than the text.
bool isElsewhere(const ConversionRecord& past);

// Ends what a run that was killed had begun with the names of a file and its original. True: the
// file had no name left but that of its original, and has its own again. Throws Failure.
bool settle(const ConversionRecord& past);

// The name under which a run writes what is to stand at a place: a file that is left there can be
// told from those of others.
std::string passingNameFor(const std::string& run, const std::string& place);

}  // namespace ksv_cli
