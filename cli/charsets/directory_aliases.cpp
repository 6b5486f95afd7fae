#include "cli/charsets/directory_aliases.h"

#include <optional>
#include <string>

#include "cli/charsets/rule_source.h"
#include "cli/system/paths.h"

namespace ksv_cli {

ksv_kit::AliasFile directoryAliases(const std::string& directory) {
  const auto bytes = fileBytes(platform::joinPath(directory, ksv_kit::kAliasFile));
  if (!bytes) return {};
  return ksv_kit::readAliases(std::string(bytes->begin(), bytes->end()));
}

}  // namespace ksv_cli
