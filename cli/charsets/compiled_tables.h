// The compiled copies of code tables.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace ksv_cli {

// The names of those that are not there although their texts are. Throws Failure where the
// system cannot say.
std::vector<std::string> missingCompiledTables(const std::string& directory,
                                               const std::set<std::string>& tables);

}  // namespace ksv_cli
