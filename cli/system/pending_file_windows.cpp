#include <windows.h>

#include <optional>
#include <system_error>
#include <utility>

#include "cli/system/failure.h"
#include "cli/system/files_windows.h"
#include "cli/system/in_place.h"
#include "cli/system/open_file_windows.h"
#include "cli/system/pending_file.h"
#include "cli/system/system_paths_windows.h"
#include "cli/system/temporary_names_windows.h"
#include "common/wide_text_windows.h"

namespace ksv_cli::platform {
namespace {

FILETIME timeOf(int64_t count) {
  return {static_cast<DWORD>(count), static_cast<DWORD>(static_cast<uint64_t>(count) >> 32)};
}

// The place of a result: where the path is a link, the file that it leads to.
std::wstring linkEnd(const std::wstring& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  const bool isLink =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if (!isLink) return path;
  const OpenFile file(openToLook(path));
  if (!file.isOpen()) fail(::GetLastError());
  const std::wstring end = ksv::platform::writtenBy([&](wchar_t* buffer, DWORD size) {
    return ::GetFinalPathNameByHandleW(file.get(), buffer, size, FILE_NAME_NORMALIZED);
  });
  return end.empty() ? path : end;
}

// The name under which an original is kept, taken before anything is moved there: a file
// that has it already is left alone.
class BackupName {
 public:
  // shown: the name as the user gave it; empty: nothing is kept.
  explicit BackupName(const std::string& shown) {
    if (shown.empty()) return;
    path_ = systemPath(shown);
    const OpenFile file(::CreateFileW(path_.c_str(), GENERIC_WRITE, kShareAll, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.isOpen()) return;
    const DWORD error = ::GetLastError();
    if (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS)
      throw Failure("the backup " + shown + " exists already");
    fail(error);
  }

  // Null when nothing is kept.
  const wchar_t* path() const { return path_.empty() ? nullptr : path_.c_str(); }

  // Gives the name back, and what has been moved there to its place.
  void giveBack(const std::wstring& place) const {
    if (path_.empty()) return;
    if (::GetFileAttributesW(place.c_str()) != INVALID_FILE_ATTRIBUTES)
      ::DeleteFileW(path_.c_str());
    else
      ::MoveFileExW(path_.c_str(), place.c_str(), 0);
  }

 private:
  std::wstring path_;
};

class WindowsPendingFile : public PendingFile {
 public:
  WindowsPendingFile(const std::string& path, std::optional<InPlace> inPlace)
      : place_(linkEnd(systemPath(path))),
        file_(place_.substr(0, directoryLength(place_, kSeparators))),
        inPlace_(std::move(inPlace)) {}

  void write(const uint8_t* bytes, size_t size) override {
    writeAll(file_.handle().get(), bytes, size);
  }

  bool commit() override {
    if (inPlace_) {
      if (haveSameBytes(*openInput(utf8Of(file_.path())), *openInput(utf8Of(place_)))) return false;
      if (inPlace_->keepsTimes) handOnTimes();
    }
    if (!::FlushFileBuffers(file_.handle().get())) fail(::GetLastError());
    file_.handle().closeChecked();
    file_.rename([this] { replace(); });
    return true;
  }

 private:
  void handOnTimes() {
    const FILETIME readTime = timeOf(inPlace_->original.readTime);
    const FILETIME writeTime = timeOf(inPlace_->original.writeTime);
    WIN32_FILE_ATTRIBUTE_DATA old;
    if (!::GetFileAttributesExW(place_.c_str(), GetFileExInfoStandard, &old) ||
        !::SetFileTime(file_.handle().get(), &old.ftCreationTime, &readTime, &writeTime))
      fail(::GetLastError());
  }

  void replace() const {
    if (!inPlace_) return takePlace(nullptr);
    checkThatNothingIsLost(inPlace_->original, fileFacts(utf8Of(place_)));
    const BackupName backup(inPlace_->backup);
    try {
      takePlace(backup.path());
    } catch (const Failure&) {
      backup.giveBack(place_);
      throw;
    }
  }

  // ReplaceFileW hands the rights of the old file on. Some file systems do not have
  // it, and it may stop when the old file has its backup name.
  void takePlace(const wchar_t* backup) const {
    const std::wstring& temporary = file_.path();
    const DWORD attributes = ::GetFileAttributesW(place_.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
      refuseFileInUse();
      ::SetFileAttributesW(temporary.c_str(), attributes);
      if (::ReplaceFileW(place_.c_str(), temporary.c_str(), backup, REPLACEFILE_IGNORE_MERGE_ERRORS,
                         nullptr, nullptr))
        return;
      const bool isStillThere = ::GetFileAttributesW(place_.c_str()) != INVALID_FILE_ATTRIBUTES;
      if (backup != nullptr && isStillThere) move(place_, backup);
    }
    move(temporary, place_);
  }

  // Which the calls that replace it report as a matter of rights.
  void refuseFileInUse() const {
    const OpenFile file(::CreateFileW(place_.c_str(), DELETE, kShareAll, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isOpen() && ::GetLastError() == ERROR_SHARING_VIOLATION)
      fail(ERROR_SHARING_VIOLATION);
  }

  static void move(const std::wstring& from, const std::wstring& to) {
    constexpr DWORD kHow = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    if (!::MoveFileExW(from.c_str(), to.c_str(), kHow)) fail(::GetLastError());
  }

  std::wstring place_;
  PassingFile file_;
  const std::optional<InPlace> inPlace_;
};

std::unique_ptr<PendingFile> pendingFile(const std::string& path, std::optional<InPlace> inPlace) {
  const DWORD attributes = ::GetFileAttributesW(systemPath(path).c_str());
  const bool isThere = attributes != INVALID_FILE_ATTRIBUTES;
  if (isThere && (attributes & FILE_ATTRIBUTE_DIRECTORY)) fail(std::errc::is_a_directory);
  if (isThere && (attributes & FILE_ATTRIBUTE_READONLY)) fail(std::errc::permission_denied);
  return std::make_unique<WindowsPendingFile>(path, std::move(inPlace));
}

}  // namespace

std::unique_ptr<PendingFile> PendingFile::create(const std::string& path) {
  return pendingFile(path, std::nullopt);
}

std::unique_ptr<PendingFile> PendingFile::createInPlace(const std::string& path,
                                                        const InPlace& how) {
  return pendingFile(path, how);
}

}  // namespace ksv_cli::platform
