#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "cli/system/failure.h"
#include "cli/system/pending_file_posix.h"
#include "cli/system/process.h"
#include "cli/system/temporary_names_posix.h"

namespace ksv_cli::platform {

std::vector<std::string> commandLineArguments(int argumentCount, char** arguments) {
  return {arguments + std::min(argumentCount, 1), arguments + argumentCount};
}

std::string environmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

void prepareProcess() {
  for (const int signalNumber : {SIGPIPE, SIGXFSZ}) ::signal(signalNumber, SIG_IGN);
  readModeOfNewFiles();
}

const char kOutOfMemory[] = "Cannot allocate memory";

void tellOutOfMemory() noexcept {
  constexpr std::string_view kLastWords = "ksv: Cannot allocate memory\n";
  for (std::string_view words = kLastWords; !words.empty();) {
    const ssize_t count = ::write(STDERR_FILENO, words.data(), words.size());
    if (count < 0 && errno != EINTR) return;
    if (count > 0) words.remove_prefix(static_cast<size_t>(count));
  }
}

void endOutOfMemory() noexcept {
  removeTemporaryFiles();
  tellOutOfMemory();
  ::_exit(kExitFailed);
}

}  // namespace ksv_cli::platform
