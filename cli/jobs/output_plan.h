// Where the results of a batch go.
#pragma once

#include <map>
#include <string>

namespace ksv_cli {

struct OutputPlan {
  enum class Kind { kStandardOutput, kFile, kDirectory, kInPlace };
  Kind kind = Kind::kStandardOutput;
  std::string path = {};          // of the file or the directory
  bool keepsTree = false;         // for kDirectory
  std::string backupSuffix = {};  // for kInPlace; empty: the original is not kept
  bool keepsTimes = true;         // for kInPlace
  // Where the tree is kept: the place of the result below the directory, by the input.
  std::map<std::string, std::string> placesInTree = {};
};

// The place of the result of an input; empty: standard output.
std::string outputPath(const OutputPlan& plan, const std::string& input);

// Where the original of an input is kept; empty: nowhere.
std::string backupPath(const OutputPlan& plan, const std::string& input);

}  // namespace ksv_cli
