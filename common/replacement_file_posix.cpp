// A file that appears complete or not at all.
//
// It is written to a fixed name beside its place, so that what a killed writer
// leaves behind is taken up by the next one instead of piling up. The lock on the
// open file, which the system drops with the process, tells a stale one from one
// that is being written.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "common/descriptor_posix.h"
#include "common/guard.h"
#include "common/platform.h"
#include "common/uninterrupted_posix.h"
#include "common/write_buffer.h"

namespace ksv::platform {
namespace {

constexpr char kTemporarySuffix[] = ".tmp";
// A temporary file that another writer renames or removes between our opening and
// locking it is opened anew, but not for ever.
constexpr int kOpenAttempts = 16;

bool somethingStandsAt(const char* path) {
  struct stat status;
  return lstat(path, &status) == 0;
}

bool directoryIsWritable(const std::string& path) {
  const size_t separator = path.rfind('/');
  const std::string directory = separator == path.npos ? "." : path.substr(0, separator + 1);
  return faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

enum class Hold {
  kOurs,
  kLost,       // renamed or removed by another writer meanwhile
  kTaken,      // another writer is at it
  kImpossible  // the system refuses
};

// Locks the open file. It is ours when path still names it and nothing else does.
Hold take(int file, const char* path) {
  if (uninterrupted([&] { return flock(file, LOCK_EX | LOCK_NB); }) != 0)
    return errno == EWOULDBLOCK ? Hold::kTaken : Hold::kImpossible;
  struct stat open;
  struct stat named;
  if (fstat(file, &open) != 0) return Hold::kImpossible;
  if (lstat(path, &named) != 0) return errno == ENOENT ? Hold::kLost : Hold::kImpossible;
  const bool isAlone = S_ISREG(open.st_mode) && open.st_nlink == 1;
  const bool isSame = open.st_dev == named.st_dev && open.st_ino == named.st_ino;
  return isAlone && isSame ? Hold::kOurs : Hold::kLost;
}

struct OpenFile {
  Descriptor file;
  bool isNew;
};

OpenFile openOrCreate(const char* path) {
  constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const auto openWith = [&](int flags) {
    return Descriptor(uninterrupted([&] { return open(path, kFlags | flags, 0666); }));
  };
  Descriptor created = openWith(O_CREAT | O_EXCL);
  if (created || errno != EEXIST) return {std::move(created), true};
  return {openWith(O_CREAT), false};
}

// The temporary file, open and locked; not open when that is refused.
Descriptor openLocked(const char* path) {
  for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
    OpenFile opened = openOrCreate(path);
    if (!opened.file) break;
    const Hold hold = take(opened.file.get(), path);
    if (hold == Hold::kOurs) return std::move(opened.file);
    // Nobody else would: what is there empty, and is never locked, is not a writer's.
    if (hold == Hold::kImpossible && opened.isNew) unlink(path);
    if (hold != Hold::kLost) break;
  }
  return Descriptor();
}

struct StoreIn {
  bool operator()(const char* bytes, size_t count) const { return writeWhole(file, bytes, count); }

  int file;
};

class PosixReplacementFile final : public ReplacementFile {
 public:
  explicit PosixReplacementFile(const char* path)
      : path_(path), temporaryPath_(path_ + kTemporarySuffix) {}

  ~PosixReplacementFile() override { discard(); }

  bool open() {
    if (path_.empty() || path_.back() == '/') return false;
    if (somethingStandsAt(path_.c_str()) || !directoryIsWritable(path_)) return false;
    file_ = openLocked(temporaryPath_.c_str());
    // Whoever writes this file holds the lock, so that what another writer put
    // into the place before us is seen now at the latest.
    return file_ && !somethingStandsAt(path_.c_str()) &&
           uninterrupted([&] { return ftruncate(file_.get(), 0); }) == 0;
  }

  bool write(const void* bytes, size_t count) override {
    return file_ && buffer_.write(bytes, count, StoreIn{file_.get()});
  }

  bool commit() override {
    if (!file_) return false;
    if (!buffer_.flush(StoreIn{file_.get()}) ||
        uninterrupted([&] { return fsync(file_.get()); }) != 0 ||
        rename(temporaryPath_.c_str(), path_.c_str()) != 0) {
      discard();
      return false;
    }
    file_ = Descriptor();
    return true;
  }

 private:
  // The name goes before the lock: behind it, it may be another writer's.
  void discard() {
    if (!file_) return;
    unlink(temporaryPath_.c_str());
    file_ = Descriptor();
  }

  const std::string path_;
  const std::string temporaryPath_;
  Descriptor file_;
  WriteBuffer buffer_;
};

}  // namespace

std::unique_ptr<ReplacementFile> ReplacementFile::create(const char* path) {
  return guarded(std::unique_ptr<ReplacementFile>(), [&]() -> std::unique_ptr<ReplacementFile> {
    auto file = std::make_unique<PosixReplacementFile>(path);
    if (!file->open()) return nullptr;
    return file;
  });
}

}  // namespace ksv::platform
