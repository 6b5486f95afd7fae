#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "cli/system/journal_file.h"
#include "cli/system/open_file_posix.h"
#include "cli/system/places_posix.h"

namespace ksv_cli::platform {
namespace {

class PosixJournalFile : public JournalFile {
 public:
  PosixJournalFile(const std::string& path, int flags)
      : file_(openJournal(path, flags | O_WRONLY | O_APPEND | O_CLOEXEC)) {
    lock();
  }

  void cut(uint64_t size) override {
    while (::ftruncate(file_.number(), static_cast<off_t>(size)) != 0)
      if (errno != EINTR) fail(errno);
  }

  void append(const std::string& text) override {
    file_.writeAll(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }

  void synchronise() override { platform::synchronise(file_.number()); }

 private:
  static int openJournal(const std::string& path, int flags) {
    for (;;) {
      const int number = ::open(path.c_str(), flags, 0666);
      if (number >= 0) return number;
      if (errno != EINTR) fail(errno);
    }
  }

  // Volumes without locks leave it to the user.
  void lock() {
    while (::flock(file_.number(), LOCK_EX | LOCK_NB) != 0) {
      if (errno == EWOULDBLOCK) throw Failure("another run is writing to it");
      if (errno != EINTR) return;
    }
  }

  OpenFile file_;
};

}  // namespace

std::unique_ptr<JournalFile> JournalFile::create(const std::string& path) {
  auto file = std::make_unique<PosixJournalFile>(path, O_CREAT | O_EXCL);
  synchroniseDirectory(directoryOf(path));
  return file;
}

std::unique_ptr<JournalFile> JournalFile::open(const std::string& path) {
  return std::make_unique<PosixJournalFile>(path, 0);
}

}  // namespace ksv_cli::platform
