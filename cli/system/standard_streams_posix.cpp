#include <sys/ioctl.h>
#include <unistd.h>

#include "cli/system/failure.h"
#include "cli/system/files_posix.h"
#include "cli/system/standard_streams.h"

namespace ksv_cli::platform {

FileFacts standardInputFacts() { return factsOfDescriptor(STDIN_FILENO); }
FileFacts standardOutputFacts() { return factsOfDescriptor(STDOUT_FILENO); }

std::unique_ptr<ByteSource> openStandardInput() {
  return std::make_unique<DescriptorSource>(STDIN_FILENO);
}

std::unique_ptr<ByteSink> openStandardOutput() {
  return std::make_unique<DescriptorSink>(STDOUT_FILENO);
}

bool standardErrorIsTerminal() { return ::isatty(STDERR_FILENO) != 0; }

bool standardErrorTakesEscapes() { return standardErrorIsTerminal(); }

size_t standardErrorColumns() {
  constexpr size_t kUsual = 80;
  winsize size{};
  const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return isKnown ? size.ws_col : kUsual;
}

void writeToStandardError(std::string_view text) {
  try {
    OpenFile(STDERR_FILENO).writeAll(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  } catch (const Failure&) {
    // There is nowhere left to say so.
  }
}

}  // namespace ksv_cli::platform
