// The operands of a job, and what they name.
#pragma once

#include <string>
#include <vector>

namespace ksv_cli {

// The files that operands name; standard input when there are none. Throws UsageError
// when standard input is named twice.
std::vector<std::string> inputsNamedBy(const std::vector<std::string>& operands);

// A list of files beside the operands: one name a line, or ended by NUL.
struct FileList {
  std::string path;  // of the list; empty: there is none
  bool endsNamesWithNul = false;
};

// The same with the names of a list behind the operands. Each stands for one file.
// Throws UsageError when the list cannot be read, or is standard input and a text as
// well.
std::vector<std::string> inputsNamedBy(const std::vector<std::string>& operands,
                                       const FileList& list);

}  // namespace ksv_cli
