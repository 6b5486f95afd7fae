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
#include "cli/system/paths.h"
#include "cli/system/pending_file.h"
#include "cli/system/places_posix.h"
#include "cli/system/temporary_names_posix.h"

namespace ksv_cli::platform {
namespace {

mode_t modeOfNewFiles = 0666;

timespec timeOf(int64_t nanoseconds) {
  constexpr int64_t kSecond = 1'000'000'000;
  const int64_t part = (nanoseconds % kSecond + kSecond) % kSecond;
  return {static_cast<time_t>((nanoseconds - part) / kSecond), static_cast<long>(part)};
}

// The steps that both kinds of pending files are made of.
class PosixPendingFile : public PendingFile {
 public:
  PosixPendingFile(const std::string& path, const Placing& placing)
      : place_(linkEnd(path)), file_(directoryOf(place_), placing.passingName) {}

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
  NewFile(const std::string& path, const Placing& placing)
      : PosixPendingFile(path, placing), isDurable_(placing.isDurable) {}

  bool commit(const Announce& announce) override {
    const bool replaces = fileFacts(place()).kind != FileKind::kMissing;
    const bool waits = replaces || isDurable_;
    if (replaces)
      handOnAttributes(place(), number(), WhatIsRefused::kGivesUp);
    else if (::fchmod(number(), modeOfNewFiles) != 0)
      fail(errno);
    if (waits) synchronise(number());
    file().descriptor().closeChecked();
    if (announce) announce();
    {
      const NamesSection section;
      takePlace();
    }
    if (waits) synchroniseDirectory(directoryOf(place()));
    return true;
  }

 private:
  const bool isDurable_;
};

class ConvertedFile : public PosixPendingFile {
 public:
  ConvertedFile(const std::string& path, const InPlace& how, const Placing& placing)
      : PosixPendingFile(path, placing), how_(how) {}

  bool commit(const Announce& announce) override {
    if (haveSameBytes(*openInput(file().path()), *openInput(place()))) return false;
    handOnAttributes(place(), number(), WhatIsRefused::kFails);
    if (how_.keepsTimes) handOnTimes();
    synchronise(number());
    file().descriptor().closeChecked();
    refuseOtherBackup(fileFacts(place()));
    if (announce) announce();
    replaceOriginal();
    synchroniseDirectory(directoryOf(place()));
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
      // No loss of power takes both names from the original. That of what a link leads to is
      // kept beside the link.
      synchroniseDirectory(directoryOf(how_.backup));
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

  void refuseOtherBackup(const FileFacts& now) const {
    if (how_.backup.empty() || isKeptAlready(now)) return;
    if (isLink(how_.backup) || fileFacts(how_.backup).kind != FileKind::kMissing) refuseBackup();
  }

  [[noreturn]] void refuseBackup() const {
    throw Failure("the backup " + how_.backup + " exists already");
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
    if (errno == EEXIST) refuseBackup();
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

std::unique_ptr<PendingFile> PendingFile::create(const std::string& path, const Placing& placing) {
  if (fileFacts(path).kind == FileKind::kDirectory) fail(EISDIR);
  return std::make_unique<NewFile>(path, placing);
}

std::unique_ptr<PendingFile> PendingFile::createInPlace(const std::string& path, const InPlace& how,
                                                        const Placing& placing) {
  return std::make_unique<ConvertedFile>(path, how, placing);
}

}  // namespace ksv_cli::platform
