#include "cconv/rules/packed_rules.h"

#include <algorithm>

#include "cconv/rules/rule_base.h"

namespace ksv {
bool isAsPacked(const std::vector<std::string>& names, const PackedCharsets& packed) {
  return std::ranges::all_of(names, [&](const std::string& name) {
    const PackedCatalog::RuleFile* const file = packed.catalog().findRuleFile(name);
    return file != nullptr && !packed.isOverridden(*file);
  });
}

std::vector<std::string> withPackedNames(std::vector<std::string> names,
                                         const PackedCharsets& packed) {
  for (const PackedCatalog::RuleFile& file : packed.catalog().ruleFiles)
    names.emplace_back(file.name);
  std::ranges::sort(names);
  // Not of std::ranges, whose answer clang 14 cannot read in the C++ library of gcc.
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

size_t loadPackedRules(const PackedCharsets& packed) {
  ruleBase.lists->addPacked(packed);
  return packed.catalog().charsets.size();
}

}  // namespace ksv
