#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>

#include "failure.h"
#include "platform.h"

namespace ksv_cli::platform {
namespace {

// Writes to a pipe that nobody reads any more end the work, but are no news.
[[noreturn]] void fail(int error) {
  throw Failure(std::generic_category().message(error), error == EPIPE);
}

// The passing names that exist at the moment, in a shape that a signal handler
// may read: a slot is taken, its path is filled in, and then it is armed.
class TemporaryNames {
 public:
  static constexpr size_t kNone = static_cast<size_t>(-1);

  size_t add(const std::string& path) {
    if (path.size() >= kPathSize) return kNone;
    for (size_t i = 0; i < kSlots; ++i) {
      int expected = kFree;
      if (!states_[i].compare_exchange_strong(expected, kTaken)) continue;
      std::memcpy(paths_[i], path.c_str(), path.size() + 1);
      states_[i] = kArmed;
      return i;
    }
    return kNone;
  }

  void forget(size_t slot) {
    if (slot != kNone) states_[slot] = kFree;
  }

  void unlinkAll() {
    for (size_t i = 0; i < kSlots; ++i)
      if (states_[i] == kArmed) ::unlink(paths_[i]);
  }

 private:
  static constexpr size_t kSlots = 256;
  static constexpr size_t kPathSize = 4096;
  enum { kFree, kTaken, kArmed };

  std::array<std::atomic<int>, kSlots> states_{};
  char paths_[kSlots][kPathSize];
};

static_assert(std::atomic<int>::is_always_lock_free);

TemporaryNames temporaryNames;
mode_t modeOfNewFiles = 0666;

void removeTemporaryFiles(int signalNumber) {
  temporaryNames.unlinkAll();
  ::signal(signalNumber, SIG_DFL);
  ::raise(signalNumber);
}

void catchUnlessIgnored(int signalNumber) {
  struct sigaction action {};
  if (::sigaction(signalNumber, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
  action.sa_handler = removeTemporaryFiles;
  sigemptyset(&action.sa_mask);
  action.sa_flags = 0;
  ::sigaction(signalNumber, &action, nullptr);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ > STDERR_FILENO) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }

  void writeAll(const uint8_t* bytes, size_t size) const {
    while (size != 0) {
      const ssize_t count = ::write(number_, bytes, size);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) fail(errno);
      bytes += count;
      size -= static_cast<size_t>(count);
    }
  }

  size_t readSome(uint8_t* buffer, size_t size) const {
    for (;;) {
      const ssize_t count = ::read(number_, buffer, size);
      if (count >= 0) return static_cast<size_t>(count);
      if (errno != EINTR) fail(errno);
    }
  }

  void closeChecked() {
    const int number = number_;
    number_ = -1;
    if (::close(number) != 0 && errno != EINTR) fail(errno);
  }

 private:
  int number_;
};

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

FileFacts factsOf(const struct stat& status) {
  FileFacts facts;
  facts.kind = S_ISREG(status.st_mode)   ? FileKind::kRegular
               : S_ISDIR(status.st_mode) ? FileKind::kDirectory
                                         : FileKind::kOther;
  facts.size = facts.kind == FileKind::kRegular ? static_cast<uint64_t>(status.st_size) : 0;
  facts.device = static_cast<uint64_t>(status.st_dev);
  facts.number = static_cast<uint64_t>(status.st_ino);
  return facts;
}

FileFacts factsOfDescriptor(int number) {
  struct stat status;
  return ::fstat(number, &status) == 0 ? factsOf(status) : FileFacts{};
}

// Where a chain of links ends, whether or not a file is there.
std::string linkEnd(const std::string& path) {
  constexpr int kMostLinks = 40;
  std::filesystem::path place = path;
  std::error_code error;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(place, error); ++i) {
    const std::filesystem::path next = std::filesystem::read_symlink(place, error);
    if (error) break;
    place = next.is_absolute() ? next : place.parent_path() / next;
  }
  return place.string();
}

// A name that no other file has. The slot is armed before the file exists, so an
// interrupt at any instant leaves nothing behind.
class PassingName {
 public:
  explicit PassingName(const std::filesystem::path& directory) {
    static constexpr char kLetters[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::random_device random;
    std::string name = ".ksv-";
    for (int i = 0; i < 12; ++i) name += kLetters[random() % (sizeof kLetters - 1)];
    path_ = (directory / name).string();
    slot_ = temporaryNames.add(path_);
  }
  ~PassingName() { temporaryNames.forget(slot_); }
  PassingName(const PassingName&) = delete;
  PassingName& operator=(const PassingName&) = delete;

  const char* path() const { return path_.c_str(); }

 private:
  std::string path_;
  size_t slot_;
};

class PosixPendingFile : public PendingFile {
 public:
  explicit PosixPendingFile(const std::string& path)
      : place_(linkEnd(path)),
        temporary_(std::filesystem::path(place_).parent_path()),
        descriptor_(::open(temporary_.path(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
    if (descriptor_.number() < 0) fail(errno);
  }

  ~PosixPendingFile() override {
    if (!committed_) ::unlink(temporary_.path());
  }

  void write(const uint8_t* bytes, size_t size) override { descriptor_.writeAll(bytes, size); }

  void commit(const std::string& backup) override {
    takeOverPermissions();
    descriptor_.closeChecked();
    if (!backup.empty()) keepOldFileAs(backup);
    if (::rename(temporary_.path(), place_.c_str()) != 0) fail(errno);
    committed_ = true;
  }

 private:
  // The owner can be kept by root only, and its loss is no reason to fail.
  void takeOverPermissions() const {
    struct stat old;
    mode_t mode = modeOfNewFiles;
    if (::stat(place_.c_str(), &old) == 0) {
      mode = old.st_mode & 07777;
      if (::fchown(descriptor_.number(), old.st_uid, old.st_gid) != 0) mode &= 0777;
    }
    if (::fchmod(descriptor_.number(), mode) != 0) fail(errno);
  }

  // By a link, so that there is a file under the old name at every instant.
  void keepOldFileAs(const std::string& backup) const {
    if (::unlink(backup.c_str()) != 0 && errno != ENOENT) fail(errno);
    if (::link(place_.c_str(), backup.c_str()) == 0) return;
    if (::rename(place_.c_str(), backup.c_str()) != 0) fail(errno);
  }

  std::string place_;
  PassingName temporary_;
  Descriptor descriptor_;
  bool committed_ = false;
};

}  // namespace

std::vector<std::string> commandLineArguments(int argumentCount, char** arguments) {
  return {arguments + std::min(argumentCount, 1), arguments + argumentCount};
}

std::string environmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::vector<std::string> filesNamedBy(const std::string& operand) { return {operand}; }

void prepareProcess() {
  ::signal(SIGPIPE, SIG_IGN);
  for (const int signalNumber : {SIGHUP, SIGINT, SIGTERM}) catchUnlessIgnored(signalNumber);
  const mode_t mask = ::umask(0);
  ::umask(mask);
  modeOfNewFiles = 0666 & ~mask;
}

bool standardErrorIsTerminal() { return ::isatty(STDERR_FILENO) != 0; }

bool standardErrorTakesEscapes() { return standardErrorIsTerminal(); }

void writeToStandardError(const std::string& text) {
  try {
    Descriptor(STDERR_FILENO).writeAll(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  } catch (const Failure&) {
    // There is nowhere left to say so.
  }
}

FileFacts fileFacts(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 ? factsOf(status) : FileFacts{};
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

std::unique_ptr<PendingFile> PendingFile::create(const std::string& path) {
  if (fileFacts(path).kind == FileKind::kDirectory) fail(EISDIR);
  return std::make_unique<PosixPendingFile>(path);
}

void createDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw Failure(error.message());
  if (fileFacts(path).kind != FileKind::kDirectory) fail(ENOTDIR);
}

std::string joinPath(const std::string& directory, const std::string& name) {
  return (std::filesystem::path(directory) / name).string();
}

std::string lastComponent(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

std::string placeKey(const std::string& path) { return path; }

}  // namespace ksv_cli::platform
