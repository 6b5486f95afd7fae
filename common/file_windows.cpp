// Files and directories of Windows.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>

#include "common/guard.h"
#include "common/handle_windows.h"
#include "common/platform.h"
#include "common/wide_text_windows.h"
#include "ksv_file.h"

namespace ksv::platform {
namespace {

// Bytes of one call for reading.
constexpr size_t kMostAtOnce = size_t{1} << 30;
constexpr uint32_t kCharacterDevice = 0x2000;
constexpr uint32_t kPipe = 0x1000;
constexpr uint32_t kReadable = 0444;
constexpr uint32_t kWritable = 0222;
constexpr uint32_t kExecutable = 0111;

class Search {
 public:
  explicit Search(const wchar_t* pattern) : handle_(FindFirstFileW(pattern, &found_)) {}
  ~Search() {
    if (*this) FindClose(handle_);
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;

  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
  const wchar_t* name() const { return found_.cFileName; }
  bool next() { return FindNextFileW(handle_, &found_) != 0; }

 private:
  WIN32_FIND_DATAW found_;
  const HANDLE handle_;
};

// All names that a search goes through. One that is no UTF-16 cannot be told in UTF-8
// and is left out.
void appendNames(Search& search, std::vector<std::string>& names) {
  do {
    if (auto name = narrowText(search.name())) names.push_back(std::move(*name));
  } while (search.next());
}

int64_t secondsSince1970(const FILETIME& time) {
  constexpr int64_t kTicksPerSecond = 10'000'000;
  constexpr int64_t kSecondsFrom1601To1970 = 11'644'473'600;
  const auto ticks = static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
  return ticks / kTicksPerSecond - kSecondsFrom1601To1970;
}

bool isProgram(const wchar_t* path) {
  const size_t length = std::wcslen(path);
  if (length < 4) return false;
  for (const wchar_t* extension : {L".exe", L".com", L".bat", L".cmd"}) {
    if (_wcsicmp(path + length - 4, extension) == 0) return true;
  }
  return false;
}

uint32_t modeOf(DWORD attributes, const wchar_t* path) {
  const bool isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  uint32_t mode = kReadable | (isDirectory ? kDirectory : kRegularFile);
  if ((attributes & FILE_ATTRIBUTE_READONLY) == 0) mode |= kWritable;
  if (isDirectory || isProgram(path)) mode |= kExecutable;
  return mode;
}

// The drive as the C runtime numbers them: A: is 0, as is what has no letter.
uint32_t driveNumber(const wchar_t* path) {
  wchar_t absolute[KSV_PATH_UNITS];
  const DWORD length = GetFullPathNameW(path, KSV_PATH_UNITS, absolute, nullptr);
  if (length < 2 || length >= KSV_PATH_UNITS || absolute[1] != L':') return 0;
  return static_cast<uint32_t>((absolute[0] | 0x20) - L'a');
}

// Whether a failure to open says that there is no such file.
bool isAbsence(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
         error == ERROR_INVALID_NAME || error == ERROR_BAD_PATHNAME || error == ERROR_BAD_NETPATH ||
         error == ERROR_FILENAME_EXCED_RANGE || error == ERROR_INVALID_DRIVE;
}

bool isDirectoryName(const wchar_t* path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// What stands at path, a device included: the system knows those by name.
bool statusOf(const WideText& wide, DWORD flags, FileStatus& status) {
  if (!wide) return false;
  const Handle file(CreateFileW(wide.get(), FILE_READ_ATTRIBUTES,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
  if (!file) return false;
  status = {};
  status.links = 1;
  const DWORD type = GetFileType(file.get());
  if (type != FILE_TYPE_DISK) {
    status.mode = kReadable | kWritable | (type == FILE_TYPE_PIPE ? kPipe : kCharacterDevice);
    return true;
  }
  BY_HANDLE_FILE_INFORMATION system;
  if (!GetFileInformationByHandle(file.get(), &system)) return false;
  status.device = status.specialDevice = driveNumber(wide.get());
  status.mode = modeOf(system.dwFileAttributes, wide.get());
  status.links = system.nNumberOfLinks;
  status.size = static_cast<int64_t>(uint64_t{system.nFileSizeHigh} << 32 | system.nFileSizeLow);
  status.accessTime = secondsSince1970(system.ftLastAccessTime);
  status.writeTime = secondsSince1970(system.ftLastWriteTime);
  status.changeTime = secondsSince1970(system.ftCreationTime);
  return true;
}

}  // namespace

SystemError outOfMemory() { return ERROR_NOT_ENOUGH_MEMORY; }

SystemError accessDenied() { return ERROR_ACCESS_DENIED; }

// The C runtime may end the process over a mode that begins otherwise.
std::FILE* openFile(const char* path, const char* mode) {
  if (mode[0] == '\0' || std::strchr("rwa", mode[0]) == nullptr) return nullptr;
  const WideText widePath(path);
  const WideText wideMode(mode);
  return widePath && wideMode ? _wfopen(widePath.get(), wideMode.get()) : nullptr;
}

// Shared with writers, as the C runtime's streams are.
InputFile::InputFile(const char* path, Takes) : handle_(0) {
  const WideText wide(path);
  if (wide.ranOutOfMemory()) error_ = outOfMemory();
  if (!wide) return;
  Handle file(CreateFileW(wide.get(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size;
  if (!file) {
    const DWORD error = GetLastError();
    if (!isAbsence(error) && !isDirectoryName(wide.get())) error_ = static_cast<int>(error);
    return;
  }
  if (GetFileType(file.get()) != FILE_TYPE_DISK) return;
  if (!GetFileSizeEx(file.get(), &size)) {
    error_ = static_cast<int>(GetLastError());
    return;
  }
  size_ = size.QuadPart;
  handle_ = reinterpret_cast<intptr_t>(file.release());
}

InputFile::~InputFile() { const Handle file(reinterpret_cast<HANDLE>(handle_)); }

size_t InputFile::read(void* buffer, size_t count) {
  size_t total = 0;
  while (total < count) {
    const auto wanted = static_cast<DWORD>(std::min(count - total, kMostAtOnce));
    DWORD came = 0;
    if (!ReadFile(reinterpret_cast<HANDLE>(handle_), static_cast<char*>(buffer) + total, wanted,
                  &came, nullptr)) {
      error_ = static_cast<int>(GetLastError());
      break;
    }
    if (came == 0) break;
    total += came;
  }
  return total;
}

MappedBytes InputFile::map() {
  if (size_ <= 0) return {};
  const Handle section(
      CreateFileMappingW(reinterpret_cast<HANDLE>(handle_), nullptr, PAGE_READONLY, 0, 0, nullptr));
  const void* const bytes =
      section ? MapViewOfFile(section.get(), FILE_MAP_READ, 0, 0, 0) : nullptr;
  if (bytes == nullptr) {
    error_ = static_cast<int>(GetLastError());
    return {};
  }
  return {static_cast<const uint8_t*>(bytes), static_cast<size_t>(size_)};
}

MappedBytes::~MappedBytes() {
  if (bytes_ != nullptr) UnmapViewOfFile(bytes_);
}

PlacedFile::PlacedFile(const char* path) : handle_(0), isOwner_(true) {
  const WideText wide(path);
  if (!wide) {
    error_ = wide.ranOutOfMemory() ? outOfMemory() : ERROR_INVALID_NAME;
    return;
  }
  Handle file(CreateFileW(wide.get(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    error_ = static_cast<int>(GetLastError());
    return;
  }
  handle_ = reinterpret_cast<intptr_t>(file.release());
  measure();
}

PlacedFile::PlacedFile(intptr_t descriptor) : handle_(descriptor), isOwner_(false) { measure(); }

PlacedFile::~PlacedFile() {
  if (isOwner_) const Handle file(reinterpret_cast<HANDLE>(handle_));
}

void PlacedFile::measure() {
  const auto file = reinterpret_cast<HANDLE>(handle_);
  LARGE_INTEGER size;
  if (GetFileType(file) != FILE_TYPE_DISK) {
    error_ = ERROR_INVALID_HANDLE;
  } else if (!GetFileSizeEx(file, &size)) {
    error_ = static_cast<int>(GetLastError());
  } else {
    size_ = static_cast<uint64_t>(size.QuadPart);
  }
}

size_t PlacedFile::read(uint64_t offset, void* buffer, size_t count) {
  error_ = 0;
  size_t total = 0;
  while (total < count) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>((offset + total) & 0xFFFFFFFF);
    place.OffsetHigh = static_cast<DWORD>((offset + total) >> 32);
    const auto wanted = static_cast<DWORD>(std::min(count - total, kMostAtOnce));
    DWORD came = 0;
    if (!ReadFile(reinterpret_cast<HANDLE>(handle_), static_cast<char*>(buffer) + total, wanted,
                  &came, &place)) {
      const DWORD error = GetLastError();
      if (error != ERROR_HANDLE_EOF) error_ = static_cast<int>(error);
      break;
    }
    if (came == 0) break;
    total += came;
  }
  return total;
}

int seekFile(std::FILE* stream, int64_t offset, int origin) {
  return _fseeki64(stream, offset, origin);
}

int64_t tellFile(std::FILE* stream) { return _ftelli64(stream); }

// By way of memory: the compiler's own vfprintf counts what the stream refused.
int printTo(std::FILE* stream, const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length < 0) return length;
  const size_t count = static_cast<size_t>(length);
  const std::unique_ptr<char[]> text(new (std::nothrow) char[count + 1]);
  if (!text || std::vsnprintf(text.get(), count + 1, format, arguments) != length) return -1;
  return std::fwrite(text.get(), 1, count, stream) == count ? length : -1;
}

bool fileStatus(const char* path, FileStatus& status) {
  return statusOf(WideText(path), 0, status);
}

bool entryStatus(const char* path, FileStatus& status) {
  return statusOf(WideText(path), FILE_FLAG_OPEN_REPARSE_POINT, status);
}

bool statusOfListed(const std::string& path, FileStatus& status) {
  const WideText wide(path.c_str());
  wide.demandMemory();
  return statusOf(wide, 0, status) || statusOf(wide, FILE_FLAG_OPEN_REPARSE_POINT, status);
}

SystemError lastError() { return static_cast<SystemError>(GetLastError()); }

bool removeFile(const char* path) {
  const WideText wide(path);
  return wide && DeleteFileW(wide.get());
}

bool makeDirectory(const char* path) {
  const WideText wide(path);
  return wide && CreateDirectoryW(wide.get(), nullptr);
}

bool removeDirectory(const char* path) {
  const WideText wide(path);
  return wide && RemoveDirectoryW(wide.get());
}

std::optional<std::string> entryName(const std::string& directory, const std::string& name) {
  const std::string path = directory + name;
  FileStatus status;
  if (!entryStatus(path.c_str(), status)) return std::nullopt;
  // The system would give the name of the directory that these stand for.
  if (name == "." || name == "..") return name;
  const WideText wide(path.c_str());
  if (!wide) return std::nullopt;
  const Search search(wide.get());
  return search ? narrowText(search.name()) : std::nullopt;
}

std::optional<std::vector<std::string>> directoryNames(const char* path, SystemError* error) {
  if (error != nullptr) *error = 0;
  std::string pattern = path;
  if (!pattern.ends_with('/') && !pattern.ends_with('\\') && !pattern.ends_with(':')) {
    pattern.push_back(pathSeparator());
  }
  const WideText wide(pattern.append("*").c_str());
  if (error != nullptr && wide.ranOutOfMemory()) *error = outOfMemory();
  if (!wide) return std::nullopt;
  std::vector<std::string> names;
  Search search(wide.get());
  // The root of an empty drive has not even "." in it.
  if (!search && GetLastError() == ERROR_FILE_NOT_FOUND) return names;
  if (!search) {
    if (error != nullptr && !isAbsence(GetLastError())) *error = static_cast<int>(GetLastError());
    return std::nullopt;
  }
  appendNames(search, names);
  if (error != nullptr && GetLastError() != ERROR_NO_MORE_FILES)
    *error = static_cast<int>(GetLastError());
  return names;
}

// The system takes three more characters, which no name may have, for wild cards of its
// own that nobody writes.
std::optional<std::vector<std::string>> namesFoundBySystem(const std::string& directory,
                                                           const std::string& component) {
  std::vector<std::string> names;
  const WideText wide((directory + component).c_str());
  if (!wide || component.find_first_of("<>\"") != component.npos) return names;
  Search search(wide.get());
  if (search) appendNames(search, names);
  return names;
}

// The directory is told as the caller writes it, whatever separators it has.
std::optional<std::string> createUniqueFile(const std::string& directory, const char* prefix) {
  const WideText wideDirectory(directory.c_str());
  const WideText widePrefix(prefix);
  constexpr size_t kLongestDirectory = MAX_PATH - 14;
  wchar_t path[MAX_PATH];
  if (!wideDirectory || !widePrefix || std::wcslen(wideDirectory.get()) > kLongestDirectory ||
      GetTempFileNameW(wideDirectory.get(), widePrefix.get(), 0, path) == 0) {
    return std::nullopt;
  }
  auto created = guarded(std::optional<std::string>(), [&]() -> std::optional<std::string> {
    const std::optional<std::string> name = narrowText(std::wcsrchr(path, L'\\') + 1);
    return name ? std::optional<std::string>(directory + *name) : std::nullopt;
  });
  if (!created) DeleteFileW(path);
  return created;
}

}  // namespace ksv::platform
