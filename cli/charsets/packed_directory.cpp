#include "cli/charsets/packed_directory.h"

#include "cconv/rules/packed_charsets.h"
#include "cli/system/paths.h"

namespace ksv_cli {

std::optional<PackedDirectory> packedDirectory(const std::string& directory) {
  const auto packed = ksv::PackedCharsets::open(platform::joinPath(directory, ""));
  if (packed == nullptr) return std::nullopt;
  const ksv::PackedCatalog& catalog = packed->catalog();
  PackedDirectory found{catalog.charsets.size(), catalog.tableFiles.size(), {}};
  for (const auto& file : catalog.ruleFiles)
    if (packed->isOverridden(file)) found.overridden.emplace_back(file.name);
  for (const auto& file : catalog.tableFiles)
    if (packed->isOverridden(file)) found.overridden.emplace_back(file.name);
  return found;
}

}  // namespace ksv_cli
