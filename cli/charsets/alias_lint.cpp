#include "cli/charsets/alias_lint.h"

#include <algorithm>
#include <map>

#include "cli/charsets/directory_aliases.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {

using ksv_kit::AliasFault;
using ksv_kit::AliasFile;
using ksv_kit::AliasLine;
using ksv_kit::CharsetAlias;
using ksv_kit::foldedName;
using ksv_kit::kAliasFile;
using ksv_kit::lowered;

namespace {

class AliasLint {
 public:
  AliasLint(const std::vector<std::string>& charsets, std::vector<Fault>& faults)
      : charsets_(charsets), faults_(faults) {}

  void run(const AliasFile& file) {
    for (const AliasFault& fault : file.faults) add(fault.line, fault.reason);
    for (const AliasLine& line : file.aliases) look(line);
  }

 private:
  void add(size_t line, const std::string& reason) {
    faults_.push_back({kAliasFile, line, reason});
  }

  void look(const AliasLine& line) {
    const CharsetAlias& alias = line.alias;
    const auto [first, isNew] = seen_.emplace(foldedName(alias.alias), &line);
    if (!isNew) compare(line, *first->second);
    if (!isThere(alias.charset)) add(line.line, "the directory has no charset " + alias.charset);
    if (isThere(alias.alias) && lowered(alias.alias) != lowered(alias.charset))
      add(line.line, alias.alias + " is a charset of the directory itself");
  }

  // A name that is written in two ways may stand there twice, for one charset.
  void compare(const AliasLine& line, const AliasLine& first) {
    const bool isSame = lowered(line.alias.charset) == lowered(first.alias.charset) &&
                        line.alias.order == first.alias.order;
    if (!isSame)
      add(line.line, line.alias.alias + " stands for " + first.alias.charset +
                         " already, in line " + std::to_string(first.line));
  }

  bool isThere(const std::string& name) const {
    return std::find(charsets_.begin(), charsets_.end(), lowered(name)) != charsets_.end();
  }

  const std::vector<std::string>& charsets_;
  std::vector<Fault>& faults_;
  std::map<std::string, const AliasLine*> seen_;
};

}  // namespace

void lintAliases(const std::string& directory, const std::vector<std::string>& charsets,
                 std::vector<Fault>& faults) {
  AliasLint(charsets, faults).run(directoryAliases(directory));
}

}  // namespace ksv_cli
