// Standard error: diagnostics, a line each, and the progress of long work.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <system_error>

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

// What a terminal takes to show another line instead of one of so many characters.
std::string lineChange(size_t shown, const std::string& line, bool takesEscapes);

// May be used from several threads.
class Console {
 public:
  // Progress is shown when standard error is a terminal and there is much to do:
  // more than one file, or more than 64 MiB. totalBytes is 0 when it is not known.
  Console(size_t fileCount, uint64_t totalBytes);
  ~Console();

  void report(const std::string& subject, const std::string& reason);
  // A line as it stands.
  void tell(const std::string& line);
  void addBytes(uint64_t count);
  void addFile();

 private:
  void show();
  void clear();
  void overwrite(const std::string& line);

  const size_t fileCount_;
  const uint64_t totalBytes_;
  const bool onTerminal_;
  const bool takesEscapes_;
  std::mutex mutex_;
  uint64_t bytes_ = 0;
  size_t files_ = 0;
  size_t shown_ = 0;  // the length of the line that is shown
  std::chrono::steady_clock::time_point lastShown_{};
};

}  // namespace ksv_cli
