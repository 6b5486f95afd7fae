// Converts a list of files, several at once when asked to.
#ifndef KSV_CLI_BATCH_H
#define KSV_CLI_BATCH_H

#include <string>
#include <vector>

#include "file_converter.h"

namespace ksv_cli {

// Where the results go.
struct OutputPlan {
  enum class Kind { kStandardOutput, kFile, kDirectory, kInPlace };
  Kind kind = Kind::kStandardOutput;
  std::string path;          // of the file or the directory
  std::string backupSuffix;  // for kInPlace; empty: the original is not kept
  bool keepsTimes = true;    // for kInPlace
};

// names: where a text is to be detected, that is, where settings name no source, the
// charsets to choose from. Throws UsageError when results would overwrite inputs or each other.
// Returns the exit status; failures have been reported.
int convertBatch(const ConversionSettings& settings, const CharsetNames& names,
                 const OutputPlan& plan, const std::vector<std::string>& inputs, size_t jobs);

}  // namespace ksv_cli

#endif
