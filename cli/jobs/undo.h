// Takes back what runs with a manifest have converted in place.
#pragma once

#include <cstddef>
#include <string>

namespace ksv_cli {

struct UndoPlan {
  std::string manifest;
  bool isDryRun = false;
  bool tellsJson = false;
};

// jobs: how many files are worked on at once. Throws UsageError for a file that is no manifest.
// Returns the exit status; failures have been reported.
int undoConversions(const UndoPlan& plan, size_t jobs);

}  // namespace ksv_cli
