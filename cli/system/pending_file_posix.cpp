#include "cli/system/pending_file_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "cli/system/file_attributes_posix.h"
#include "cli/system/in_place.h"
#include "cli/system/open_file_posix.h"
#include "cli/system/pending_file.h"
#include "cli/system/temporary_names_posix.h"

namespace ksv_cli::platform {
namespace {

mode_t modeOfNewFiles = 0666;

std::string directoryOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

bool isLink(const std::string& path) {
  struct stat status;
  if (::lstat(path.c_str(), &status) == 0) return S_ISLNK(status.st_mode);
  if (!isOneOf(errno, {ENOENT, ENOTDIR, EACCES, ENAMETOOLONG})) fail(errno);
  return false;
}

// Where a chain of links ends, whether or not a file is there.
std::string linkEnd(const std::string& path) {
  constexpr int kMostLinks = 40;
  std::filesystem::path place = path;
  for (int i = 0; i < kMostLinks && isLink(place); ++i) {
    std::error_code error;
    const std::filesystem::path next = std::filesystem::read_symlink(place, error);
    if (error) fail(error.value());
    place = next.is_absolute() ? next : place.parent_path() / next;
  }
  return place.string();
}

// What has no disk behind it has nothing to wait for.
void synchronise(int number) {
  while (::fsync(number) != 0) {
    if (isOneOf(errno, {EINVAL, ENOTSUP, EROFS})) return;
    if (errno != EINTR) fail(errno);
  }
}

// A directory that may be written to, but not read, waits for all there is.
void synchroniseDirectory(const std::string& path) {
  const std::string name = path.empty() ? "." : path;
  const OpenFile directory(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen())
    synchronise(directory.number());
  else
    ::sync();
}

timespec timeOf(int64_t nanoseconds) {
  constexpr int64_t kSecond = 1'000'000'000;
  const int64_t part = (nanoseconds % kSecond + kSecond) % kSecond;
  return {static_cast<time_t>((nanoseconds - part) / kSecond), static_cast<long>(part)};
}

// The steps that both kinds of pending files are made of.
class PosixPendingFile : public PendingFile {
 public:
  explicit PosixPendingFile(const std::string& path)
      : place_(linkEnd(path)), file_(directoryOf(place_)) {}

  void write(const uint8_t* bytes, size_t size) override {
    file_.descriptor().writeAll(bytes, size);
  }

 protected:
  const std::string& place() const { return place_; }
  PassingFile& file() { return file_; }
  int number() { return file_.descriptor().number(); }

  void takePlace() {
    if (!file_.renameTo(place_)) fail(errno);
  }

 private:
  std::string place_;
  PassingFile file_;
};

class NewFile : public PosixPendingFile {
 public:
  using PosixPendingFile::PosixPendingFile;

  bool commit() override {
    const bool replaces = fileFacts(place()).kind != FileKind::kMissing;
    if (replaces) {
      handOnAttributes(place(), number(), WhatIsRefused::kGivesUp);
      synchronise(number());
    } else if (::fchmod(number(), modeOfNewFiles) != 0) {
      fail(errno);
    }
    file().descriptor().closeChecked();
    {
      const NamesSection section;
      takePlace();
    }
    if (replaces) synchroniseDirectory(directoryOf(place()));
    return true;
  }
};

class ConvertedFile : public PosixPendingFile {
 public:
  ConvertedFile(const std::string& path, const InPlace& how) : PosixPendingFile(path), how_(how) {}

  bool commit() override {
    if (haveSameBytes(*openInput(file().path()), *openInput(place()))) return false;
    handOnAttributes(place(), number(), WhatIsRefused::kFails);
    if (how_.keepsTimes) handOnTimes();
    synchronise(number());
    file().descriptor().closeChecked();
    replaceOriginal();
    synchroniseDirectory(directoryOf(place()));
    // The backup of what a link leads to stands beside the link.
    const std::string directory = directoryOf(how_.backup);
    if (!how_.backup.empty() && directory != directoryOf(place())) synchroniseDirectory(directory);
    return true;
  }

 private:
  void handOnTimes() {
    const timespec times[2] = {timeOf(how_.original.readTime), timeOf(how_.original.writeTime)};
    if (::futimens(number(), times) != 0) fail(errno);
  }

  void replaceOriginal() {
    const NamesSection section;
    FileFacts now = fileFacts(place());
    isLinked_ = isKeptAlready(now);
    if (isLinked_) --now.names;
    checkThatNothingIsLost(how_.original, now);
    if (how_.backup.empty()) return takePlace();
    if (!isLinked_) keepOriginal();
    try {
      takePlace();
    } catch (const Failure& failure) {
      restoreOriginal(failure);
      throw;
    }
  }

  // A call that was ended behind its first step has left the original under both names.
  bool isKeptAlready(const FileFacts& now) const {
    return !how_.backup.empty() && how_.backup != place() && now.names > 1 &&
           !isLink(how_.backup) && fileFacts(how_.backup).isSameFileAs(now);
  }

  // By a link, so that there is a file under the old name at every instant, or by a
  // new name on volumes without links. Neither replaces what is there.
  void keepOriginal() {
    const char* from = place().c_str();
    const char* to = how_.backup.c_str();
    isLinked_ = ::link(from, to) == 0;
    if (isLinked_) return;
    const bool hasNoLinks = isOneOf(errno, {EPERM, ENOTSUP, ENOSYS, EMLINK});
    if (hasNoLinks && ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return;
    if (errno == EEXIST) throw Failure("the backup " + how_.backup + " exists already");
    throw Failure("the backup " + how_.backup +
                  " cannot be made: " + std::generic_category().message(errno));
  }

  void restoreOriginal(const Failure& failure) const {
    const char* kept = how_.backup.c_str();
    const int result =
        isLinked_ ? ::unlink(kept)
                  : ::renameat2(AT_FDCWD, kept, AT_FDCWD, place().c_str(), RENAME_NOREPLACE);
    if (result == 0) return;
    const std::string words = std::generic_category().message(errno);
    throw Failure(failure.what() + std::string("; the original is still at ") + how_.backup +
                  ", which cannot be undone: " + words);
  }

  const InPlace how_;
  bool isLinked_ = false;
};

}  // namespace

void readModeOfNewFiles() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  modeOfNewFiles = 0666 & ~mask;
}

std::unique_ptr<PendingFile> PendingFile::create(const std::string& path) {
  if (fileFacts(path).kind == FileKind::kDirectory) fail(EISDIR);
  return std::make_unique<NewFile>(path);
}

std::unique_ptr<PendingFile> PendingFile::createInPlace(const std::string& path,
                                                        const InPlace& how) {
  return std::make_unique<ConvertedFile>(path, how);
}

}  // namespace ksv_cli::platform
