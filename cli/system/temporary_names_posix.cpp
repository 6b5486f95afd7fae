#include "cli/system/temporary_names_posix.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <mutex>

#include "cli/system/console.h"
#include "cli/system/passing_names.h"

namespace ksv_cli::platform {
namespace {

// The passing names that exist at the moment, in a shape that a signal handler
// may read. They change in a NamesSection only.
class TemporaryNames {
 public:
  static constexpr size_t kNone = static_cast<size_t>(-1);

  size_t add(const std::string& path) {
    if (path.size() >= kPathSize) return kNone;
    for (size_t i = 0; i < kSlots; ++i) {
      bool expected = false;
      if (!isTaken_[i].compare_exchange_strong(expected, true)) continue;
      std::memcpy(paths_[i], path.c_str(), path.size() + 1);
      return i;
    }
    return kNone;
  }

  void forget(size_t slot) {
    if (slot != kNone) isTaken_[slot] = false;
  }

  void unlinkAll() {
    for (size_t i = 0; i < kSlots; ++i)
      if (isTaken_[i]) ::unlink(paths_[i]);
  }

 private:
  // Twice as many as there are files worked on at once: one has a result and a copy.
  static constexpr size_t kSlots = 512;
  static constexpr size_t kPathSize = 4096;

  std::array<std::atomic<bool>, kSlots> isTaken_{};
  char paths_[kSlots][kPathSize];
};

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

TemporaryNames temporaryNames;

// Both are read and written in one order by all threads: a thread that finds that the
// process does not end has been counted before the signal looks at the count.
std::atomic<bool> processEnds{false};
std::atomic<int> threadsInSections{0};
thread_local bool isInSection = false;

void sleepShortly() {
  const timespec time = {0, 100'000};
  ::nanosleep(&time, nullptr);
}

void endProcessAt(int signalNumber) {
  removeTemporaryFiles();
  ::signal(signalNumber, SIG_DFL);
  ::raise(signalNumber);
}

// What ignores a signal, or handles it already, has reasons of its own.
void catchUnlessHandled(int signalNumber) {
  struct sigaction action {};
  if (::sigaction(signalNumber, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) return;
  action.sa_handler = endProcessAt;
  sigfillset(&action.sa_mask);
  action.sa_flags = 0;
  ::sigaction(signalNumber, &action, nullptr);
}

bool endsProcess(int signalNumber) {
  for (const int other : {SIGKILL, SIGSTOP, SIGCHLD, SIGCONT, SIGTSTP, SIGTTIN, SIGTTOU, SIGURG,
                          SIGWINCH, SIGPIPE, SIGXFSZ})
    if (signalNumber == other) return false;
  return true;
}

void removeTemporaryFilesAtSignals() {
  for (int signalNumber = 1; signalNumber <= SIGRTMAX; ++signalNumber)
    if (endsProcess(signalNumber)) catchUnlessHandled(signalNumber);
}

int createdFile(const std::string& path) {
  int number;
  int error;
  {
    const NamesSection section;
    do {
      number = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
      error = errno;
    } while (number < 0 && error == EINTR);
  }
  if (number < 0) fail(error);
  return number;
}

}  // namespace

// A thread that is in a section itself has stopped there for good.
void removeTemporaryFiles() noexcept {
  processEnds = true;
  while (threadsInSections > (isInSection ? 1 : 0)) sleepShortly();
  temporaryNames.unlinkAll();
}

// Signals are kept from a thread that is counted, which a handler would wait for.
NamesSection::NamesSection() {
  sigset_t all;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  ++threadsInSections;
  isInSection = true;
  if (!processEnds) return;
  isInSection = false;
  --threadsInSections;
  for (;;) sleepShortly();
}

NamesSection::~NamesSection() {
  isInSection = false;
  --threadsInSections;
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

PassingName::PassingName(const std::string& directory, const std::string& name)
    : path_((std::filesystem::path(directory) / (name.empty() ? randomPassingName() : name))
                .string()) {
  // Most commands make no file, and are spared a hundred calls of the system.
  static std::once_flag signalsAreCaught;
  std::call_once(signalsAreCaught, removeTemporaryFilesAtSignals);
  const NamesSection section;
  slot_ = temporaryNames.add(path_);
}

PassingName::~PassingName() {
  const NamesSection section;
  temporaryNames.forget(slot_);
}

PassingFile::PassingFile(const std::string& directory, const std::string& name)
    : name_(directory, name), descriptor_(createdFile(name_.path())) {}

PassingFile::~PassingFile() {
  if (!isThere_) return;
  int error;
  {
    const NamesSection section;
    error = ::unlink(path().c_str()) == 0 ? 0 : errno;
  }
  if (error != 0 && error != ENOENT) tellLeftOver(path(), {error, std::generic_category()});
}

bool PassingFile::renameTo(const std::string& place) {
  isThere_ = ::rename(path().c_str(), place.c_str()) != 0;
  return !isThere_;
}

}  // namespace ksv_cli::platform
