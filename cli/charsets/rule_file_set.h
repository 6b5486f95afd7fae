// The rule files of a charset directory, each read once.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/charsets/rule_source.h"
#include "cli/charsets/table_lint.h"

namespace ksv_cli {

class RuleFileSet {
 public:
  // Both stay the caller's.
  RuleFileSet(const std::string& directory, std::vector<Fault>& faults)
      : directory_(directory), faults_(faults) {}

  const std::string& directory() const { return directory_; }

  // Null when the file cannot be made out, which becomes a fault once. Throws UnreadableFile, as
  // all here does.
  const RuleSource* read(const std::string& name);
  bool isThere(const std::string& name) const;

 private:
  const std::string& directory_;
  std::vector<Fault>& faults_;
  std::map<std::string, std::optional<RuleSource>> sources_;
};

}  // namespace ksv_cli
