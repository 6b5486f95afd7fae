#include "cli/charsets/compiled_tables.h"

#include "cli/charsets/rule_source.h"
#include "cli/charsets/table_lint.h"
#include "cli/system/paths.h"

namespace ksv_cli {

std::vector<std::string> missingCompiledTables(const std::string& directory,
                                               const std::set<std::string>& tables) {
  std::vector<std::string> missing;
  for (const std::string& table : tables) {
    std::string compiled = compiledName(table);
    const bool isThere = isRegularFile(platform::joinPath(directory, compiled));
    if (!isThere && isRegularFile(platform::joinPath(directory, table)))
      missing.push_back(std::move(compiled));
  }
  return missing;
}

}  // namespace ksv_cli
