#include "cli/charsets/rule_file_set.h"

#include <cstdint>

#include "cli/system/paths.h"

namespace ksv_cli {

const RuleSource* RuleFileSet::read(const std::string& name) {
  const auto known = sources_.find(name);
  if (known != sources_.end()) return known->second ? &*known->second : nullptr;
  const auto bytes = fileBytes(platform::joinPath(directory_, name));
  std::optional<RuleSource>& source = sources_[name];
  const FormFinding finding = bytes ? formOf(*bytes) : FormFinding{std::nullopt, "cannot be read"};
  if (finding.form)
    source.emplace(*bytes, *finding.form);
  else
    faults_.push_back({name, 0, finding.fault});
  return source ? &*source : nullptr;
}

bool RuleFileSet::isThere(const std::string& name) const {
  return isRegularFile(platform::joinPath(directory_, name));
}

}  // namespace ksv_cli
