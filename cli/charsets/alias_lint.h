// What is wrong with the aliases that a charset directory brings.
#pragma once

#include <string>
#include <vector>

#include "cli/charsets/table_lint.h"

namespace ksv_cli {

// charsets: those of the directory, in lower case.
void lintAliases(const std::string& directory, const std::vector<std::string>& charsets,
                 std::vector<Fault>& faults);

}  // namespace ksv_cli
