// How much a job that works on several files tells on standard error.
#pragma once

#include "cli/jobs/options.h"
#include "cli/system/failure.h"

namespace ksv_cli {

enum class Verbosity {
  kQuiet,   // what gives exit status 1
  kUsual,   // and what somebody has to know of a text
  kVerbose  // and what was done with each, with the sums
};

struct VerbosityOptions {
  bool quiet = false;
  bool verbose = false;

  // Throws UsageError.
  Verbosity chosen() const {
    if (quiet && verbose) throw UsageError("--quiet and --verbose contradict each other");
    return quiet ? Verbosity::kQuiet : verbose ? Verbosity::kVerbose : Verbosity::kUsual;
  }
};

// options has to stay until the work is done. verbose: what the help says of that.
inline void addVerbosity(Subcommand& job, VerbosityOptions& options, const char* verbose) {
  job.flag("--quiet", options.quiet, "Tell only what gives exit status 1");
  job.flag("--verbose", options.verbose, verbose);
}

inline constexpr char kTellsSums[] = "Tell the sums at the end, on standard error";

}  // namespace ksv_cli
