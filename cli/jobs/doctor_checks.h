// What 'ksv doctor' looks at: a list of checks, each of which says what it found.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/charsets/rule_lint.h"
#include "kit/charsets/charset_directory.h"

namespace ksv_cli {

using ksv_kit::FoundCharsetDirectory;

enum class CheckVerdict {
  kOk,
  kNote,  // all is well, but somebody may wonder
  kWrong
};

struct CheckFinding {
  CheckVerdict verdict = CheckVerdict::kOk;
  std::string text;  // what there is, or what is wrong with it
  std::string hint;  // what can be done; empty: nothing has to be
};

// What several checks look at: found once, in front of them.
struct Surroundings {
  std::optional<FoundCharsetDirectory> directory;
  std::optional<LintFindings> lint;  // none where the directory cannot be read,
  std::string refusal;               // and why that is so
};
Surroundings lookAround();

struct Check {
  const char* key;    // of a record
  const char* label;  // of a line
  CheckFinding (*find)(const Surroundings&);
};

// In the order in which they are told.
const std::vector<Check>& doctorChecks();

// What the check says; what it cannot find out is wrong.
CheckFinding findingOf(const Check& check, const Surroundings& surroundings);

}  // namespace ksv_cli
