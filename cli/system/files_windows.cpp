#include "cli/system/files_windows.h"

#include <algorithm>
#include <memory>
#include <system_error>

#include "cli/system/system_paths_windows.h"

namespace ksv_cli::platform {
namespace {

class FileSource : public ByteSource {
 public:
  explicit FileSource(HANDLE handle) : handle_(handle), source_(handle) {}
  size_t read(uint8_t* buffer, size_t size) override { return source_.read(buffer, size); }

 private:
  OpenFile handle_;
  HandleSource source_;
};

class FileSink : public ByteSink {
 public:
  explicit FileSink(HANDLE handle) : handle_(handle) {}
  void write(const uint8_t* bytes, size_t size) override { writeAll(handle_.get(), bytes, size); }

 private:
  OpenFile handle_;
};

int64_t countOf(const FILETIME& time) {
  return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

HANDLE openChecked(const std::string& path, DWORD access) {
  const HANDLE handle = ::CreateFileW(systemPath(path).c_str(), access, kShareAll, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle != INVALID_HANDLE_VALUE) return handle;
  const DWORD error = ::GetLastError();
  if (fileFacts(path).kind == FileKind::kDirectory) fail(std::errc::is_a_directory);
  fail(error);
}

}  // namespace

size_t HandleSource::read(uint8_t* buffer, size_t size) {
  constexpr size_t kMostAtOnce = 1 << 30;
  const DWORD wanted = static_cast<DWORD>(std::min(size, kMostAtOnce));
  for (;;) {
    DWORD count = 0;
    const bool isRead = ::ReadFile(handle_, buffer, wanted, &count, nullptr) != 0;
    const DWORD error = isRead ? ERROR_SUCCESS : ::GetLastError();
    if (error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF) return 0;
    if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA) fail(error);
    // A pipe hands out an empty message for an empty write. Its end is an error of reading, or, of
    // pipes that other systems share, only of looking into it.
    if (count != 0 || ::GetFileType(handle_) != FILE_TYPE_PIPE) return count;
    if (!::PeekNamedPipe(handle_, nullptr, 0, nullptr, nullptr, nullptr)) return 0;
  }
}

FileFacts factsOf(HANDLE handle) {
  FileFacts facts;
  const DWORD type = ::GetFileType(handle);
  BY_HANDLE_FILE_INFORMATION information;
  if (type == FILE_TYPE_CHAR || type == FILE_TYPE_PIPE) {
    facts.kind = FileKind::kOther;
  } else if (type == FILE_TYPE_DISK && ::GetFileInformationByHandle(handle, &information)) {
    const bool isDirectory = (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    facts.kind = isDirectory ? FileKind::kDirectory : FileKind::kRegular;
    if (!isDirectory)
      facts.size = uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
    facts.device = information.dwVolumeSerialNumber;
    facts.number = uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow;
    facts.names = information.nNumberOfLinks;
    facts.readTime = countOf(information.ftLastAccessTime);
    facts.writeTime = countOf(information.ftLastWriteTime);
  }
  return facts;
}

HANDLE openToLook(const std::wstring& path) {
  return ::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

// A pipe is not opened for a look at it, which would take the place of a reader.
FileFacts fileFacts(const std::string& path) {
  FileFacts facts;
  const std::wstring units = systemPath(path);
  if (isVerbatimOrDevice(units) && (units[2] == L'.')) {
    facts.kind = FileKind::kOther;
    return facts;
  }
  const OpenFile file(openToLook(units));
  return file.isOpen() ? factsOf(file.get()) : facts;
}

// Windows counts by 100 nanoseconds from 1601 on.
int64_t sinceEpoch(int64_t time) { return (time - 116'444'736'000'000'000) * 100; }

std::unique_ptr<ByteSource> openInput(const std::string& path) {
  return std::make_unique<FileSource>(openChecked(path, GENERIC_READ));
}

std::unique_ptr<ByteSink> openSpecialOutput(const std::string& path) {
  return std::make_unique<FileSink>(openChecked(path, GENERIC_WRITE));
}

}  // namespace ksv_cli::platform
