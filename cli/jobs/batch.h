// Converts a list of files, several at once when asked to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/jobs/loss_telling.h"
#include "cli/text/charset_judge.h"
#include "cli/text/conversion_settings.h"

namespace ksv_cli {

// Where the results go.
struct OutputPlan {
  enum class Kind { kStandardOutput, kFile, kDirectory, kInPlace };
  Kind kind = Kind::kStandardOutput;
  std::string path;          // of the file or the directory
  std::string backupSuffix;  // for kInPlace; empty: the original is not kept
  bool keepsTimes = true;    // for kInPlace
};

// Whether it is told what is lost, and whether that is all that is done.
struct ReportPlan {
  ReportForm form = ReportForm::kNone;
  bool isAll = false;
};

// Opens a text, and finds out in which charset it is. Throws Failure.
using SourceFinder = std::function<JudgedText(const std::string& input)>;

// find: for where settings name no source; called from several threads. Throws UsageError when
// results would overwrite inputs or each other. Returns the exit status; failures have been
// reported.
int convertBatch(const ConversionSettings& settings, const SourceFinder& find,
                 const OutputPlan& plan, const ReportPlan& reports,
                 const std::vector<std::string>& inputs, size_t jobs);

}  // namespace ksv_cli
