// What is wrong with a charset directory. The library loads what it can and passes over
// the rest in silence; here it is told.
#ifndef KSV_CLI_RULE_LINT_H
#define KSV_CLI_RULE_LINT_H

#include <string>
#include <vector>

#include "table_lint.h"

namespace ksv_cli {

// By files in ascending order, and in each by lines. Throws Failure when the directory
// cannot be read. Nothing is written.
std::vector<Fault> lintCharsetDirectory(const std::string& directory);

// "FILE:LINE: REASON", or "FILE: REASON".
std::string shownFault(const Fault& fault);

}  // namespace ksv_cli

#endif
