#include "cli/system/console.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <optional>

#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/name_characters.h"
#include "cli/system/process.h"
#include "cli/system/standard_streams.h"
#include "cli/system/system_faults.h"
#include "common/platform.h"

namespace ksv_cli {
namespace {

constexpr uint64_t kMuch = 64 * 1024 * 1024;
constexpr auto kInterval = std::chrono::milliseconds(100);

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
  const size_t rest = shown - std::min(shown, columnsOf(line));
  return "\r" + line + std::string(rest, ' ') + std::string(rest, '\b');
}

Console::Console(size_t fileCount)
    : showsProgress_(platform::standardErrorIsTerminal()),
      takesEscapes_(showsProgress_ && platform::standardErrorTakesEscapes()) {
  progress_.fileCount = fileCount;
}

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

void Console::beginFile(const std::string& name) {
  if (!showsProgress_) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  progress_.name = shownName(name);
  showIfDue();
}

void Console::addBytes(uint64_t count) {
  if (!showsProgress_) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  progress_.bytes += count;
  showIfDue();
}

void Console::addFile() {
  if (!showsProgress_) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  ++progress_.files;
  showIfDue();
}

void Console::makeWay() {
  if (!showsProgress_) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  clear();
}

// The last column stays free: what fills it would begin a new line on some terminals.
void Console::showIfDue() {
  const bool isMuch = progress_.fileCount > 1 || std::max(totalBytes_, progress_.bytes) > kMuch;
  const auto now = Clock::now();
  if (!isMuch || now - lastShown_ < kInterval) return;
  lastShown_ = now;
  progress_.totalBytes = totalBytes_;
  progress_.seconds = std::chrono::duration<double>(now - begin_).count();
  overwrite(progressLine(progress_, platform::standardErrorColumns() - 1));
}

void Console::clear() {
  if (shown_ != 0) overwrite("");
}

void Console::overwrite(const std::string& line) {
  platform::writeToStandardError(lineChange(shown_, line, takesEscapes_));
  shown_ = columnsOf(line);
}

}  // namespace ksv_cli
