#include "cli/jobs/conversion_telling.h"

#include <numeric>
#include <string>

#include "cli/jobs/work_sums.h"
#include "cli/system/inputs.h"

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
  return words;
}

}  // namespace

ConversionTelling::ConversionTelling(Console& console, Verbosity verbosity)
    : console_(console), verbosity_(verbosity) {
  if (verbosity == Verbosity::kQuiet) console.showNoProgress();
}

void ConversionTelling::tellSource(const ConversionRecord& record) {
  if (verbosity_ == Verbosity::kUsual)
    console_.report(nameForMessages(record.input), record.reason);
}

void ConversionTelling::tellEnd(const ConversionRecord& record) {
  add(record);
  const std::string name = nameForMessages(record.input);
  if (record.failure) {
    if (!record.failure->quiet()) console_.report(name, record.failure->what());
  } else if (verbosity_ == Verbosity::kVerbose) {
    console_.report(name, endInWords(record));
  } else if (verbosity_ == Verbosity::kUsual && record.losses.any()) {
    console_.report(name, record.losses.inWords());
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
  console_.tell("ksv: " + sums);
}

}  // namespace ksv_cli
