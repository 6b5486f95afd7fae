// Converts a list of files, several at once when asked to.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/jobs/loss_telling.h"
#include "cli/jobs/manifest_run.h"
#include "cli/jobs/operands.h"
#include "cli/jobs/output_plan.h"
#include "cli/jobs/verbosity.h"
#include "cli/system/streams.h"
#include "cli/text/charset_judge.h"
#include "cli/text/conversion_settings.h"
#include "cli/text/text_segments.h"

namespace ksv_cli {

// Whether it is told what is lost, and whether that is all that is done.
struct ReportPlan {
  ReportForm form = ReportForm::kNone;
  bool isAll = false;
};

// A text that has been opened, and how it is to be read.
struct FoundText {
  std::unique_ptr<ByteSource> source;
  ChosenSource chosen;
  bool isOfTarget = false;                 // it is text of the target already, and stays as it is
  std::vector<TextSegment> segments = {};  // of a mixed text; none: all of it is in that charset
};

// Opens a text, and finds out in which charset it is. Throws Failure.
using SourceFinder = std::function<FoundText(const std::string& input)>;

// find: called from several threads; without one settings name the source. Throws UsageError when
// results would overwrite inputs or each other. Returns the exit status; failures have been
// reported.
int convertBatch(const ConversionSettings& settings, const SourceFinder& find,
                 const OutputPlan& plan, const ReportPlan& reports, const RunPlan& run,
                 Verbosity verbosity, const Inputs& inputs, size_t jobs);

}  // namespace ksv_cli
