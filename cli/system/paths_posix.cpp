#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/open_file_posix.h"
#include "cli/system/paths.h"

namespace ksv_cli::platform {

namespace {

struct Close {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, Close>;

Directory openDirectory(const std::string& path) {
  for (;;) {
    Directory directory(::opendir(path.c_str()));
    if (directory) return directory;
    if (errno != EINTR) fail(errno);
  }
}

const dirent* nextEntry(DIR& directory) {
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(&directory);
    if (entry != nullptr || errno == 0) return entry;
    if (errno != EINTR) fail(errno);
  }
}

EntryKind kindOfLink(const std::string& path) {
  try {
    return fileFacts(path).kind == FileKind::kRegular ? EntryKind::kFile : EntryKind::kOther;
  } catch (const Failure&) {
    return EntryKind::kFile;  // whoever opens it is told why
  }
}

// Not every file system tells the kind of an entry by itself.
EntryKind kindOf(const std::string& path, unsigned char told) {
  if (told == DT_REG) return EntryKind::kFile;
  if (told == DT_DIR) return EntryKind::kDirectory;
  if (told == DT_LNK) return kindOfLink(path);
  if (told != DT_UNKNOWN) return EntryKind::kOther;
  std::error_code error;
  const auto type = std::filesystem::symlink_status(path, error).type();
  if (type == std::filesystem::file_type::directory) return EntryKind::kDirectory;
  return kindOfLink(path);
}

}  // namespace

std::vector<std::string> filesNamedBy(const std::string& operand, Wanted) { return {operand}; }

std::vector<DirectoryEntry> entriesOf(const std::string& directory) {
  const Directory opened = openDirectory(directory);
  std::vector<DirectoryEntry> entries;
  while (const dirent* const entry = nextEntry(*opened)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    entries.push_back({name, kindOf(joinPath(directory, name), entry->d_type)});
  }
  std::ranges::sort(entries, {}, &DirectoryEntry::name);
  return entries;
}

void createDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw Failure(error.message());
  if (fileFacts(path).kind != FileKind::kDirectory) fail(ENOTDIR);
}

bool isLink(const std::string& path) {
  struct stat status;
  if (::lstat(path.c_str(), &status) == 0) return S_ISLNK(status.st_mode);
  if (!isOneOf(errno, {ENOENT, ENOTDIR, EACCES, ENAMETOOLONG})) fail(errno);
  return false;
}

void makeDirectoryItself(const std::string& path) {
  constexpr mode_t kModeOfDirectories = 0777;
  while (::mkdir(path.c_str(), kModeOfDirectories) != 0) {
    if (errno == EINTR) continue;
    if (errno != EEXIST) fail(errno);
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0) fail(errno);
    if (S_ISLNK(status.st_mode)) throw Failure(kLinkIsThere);
    if (!S_ISDIR(status.st_mode)) fail(ENOTDIR);
    return;
  }
}

std::string currentDirectory() {
  std::error_code error;
  const std::string path = std::filesystem::current_path(error).string();
  if (error) throw Failure(error.message());
  return path;
}

std::string pathFrom(const std::string& directory, const std::string& path) {
  return joinPath(directory, path);
}

std::vector<std::string> filesIn(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; entry != end;
       entry.increment(error)) {
    if (fileFacts(entry->path().string()).kind != FileKind::kDirectory)
      names.push_back(entry->path().filename().string());
    if (error) break;
  }
  if (error) throw Failure(error.message());
  std::sort(names.begin(), names.end());
  return names;
}

bool namesHaveNoCase() { return false; }

std::string joinPath(const std::string& directory, const std::string& name) {
  return (std::filesystem::path(directory) / name).string();
}

std::string lastComponent(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

std::string withoutRoot(const std::string& path) {
  return path.substr(std::min(path.find_first_not_of('/'), path.size()));
}

bool backslashSeparates() { return false; }

std::string placeKey(const std::string& path) { return path; }

}  // namespace ksv_cli::platform
