// Where the results of a batch go.
#pragma once

#include <string>

namespace ksv_cli {

struct OutputPlan {
  enum class Kind { kStandardOutput, kFile, kDirectory, kInPlace };
  Kind kind = Kind::kStandardOutput;
  std::string path;          // of the file or the directory
  std::string backupSuffix;  // for kInPlace; empty: the original is not kept
  bool keepsTimes = true;    // for kInPlace
};

// The place of the result of an input; empty: standard output.
std::string outputPath(const OutputPlan& plan, const std::string& input);

// Where the original of an input is kept; empty: nowhere.
std::string backupPath(const OutputPlan& plan, const std::string& input);

}  // namespace ksv_cli
