// What is wrong with the charsets of a charset directory, and with the sets that they are made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "cconv/rules/names.h"
#include "cli/charsets/rule_file_set.h"
#include "cli/charsets/rule_source.h"
#include "cli/charsets/table_lint.h"

namespace ksv_cli {

// Which names have been given to what, so that those that clash are found.
class NameRegister {
 public:
  struct Entry {
    std::string name;
    std::string file;
  };

  // The entry that has the number of this name already, if it is another one.
  std::optional<Entry> clashOf(const std::string& name, const std::string& file);

 private:
  std::map<ksv::CharsetId, Entry> entries_;
};

// Looks at one charset after another. What several of them name, such as a table, is looked at
// once.
class CharsetLint {
 public:
  // Both stay the caller's.
  CharsetLint(RuleFileSet& files, std::vector<Fault>& faults) : files_(files), faults_(faults) {}

  // root: the charset in the source of the file.
  void lint(const std::string& file, const RuleSource& source, RuleSource::Span root);

  // In lower case.
  const std::vector<std::string>& charsets() const { return charsets_; }
  // Those that rule files declare.
  const std::set<std::string>& tables() const { return tables_; }

 private:
  using Span = RuleSource::Span;
  struct MemberForm;

  void add(const std::string& file, size_t line, const std::string& reason);
  bool checkName(const std::string& file, size_t line, const std::string& name);
  void lintCodecs(const std::string& file, const RuleSource& source, size_t from);
  void lintMembers(const std::string& file, const RuleSource& source);
  void lintMember(const std::string& file, const RuleSource& source, Span member,
                  const MemberForm& form);
  std::optional<std::string> referenced(const std::string& textFile, const RuleSource& text,
                                        const RuleSource& declaring, Span span);
  void lintSet(const std::string& file, const RuleSource& text, const std::string& charsetFile,
               const RuleSource& charset, const MemberForm& form);
  void lintSetName(const std::string& file, const RuleSource& text, Span name);
  void lintOneWayTables(const std::string& file, const RuleSource& source, Span member);
  void lintTableOf(const std::string& textFile, const RuleSource& text,
                   const std::string& declaringFile, const RuleSource& declaring, Span span,
                   unsigned width);

  RuleFileSet& files_;
  std::vector<Fault>& faults_;
  std::set<std::string> tables_;
  std::vector<std::string> charsets_;
  NameRegister charsetNames_;
  NameRegister setNames_;
  std::set<std::string> lintedSets_;
  std::set<std::tuple<std::string, uint32_t, bool>> lintedTables_;
};

}  // namespace ksv_cli
