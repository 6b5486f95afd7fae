#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cli/system/descriptor_posix.h"
#include "cli/system/failure.h"
#include "cli/system/pending_file_posix.h"
#include "cli/system/platform.h"
#include "cli/system/temporary_names_posix.h"

namespace ksv_cli::platform {
namespace {

int openChecked(const std::string& path, int flags) {
  for (;;) {
    const int number = ::open(path.c_str(), flags | O_CLOEXEC);
    if (number >= 0) return number;
    if (errno != EINTR) fail(errno);
  }
}

class DescriptorSource : public ByteSource {
 public:
  explicit DescriptorSource(int number) : descriptor_(number) {}
  size_t read(uint8_t* buffer, size_t size) override { return descriptor_.readSome(buffer, size); }

 private:
  Descriptor descriptor_;
};

class DescriptorSink : public ByteSink {
 public:
  explicit DescriptorSink(int number) : descriptor_(number) {}
  void write(const uint8_t* bytes, size_t size) override { descriptor_.writeAll(bytes, size); }

 private:
  Descriptor descriptor_;
};

int64_t nanoseconds(const timespec& time) {
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

FileFacts factsOf(const struct stat& status) {
  FileFacts facts;
  facts.kind = S_ISREG(status.st_mode)   ? FileKind::kRegular
               : S_ISDIR(status.st_mode) ? FileKind::kDirectory
                                         : FileKind::kOther;
  facts.size = facts.kind == FileKind::kRegular ? static_cast<uint64_t>(status.st_size) : 0;
  facts.device = static_cast<uint64_t>(status.st_dev);
  facts.number = static_cast<uint64_t>(status.st_ino);
  facts.names = static_cast<uint64_t>(status.st_nlink);
  facts.readTime = nanoseconds(status.st_atim);
  facts.writeTime = nanoseconds(status.st_mtim);
  return facts;
}

// Of a stream that is closed there is nothing to tell.
FileFacts factsOfDescriptor(int number) {
  struct stat status;
  if (::fstat(number, &status) == 0) return factsOf(status);
  if (errno != EBADF) fail(errno);
  return {};
}

constexpr char kLastWords[] = "ksv: Cannot allocate memory\n";

}  // namespace

std::vector<std::string> commandLineArguments(int argumentCount, char** arguments) {
  return {arguments + std::min(argumentCount, 1), arguments + argumentCount};
}

std::string errorText(int error) { return std::generic_category().message(error); }

std::string environmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::vector<std::string> filesNamedBy(const std::string& operand) { return {operand}; }

void prepareProcess() {
  for (const int signalNumber : {SIGPIPE, SIGXFSZ}) ::signal(signalNumber, SIG_IGN);
  removeTemporaryFilesAtSignals();
  readModeOfNewFiles();
}

bool standardErrorIsTerminal() { return ::isatty(STDERR_FILENO) != 0; }

bool standardErrorTakesEscapes() { return standardErrorIsTerminal(); }

const char kOutOfMemory[] = "Cannot allocate memory";

void tellOutOfMemory() noexcept {
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

void writeToStandardError(std::string_view text) {
  try {
    Descriptor(STDERR_FILENO).writeAll(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  } catch (const Failure&) {
    // There is nowhere left to say so.
  }
}

FileFacts fileFacts(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) == 0) return factsOf(status);
  if (!isOneOf(errno, {ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG})) fail(errno);
  return {};
}

FileFacts standardInputFacts() { return factsOfDescriptor(STDIN_FILENO); }
FileFacts standardOutputFacts() { return factsOfDescriptor(STDOUT_FILENO); }

std::unique_ptr<ByteSource> openInput(const std::string& path) {
  const int number = openChecked(path, O_RDONLY);
  auto source = std::make_unique<DescriptorSource>(number);
  if (factsOfDescriptor(number).kind == FileKind::kDirectory) fail(EISDIR);
  return source;
}

std::unique_ptr<ByteSource> openStandardInput() {
  return std::make_unique<DescriptorSource>(STDIN_FILENO);
}

std::unique_ptr<ByteSink> openStandardOutput() {
  return std::make_unique<DescriptorSink>(STDOUT_FILENO);
}

std::unique_ptr<ByteSink> openSpecialOutput(const std::string& path) {
  return std::make_unique<DescriptorSink>(openChecked(path, O_WRONLY));
}

void createDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw Failure(error.message());
  if (fileFacts(path).kind != FileKind::kDirectory) fail(ENOTDIR);
}

std::vector<std::string> filesIn(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; entry != end;
       entry.increment(error)) {
    if (fileFacts(entry->path().string()).kind != FileKind::kDirectory)
      names.push_back(entry->path().filename().string());
    if (error) break;
  }
  if (error) throw Failure(error.message());
  std::sort(names.begin(), names.end());
  return names;
}

bool namesHaveNoCase() { return false; }

std::string joinPath(const std::string& directory, const std::string& name) {
  return (std::filesystem::path(directory) / name).string();
}

std::string lastComponent(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

bool backslashSeparates() { return false; }

std::string placeKey(const std::string& path) { return path; }

}  // namespace ksv_cli::platform
