// What is wrong with a code table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cli/charsets/rule_source.h"

namespace ksv_cli {

struct Fault {
  std::string file;  // its name in the charset directory
  size_t line = 0;   // 0: of the file as a whole
  std::string reason;

  bool operator==(const Fault&) const = default;
};

struct TableUse {
  std::string file;
  TextForm form;           // that of the rule file that declares the table
  std::string declaredBy;  // that file
  unsigned width;          // bytes of a code
};

// The name of the compiled copy of a table.
std::string compiledName(const std::string& table);

// Looks at the text and at its compiled copy.
void lintTable(const std::string& directory, const TableUse& use, std::vector<Fault>& faults);

}  // namespace ksv_cli
