// Files and directories of a POSIX system.
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "common/platform.h"
#include "common/stream.h"
#include "common/uninterrupted_posix.h"

namespace ksv::platform {

static_assert(sizeof(off_t) == sizeof(int64_t), "files above 2 GiB need a 64-bit off_t");
static_assert(S_IFMT == kFileTypeMask && S_IFREG == kRegularFile && S_IFDIR == kDirectory);

namespace {

constexpr char kUniqueSuffix[] = ".tmp";
constexpr int kNotOpen = -1;

// What is no regular file may have an end all the same: a disk has.
int64_t sizeOf(int file, const struct stat& status) {
  if (S_ISREG(status.st_mode)) return status.st_size;
  const off_t size = lseek(file, 0, SEEK_END);
  return lseek(file, 0, SEEK_SET) == 0 ? size : -1;
}

void copyStatus(const struct stat& from, FileStatus& to) {
  to.device = from.st_dev;
  to.inode = from.st_ino;
  to.mode = from.st_mode;
  to.links = from.st_nlink;
  to.user = from.st_uid;
  to.group = from.st_gid;
  to.specialDevice = from.st_rdev;
  to.size = from.st_size;
  to.accessTime = from.st_atime;
  to.writeTime = from.st_mtime;
  to.changeTime = from.st_ctime;
}

// Whether a failure to open says that there is no such file.
bool isAbsence(int error) {
  return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG || error == ENXIO;
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

}  // namespace

SystemError outOfMemory() { return ENOMEM; }

SystemError accessDenied() { return EACCES; }

// fopen reads a directory as an empty file; nobody who opens one means that.
std::FILE* openFile(const char* path, const char* mode) {
  Stream stream(fopen(path, mode));
  if (stream == nullptr) return nullptr;
  struct stat status;
  const bool isFile = fstat(fileno(stream.get()), &status) == 0 && !S_ISDIR(status.st_mode);
  return isFile ? stream.release() : nullptr;
}

InputFile::InputFile(const char* path, Takes takes) : handle_(kNotOpen) {
  const bool onlyRegular = takes == Takes::kRegularFile;
  // A pipe is then opened without waiting for its other end, and closed again.
  const int flags = O_RDONLY | O_CLOEXEC | (onlyRegular ? O_NONBLOCK : 0);
  const int file = uninterrupted([&] { return open(path, flags); });
  handle_ = file;
  struct stat status;
  if (file == kNotOpen || fstat(file, &status) != 0) {
    error_ = isAbsence(errno) ? 0 : errno;
    return;
  }
  if (S_ISDIR(status.st_mode) || (onlyRegular && !S_ISREG(status.st_mode))) return;
  size_ = sizeOf(file, status);
}

InputFile::~InputFile() {
  if (handle_ != kNotOpen) close(static_cast<int>(handle_));
}

size_t InputFile::read(void* buffer, size_t count) {
  size_t total = 0;
  while (total < count) {
    const ssize_t came = uninterrupted([&] {
      return ::read(static_cast<int>(handle_), static_cast<char*>(buffer) + total, count - total);
    });
    if (came < 0) error_ = errno;
    if (came <= 0) break;
    total += static_cast<size_t>(came);
  }
  return total;
}

MappedBytes InputFile::map() {
  if (size_ <= 0) return {};
  const auto size = static_cast<size_t>(size_);
  void* const bytes = mmap(nullptr, size, PROT_READ, MAP_SHARED, static_cast<int>(handle_), 0);
  if (bytes == MAP_FAILED) {
    error_ = errno;
    return {};
  }
  return {static_cast<const uint8_t*>(bytes), size};
}

MappedBytes::~MappedBytes() {
  if (bytes_ != nullptr) munmap(const_cast<uint8_t*>(bytes_), size_);
}

// A pipe is opened without waiting for its other end, and then has no places.
PlacedFile::PlacedFile(const char* path)
    : handle_(uninterrupted([&] { return open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK); })),
      isOwner_(true) {
  measure();
}

PlacedFile::PlacedFile(intptr_t descriptor) : handle_(descriptor), isOwner_(false) { measure(); }

PlacedFile::~PlacedFile() {
  if (isOwner_ && handle_ != kNotOpen) close(static_cast<int>(handle_));
}

void PlacedFile::measure() {
  const int file = static_cast<int>(handle_);
  struct stat status;
  if (file == kNotOpen || fstat(file, &status) != 0) {
    error_ = file == kNotOpen && !isOwner_ ? EBADF : errno;
    return;
  }
  if (S_ISDIR(status.st_mode)) {
    error_ = EISDIR;
    return;
  }
  off_t size = status.st_size;
  if (!S_ISREG(status.st_mode)) {
    const off_t place = lseek(file, 0, SEEK_CUR);
    size = place < 0 ? place : lseek(file, 0, SEEK_END);
    if (size >= 0 && lseek(file, place, SEEK_SET) != place) size = -1;
  }
  if (size < 0) {
    error_ = errno;
  } else {
    size_ = static_cast<uint64_t>(size);
  }
}

size_t PlacedFile::read(uint64_t offset, void* buffer, size_t count) {
  error_ = 0;
  size_t total = 0;
  while (total < count) {
    const ssize_t came = uninterrupted([&] {
      return pread(static_cast<int>(handle_), static_cast<char*>(buffer) + total, count - total,
                   static_cast<off_t>(offset + total));
    });
    if (came < 0) error_ = errno;
    if (came <= 0) break;
    total += static_cast<size_t>(came);
  }
  return total;
}

int seekFile(std::FILE* stream, int64_t offset, int origin) {
  return fseeko(stream, offset, origin);
}

int64_t tellFile(std::FILE* stream) { return ftello(stream); }

int printTo(std::FILE* stream, const char* format, va_list arguments) {
  return vfprintf(stream, format, arguments);
}

bool fileStatus(const char* path, FileStatus& status) {
  struct stat system;
  if (stat(path, &system) != 0) return false;
  copyStatus(system, status);
  return true;
}

bool entryStatus(const char* path, FileStatus& status) {
  struct stat system;
  if (lstat(path, &system) != 0) return false;
  copyStatus(system, status);
  return true;
}

SystemError lastError() { return errno; }

bool statusOfListed(const std::string& path, FileStatus& status) {
  return fileStatus(path.c_str(), status) || entryStatus(path.c_str(), status);
}

bool removeFile(const char* path) { return unlink(path) == 0; }

bool makeDirectory(const char* path) { return mkdir(path, 0777) == 0; }

bool removeDirectory(const char* path) { return rmdir(path) == 0; }

std::optional<std::string> entryName(const std::string& directory, const std::string& name) {
  FileStatus status;
  if (!entryStatus((directory + name).c_str(), status)) return std::nullopt;
  return name;
}

std::optional<std::vector<std::string>> directoryNames(const char* path, SystemError* error) {
  if (error != nullptr) *error = 0;
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir(path));
  std::vector<std::string> names;
  errno = directory ? 0 : errno;
  while (directory) {
    const dirent* entry = readdir(directory.get());
    if (entry == nullptr) break;
    names.emplace_back(entry->d_name);
    errno = 0;
  }
  if (error != nullptr && !isAbsence(errno)) *error = errno;
  if (!directory) return std::nullopt;
  return names;
}

std::optional<std::vector<std::string>> namesFoundBySystem(const std::string&, const std::string&) {
  return std::nullopt;
}

std::optional<std::string> createUniqueFile(const std::string& directory, const char* prefix) {
  std::string path = directory + prefix + "XXXXXX" + kUniqueSuffix;
  const int file = mkostemps(path.data(), sizeof kUniqueSuffix - 1, 0);
  if (file < 0) return std::nullopt;
  close(file);
  return path;
}

}  // namespace ksv::platform
