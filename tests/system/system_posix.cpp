#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include "tests/system/system.h"

namespace ksv::test {

const char kTemporaryVariable[] = "TMPDIR";
const char kConfigurationVariable[] = "XDG_CONFIG_HOME";

namespace {

// Found out before a test moves to mounts of its own, where the link may lead elsewhere.
const std::string executable = std::filesystem::canonical("/proc/self/exe").string();

[[noreturn]] void fail(const char* what) { throw std::runtime_error(what); }

std::string newSharedName() {
  static std::atomic<int> counter = 0;
  return "/ksv_test." + std::to_string(getpid()) + "." + std::to_string(++counter);
}

void* mapShared(const std::string& name, int flags, size_t size) {
  const int file = shm_open(name.c_str(), flags, 0600);
  if (file < 0) fail("shared memory cannot be opened");
  const bool sized = (flags & O_CREAT) == 0 || ftruncate(file, static_cast<off_t>(size)) == 0;
  void* address =
      sized ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0) : MAP_FAILED;
  close(file);
  if (address == MAP_FAILED) fail("shared memory cannot be mapped");
  return address;
}

}  // namespace

std::string makeTemporaryDirectory(const std::string& prefix, const std::string& parent) {
  const std::filesystem::path base =
      parent.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(parent);
  std::string name = (base / (prefix + ".XXXXXX")).string();
  if (mkdtemp(name.data()) == nullptr) fail("a temporary directory cannot be made");
  return std::filesystem::canonical(name).string();
}

std::optional<std::string> variable(const char* name) {
  const char* value = getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void setVariable(const char* name, const std::optional<std::string>& value) {
  if (value) {
    setenv(name, value->c_str(), 1);
  } else {
    unsetenv(name);
  }
}

std::optional<std::string> toAnsi(const std::string& utf8) { return utf8; }

std::string fromAnsi(const std::string& ansi) { return ansi; }

ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

size_t usableSize(void* block) { return malloc_usable_size(block); }

std::string ownExecutable() { return executable; }

std::vector<std::string> commandLine(int argc, char** argv) { return {argv, argv + argc}; }

void markForTracers(const char* word) { [[maybe_unused]] const int none = access(word, F_OK); }

void killOwnProcess() {
  ::kill(getpid(), SIGKILL);
  abort();
}

ChildProcess ChildProcess::start(const char* name, const Arguments& arguments) {
  std::vector<std::string> words = {ownExecutable(), kChildOption, name};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  pid_t child = 0;
  if (posix_spawn(&child, pointers[0], nullptr, nullptr, pointers.data(), environ) != 0)
    fail("a process cannot be started");
  return ChildProcess(child);
}

int ChildProcess::result() {
  if (handle_ == kNone) return result_;
  int status = 0;
  waitpid(static_cast<pid_t>(std::exchange(handle_, kNone)), &status, 0);
  result_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result_;
}

void ChildProcess::kill() {
  if (handle_ != kNone) ::kill(static_cast<pid_t>(handle_), SIGKILL);
}

SharedMemory::SharedMemory(size_t size)
    : name_(newSharedName()),
      size_(size),
      owned_(true),
      mapping_(0),
      address_(mapShared(name_, O_CREAT | O_EXCL | O_RDWR, size)) {}

SharedMemory::SharedMemory(const std::string& name, size_t size)
    : name_(name),
      size_(size),
      owned_(false),
      mapping_(0),
      address_(mapShared(name, O_RDWR, size)) {}

SharedMemory::~SharedMemory() {
  munmap(address_, size_);
  if (owned_) shm_unlink(name_.c_str());
}

}  // namespace ksv::test
