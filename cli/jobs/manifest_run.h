// A run of conversions that is written down as it goes, and that can be gone on with wherever it
// ended (run_history.h).
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cli/jobs/operands.h"
#include "cli/jobs/output_plan.h"
#include "cli/jobs/run_history.h"
#include "cli/system/journal_file.h"

namespace ksv_cli {

// What is asked of a run beyond its results.
struct RunPlan {
  bool tellsJson = false;
  std::string manifest;  // empty: none is written
  bool resumes = false;
  OptionList options;  // those that decide what comes out
};

// Lines that are put behind each other. May be used from several threads.
class Manifest {
 public:
  // Throws Failure, as everything here does. From the first on, nothing is written any more.
  Manifest(std::string path, std::unique_ptr<platform::JournalFile> file);

  // Returns when the line is on the disk, with all in front of it.
  void writeDurably(const std::string& line);
  // Of lines that nobody waits for at most so many are not on the disk yet.
  static constexpr uint64_t kMostWaiting = 64;
  void write(const std::string& line);

  bool isBroken();
  const std::string& path() const { return path_; }

 private:
  class Waiting;

  uint64_t append(std::unique_lock<std::mutex>& lock, const std::string& line);
  void waitFor(std::unique_lock<std::mutex>& lock, uint64_t count);
  void synchronise(std::unique_lock<std::mutex>& lock);
  template <typename Action>
  void guarded(Action action);

  const std::string path_;
  const std::unique_ptr<platform::JournalFile> file_;
  std::mutex mutex_;
  std::condition_variable synchronised_;
  bool isSynchronising_ = false;
  bool isBroken_ = false;
  uint64_t written_ = 0;  // lines
  uint64_t onDisk_ = 0;
};

class ManifestRun {
 public:
  // Reads the manifest of a run that goes on, and ends what had been begun. Throws UsageError where
  // there is a manifest already that is not to be gone on with, or one of other options.
  explicit ManifestRun(const RunPlan& plan);

  // The texts to be converted when these are named: without originals that were kept, and with
  // texts that had lost their names.
  Inputs inputs(const Inputs& named) const;

  // Writes the head. To be called once, before anything is converted.
  void begin();

  // What an earlier run has done with the input whose result has this place; none where it is to be
  // converted now. Throws Failure where the file is not what that run left.
  std::optional<ConversionRecord> earlierResult(const std::string& input, const std::string& place);

  std::string passingNameFor(const std::string& place) const;

  void noteIntent(const ConversionRecord& record);
  void noteResult(const ConversionRecord& record);
  void end();

  // Nothing can be noted any more.
  bool isBroken() { return manifest_ && manifest_->isBroken(); }

 private:
  using FileId = std::pair<uint64_t, uint64_t>;

  void resume();
  void noteFiles();
  bool isPassedOver(const std::string& input) const;
  const PastConversion* pastOf(const std::string& input) const;
  void count(const ConversionRecord& record);

  const RunPlan& plan_;
  RunHead head_;
  RunHistory history_;
  std::vector<std::string> putBack_;  // texts that had lost their names
  // Of files that may have been replaced, which can be named otherwise now: where the history has
  // them, and the originals that were kept of them.
  std::map<FileId, const PastConversion*> pastByFile_;
  std::set<FileId> kept_;
  std::unique_ptr<platform::JournalFile> file_;
  std::unique_ptr<Manifest> manifest_;
  std::mutex mutex_;
  RunTotals totals_;
};

}  // namespace ksv_cli
