#include "cli/jobs/undo.h"

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "cli/jobs/kept_text.h"
#include "cli/jobs/result_line.h"
#include "cli/jobs/run_history.h"
#include "cli/jobs/work_list.h"
#include "cli/system/console.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/journal_file.h"
#include "cli/system/kept_original.h"
#include "cli/system/paths.h"
#include "cli/system/standard_streams.h"

namespace ksv_cli {
namespace {

// The manifest may have been written in another directory.
std::vector<PastConversion> conversionsSeenFromHere(const RunHistory& history) {
  std::vector<PastConversion> conversions = history.conversions();
  const std::string& directory = history.head().directory;
  if (directory == platform::currentDirectory()) return conversions;
  for (PastConversion& past : conversions)
    for (std::string* path : {&past.record.input, &past.record.output, &past.record.kept})
      if (!path->empty()) *path = platform::pathFrom(directory, *path);
  return conversions;
}

std::vector<std::string> inputsOf(const std::vector<PastConversion>& conversions) {
  std::vector<std::string> inputs;
  for (const PastConversion& past : conversions) inputs.push_back(past.record.input);
  return inputs;
}

class Undoing {
 public:
  Undoing(const UndoPlan& plan, const RunHistory& history)
      : plan_(plan),
        history_(history),
        conversions_(conversionsSeenFromHere(history)),
        inputs_(inputsOf(conversions_)),
        list_(inputs_) {}

  int run(size_t jobs) {
    if (plan_.tellsJson) list_.recordFailures();
    const int status = list_.run(jobs, [this](size_t index) { undo(index); });
    if (elsewhere_ == 1)
      list_.console().report(plan_.manifest, "1 result elsewhere stays where it is");
    else if (elsewhere_ != 0)
      list_.console().report(plan_.manifest,
                             std::to_string(elsewhere_) + " results elsewhere stay where they are");
    return status;
  }

 private:
  void undo(size_t index) {
    const PastConversion& past = conversions_[index];
    if (past.isIntended)
      tell(index, restore(index) ? "restored" : "original");
    else if (past.hasResult && isElsewhere(past.record))
      tell(index, (++elsewhere_, "elsewhere"));
    else
      tell(index, "original");  // it was never replaced
  }

  // False: the original has its place. Throws Failure where it cannot have it.
  bool restore(size_t index) const {
    const ConversionRecord& record = conversions_[index].record;
    if (!plan_.isDryRun) clearUp(index);
    const std::string sum = sumOfFile(record.output);
    if (sum == record.sumBefore) {
      if (!plan_.isDryRun) removeSecondName(record);
      return false;
    }
    if (!sum.empty() && sum != record.sumAfter) throw Failure(std::string("it") + kIsChanged);
    if (record.kept.empty()) throw Failure("its original was not kept");
    const std::string keptSum = sumOfFile(record.kept);
    if (keptSum.empty()) throw Failure("its original " + record.kept + " is not there any more");
    if (keptSum != record.sumBefore)
      throw Failure("its original " + record.kept + " has been changed");
    if (!plan_.isDryRun) platform::restoreOriginal(record.kept, record.output);
    return true;
  }

  void clearUp(size_t index) const {
    const PastConversion& past = conversions_[index];
    settle(past.record);
    if (past.hasResult) return;
    const std::string& place = history_.conversions()[index].record.output;
    platform::removePassingFile(past.record.output, passingNameFor(history_.head().run, place));
  }

  // Of a file that was not converted any more when its original had both names.
  static void removeSecondName(const ConversionRecord& record) {
    if (record.kept.empty()) return;
    const platform::FileFacts kept = platform::fileFacts(record.kept);
    if (kept.isSameFileAs(platform::fileFacts(record.output))) platform::removeKept(record.kept);
  }

  void tell(size_t index, const std::string& result) {
    const ConversionRecord& past = conversions_[index].record;
    if (plan_.tellsJson) {
      nlohmann::ordered_json line = recordOf(past.input, ResultForm::kFull);
      line["result"] = result;
      if (result == "restored") addPath(line, "kept", past.kept);
      list_.write(index, jsonLine(line));
    } else if (plan_.isDryRun && result == "restored") {
      list_.write(index, textLine({nameField(past.input, ResultForm::kFull),
                                   nameField(past.kept, ResultForm::kFull)}));
    }
  }

  const UndoPlan& plan_;
  const RunHistory& history_;
  const std::vector<PastConversion> conversions_;
  const std::vector<std::string> inputs_;
  WorkList list_;
  std::atomic<size_t> elsewhere_{0};
};

}  // namespace

int undoConversions(const UndoPlan& plan, size_t jobs) {
  try {
    // No run may be writing to it meanwhile.
    std::unique_ptr<platform::JournalFile> file;
    if (!plan.isDryRun) file = platform::JournalFile::open(plan.manifest);
    const RunHistory history = RunHistory::read(plan.manifest);
    return Undoing(plan, history).run(jobs);
  } catch (const Failure& failure) {
    platform::writeToStandardError(diagnostic(plan.manifest, failure.what()));
    return kExitFailed;
  }
}

}  // namespace ksv_cli
