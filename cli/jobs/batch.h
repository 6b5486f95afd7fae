// Converts a list of files, several at once when asked to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/jobs/loss_telling.h"
#include "cli/jobs/output_plan.h"
#include "cli/text/charset_judge.h"
#include "cli/text/conversion_settings.h"

namespace ksv_cli {

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
