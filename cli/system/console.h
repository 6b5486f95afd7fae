// Standard error: diagnostics, a line each, and the progress of long work.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <system_error>

#include "cli/system/progress_line.h"

namespace ksv_cli {

// "ksv: REASON" and "ksv: SUBJECT: REASON", each as one line.
std::string diagnostic(const std::string& reason);
std::string diagnostic(const std::string& subject, const std::string& reason);

// Says that a file with a passing name stays, and why. Never throws.
void tellLeftOver(const std::string& path, const std::error_code& error) noexcept;
// Whether one has stayed, so that not all is well.
bool isAnythingLeftOver();

// Writes a result to standard output, unless it may rest on a system error. Returns the exit
// status: a failure has been reported by then.
int writeResult(const std::string& text);
// The same of what rests on none.
int writeToStandardOutput(const std::string& text);

// What a terminal takes to show another line instead of one of so many columns.
std::string lineChange(size_t shown, const std::string& line, bool takesEscapes);

// May be used from several threads.
class Console {
 public:
  // Progress is shown when standard error is a terminal and there is much to do:
  // more than one file, or more than 64 MiB.
  explicit Console(size_t fileCount);
  ~Console();

  void report(const std::string& subject, const std::string& reason);
  // A line as it stands.
  void tell(const std::string& line);

  // Whether anybody will see the progress.
  bool showsProgress() const { return showsProgress_; }
  void showNoProgress() { showsProgress_ = false; }
  // Both before the work begins. 0: not known.
  void expectBytes(uint64_t total) { totalBytes_ = total; }

  void beginFile(const std::string& name);
  void addBytes(uint64_t count);
  void addFile();
  // Takes the progress away from where something else is about to be shown.
  void makeWay();

 private:
  using Clock = std::chrono::steady_clock;

  void showIfDue();
  void clear();
  void overwrite(const std::string& line);

  bool showsProgress_;
  const bool takesEscapes_;
  const Clock::time_point begin_ = Clock::now();
  uint64_t totalBytes_ = 0;
  std::mutex mutex_;
  Progress progress_;
  size_t shown_ = 0;  // the columns of the line that is shown
  Clock::time_point lastShown_{};
};

}  // namespace ksv_cli
