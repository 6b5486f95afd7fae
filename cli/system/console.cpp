#include "cli/system/console.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <optional>

#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/process.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"
#include "common/platform.h"

namespace ksv_cli {
namespace {

constexpr uint64_t kMuch = 64 * 1024 * 1024;
constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr uint64_t kMebibyte = 1024 * 1024;

std::atomic<bool> anythingLeftOver{false};

std::string asOneLine(std::string reason) {
  std::replace(reason.begin(), reason.end(), '\n', ' ');
  return escaped(reason, Backslash::kStays) + "\n";
}

}  // namespace

void tellLeftOver(const std::string& path, const std::error_code& error) noexcept {
  anythingLeftOver = true;
  try {
    const bool isOfSystem = error.category() == std::system_category();
    const std::string words =
        isOfSystem ? ksv::platform::errorText(error.value()) : error.message();
    platform::writeToStandardError(diagnostic(path, "cannot be removed: " + words));
  } catch (const std::exception&) {
    platform::tellOutOfMemory();
  }
}

bool isAnythingLeftOver() { return anythingLeftOver; }

std::string diagnostic(const std::string& reason) { return "ksv: " + asOneLine(reason); }

std::string diagnostic(const std::string& subject, const std::string& reason) {
  return "ksv: " + shownName(subject) + ": " + asOneLine(reason);
}

int writeResult(const std::string& text) {
  const std::optional<std::string> fault = systemFault();
  if (!fault) return writeToStandardOutput(text);
  platform::writeToStandardError("ksv: " + *fault + "\n");
  return kExitFailed;
}

int writeToStandardOutput(const std::string& text) {
  try {
    platform::openStandardOutput()->write(reinterpret_cast<const uint8_t*>(text.data()),
                                          text.size());
  } catch (const Failure& failure) {
    if (!failure.quiet())
      platform::writeToStandardError(diagnostic("standard output", failure.what()));
    return kExitFailed;
  }
  return kExitDone;
}

std::string lineChange(size_t shown, const std::string& line, bool takesEscapes) {
  if (takesEscapes) return "\r" + line + "\x1B[K";
  const size_t rest = shown - std::min(shown, line.size());
  return "\r" + line + std::string(rest, ' ') + std::string(rest, '\b');
}

Console::Console(size_t fileCount, uint64_t totalBytes)
    : fileCount_(fileCount),
      totalBytes_(totalBytes),
      onTerminal_(platform::standardErrorIsTerminal()),
      takesEscapes_(onTerminal_ && platform::standardErrorTakesEscapes()) {}

Console::~Console() { clear(); }

void Console::report(const std::string& subject, const std::string& reason) {
  const std::lock_guard<std::mutex> lock(mutex_);
  clear();
  platform::writeToStandardError(diagnostic(subject, reason));
}

void Console::tell(const std::string& line) {
  const std::lock_guard<std::mutex> lock(mutex_);
  clear();
  platform::writeToStandardError(line + '\n');
}

void Console::addBytes(uint64_t count) {
  if (!onTerminal_) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  bytes_ += count;
  const bool isMuch = fileCount_ > 1 || std::max(totalBytes_, bytes_) > kMuch;
  const auto now = std::chrono::steady_clock::now();
  if (!isMuch || now - lastShown_ < kInterval) return;
  lastShown_ = now;
  show();
}

void Console::addFile() {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++files_;
}

void Console::show() {
  std::string line = std::to_string(bytes_ / kMebibyte) + " MiB";
  if (totalBytes_ != 0)
    line += ", " + std::to_string(std::min<uint64_t>(100, bytes_ * 100 / totalBytes_)) + " %";
  if (fileCount_ > 1)
    line += ", file " + std::to_string(std::min(files_ + 1, fileCount_)) + " of " +
            std::to_string(fileCount_);
  overwrite(line);
}

void Console::clear() {
  if (shown_ != 0) overwrite("");
}

void Console::overwrite(const std::string& line) {
  platform::writeToStandardError(lineChange(shown_, line, takesEscapes_));
  shown_ = line.size();
}

}  // namespace ksv_cli
