#include "cli/jobs/conversion_telling.h"

#include <numeric>
#include <string>

#include "cli/jobs/conversion_lines.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/verdict_lines.h"
#include "cli/jobs/work_sums.h"
#include "cli/system/inputs.h"
#include "cli/text/text_failure.h"

namespace ksv_cli {
namespace {

// A conversion that counts as a failure has failed, whatever there is of it.
ConversionOutcome outcomeOf(const ConversionRecord& record) {
  return record.failure ? ConversionOutcome::kFailed : record.outcome;
}

std::string sourceInWords(const ConversionRecord& record) {
  if (!record.reason.empty()) return record.reason;
  return "read as " + record.source + ": --from names it";
}

// "converted: read as Shift_JIS: --from names it; 2 bytes, 3 written"
std::string endInWords(const ConversionRecord& record) {
  const bool isConverted = record.outcome == ConversionOutcome::kConverted;
  const bool isUnchanged = record.outcome == ConversionOutcome::kUnchanged;
  std::string words = isConverted ? "converted: " : isUnchanged ? "unchanged: " : "skipped: ";
  words += sourceInWords(record) + "; " + bytesInWords(record.bytes());
  if (isConverted && record.sizeAfter)
    words += ", " + std::to_string(*record.sizeAfter) + " written";
  if (record.losses.any()) words += "; " + record.losses.inWords();
  if (record.repair) words += "; " + record.repair->inMoreWords();
  return words;
}

// "EUC-JP (0.98) at byte offset 120, 64 bytes"
std::string segmentInWords(const ksv::Segment& segment) {
  return segment.charset + " (" + confidenceInWords(segment.confidence) + ")" +
         atOffset(segment.offset) + ", " + bytesInWords(segment.length);
}

}  // namespace

ConversionTelling::ConversionTelling(WorkList& list, bool json, Verbosity verbosity)
    : list_(list), tellsJson_(json), verbosity_(verbosity) {
  if (verbosity == Verbosity::kQuiet) list.console().showNoProgress();
}

void ConversionTelling::tellSource(const ConversionRecord& record) {
  if (verbosity_ == Verbosity::kUsual) report(record, record.reason);
}

void ConversionTelling::report(const ConversionRecord& record, const std::string& words) {
  list_.console().report(nameForMessages(record.input), words);
}

bool ConversionTelling::tellEnd(size_t index, const ConversionRecord& record) {
  add(record);
  tellInWords(record);
  return !tellsJson_ || list_.writeRecord(index, jsonLine(conversionFields(record)));
}

void ConversionTelling::tellInWords(const ConversionRecord& record) {
  if (record.failure) {
    if (!record.failure->quiet()) report(record, record.failure->what());
  } else if (verbosity_ == Verbosity::kVerbose) {
    for (const ksv::Segment& segment : record.segments) report(record, segmentInWords(segment));
    report(record, endInWords(record));
  } else if (verbosity_ == Verbosity::kUsual) {
    if (record.losses.any()) report(record, record.losses.inWords());
    if (record.repair && record.repair->any()) report(record, record.repair->inWords());
  }
}

void ConversionTelling::add(const ConversionRecord& record) {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++outcomes_.at(static_cast<size_t>(outcomeOf(record)));
  bytes_ += record.bytes();
}

void ConversionTelling::tellSums() {
  if (verbosity_ != Verbosity::kVerbose) return;
  const auto count = [&](ConversionOutcome outcome) {
    return outcomes_.at(static_cast<size_t>(outcome));
  };
  const size_t files = std::accumulate(outcomes_.begin(), outcomes_.end(), size_t{0});
  const std::string sums = sumsInWords(files,
                                       {{count(ConversionOutcome::kConverted), "converted"},
                                        {count(ConversionOutcome::kUnchanged), "unchanged"},
                                        {count(ConversionOutcome::kSkipped), "skipped"},
                                        {count(ConversionOutcome::kFailed), "failed"}},
                                       bytes_, std::chrono::steady_clock::now() - begin_);
  list_.console().tell("ksv: " + sums);
}

}  // namespace ksv_cli
