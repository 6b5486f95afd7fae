// What is wrong with a charset directory. The library loads what it can and passes over
// the rest in silence; here it is told.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "cli/charsets/table_lint.h"

namespace ksv_cli {

struct LintFindings {
  std::vector<Fault> faults;            // by files in ascending order, and in each by lines
  std::vector<std::string> unreadable;  // what the system did not let be looked at, and why
  std::set<std::string> tables;         // that rule files declare

  bool any() const { return !faults.empty() || !unreadable.empty(); }
};

// Throws Failure when the directory cannot be read. Nothing is written.
LintFindings lintCharsetDirectory(const std::string& directory);

// "FILE:LINE: REASON", or "FILE: REASON".
std::string shownFault(const Fault& fault);

}  // namespace ksv_cli
