#include "cli/charsets/rule_lint.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "cli/charsets/alias_lint.h"
#include "cli/charsets/charset_lint.h"
#include "cli/charsets/packed_directory.h"
#include "cli/charsets/rule_file_set.h"
#include "cli/charsets/rule_source.h"
#include "cli/system/paths.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {

using ksv_kit::lowered;

namespace {

class DirectoryLint {
 public:
  explicit DirectoryLint(const std::string& directory)
      : directory_(directory), files_(directory, faults_), charsets_(files_, faults_) {}

  LintFindings run() {
    for (const std::string& name : platform::filesIn(directory_))
      unlessUnreadable([&] { lintFile(name); });
    unlessUnreadable([&] { lintWhole(); });
    std::stable_sort(faults_.begin(), faults_.end(), [](const Fault& a, const Fault& b) {
      return std::tie(a.file, a.line, a.reason) < std::tie(b.file, b.line, b.reason);
    });
    // A set that several charsets name is looked at for each of them.
    faults_.erase(std::unique(faults_.begin(), faults_.end()), faults_.end());
    return {std::move(faults_), std::move(unreadable_), charsets_.tables()};
  }

 private:
  // What cannot be read is told in place of what would follow from its absence.
  template <typename Action>
  void unlessUnreadable(Action action) {
    try {
      action();
    } catch (const UnreadableFile& file) {
      unreadable_.emplace_back(file.what());
    }
  }

  // What rests on all rule files says nothing while one of them is not known.
  void lintWhole() {
    if (!unreadable_.empty()) return;
    if (charsets_.charsets().empty() && !packedDirectory(directory_))
      add(".", 0, "holds no charset rule file that can be read");
    lintAliases(directory_, charsets_.charsets(), faults_);
  }

  void add(const std::string& file, size_t line, const std::string& reason) {
    faults_.push_back({file, line, reason});
  }

  void lintFile(const std::string& name) {
    const std::string lower = lowered(name);
    const bool isRuleFile = lower.ends_with(".xml");
    if ((isRuleFile || lower.ends_with(".txt") || lower.ends_with(".cmp")) && name != lower &&
        !platform::namesHaveNoCase())
      return add(name, 0, "has capital letters in its name, and is never opened");
    if (!isRuleFile) return;
    const RuleSource* source = files_.read(name);
    if (source == nullptr) return;
    if (const auto root = source->element("charset", 0))
      return charsets_.lint(name, *source, *root);
    for (const char* tag : {"subseta", "subsetb", "name"})
      if (source->element(tag, 0)) return;
    add(name, 1, "holds neither a charset nor a set");
  }

  const std::string& directory_;
  std::vector<Fault> faults_;
  std::vector<std::string> unreadable_;
  RuleFileSet files_;
  CharsetLint charsets_;
};

}  // namespace

LintFindings lintCharsetDirectory(const std::string& directory) {
  return DirectoryLint(directory).run();
}

std::string shownFault(const Fault& fault) {
  return fault.file + (fault.line == 0 ? "" : ":" + std::to_string(fault.line)) + ": " +
         fault.reason;
}

}  // namespace ksv_cli
