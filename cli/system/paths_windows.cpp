#include <windows.h>

#include <algorithm>
#include <optional>
#include <system_error>

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/open_file_windows.h"
#include "cli/system/paths.h"
#include "cli/system/system_paths_windows.h"
#include "common/wide_text_windows.h"

namespace ksv_cli::platform {
namespace {

bool endsInSeparator(const std::string& path) {
  return path.ends_with('/') || path.ends_with('\\');
}

void createOneAfterAnother(const std::wstring& path) {
  if (::CreateDirectoryW(systemPath(path).c_str(), nullptr)) return;
  const DWORD error = ::GetLastError();
  if (error == ERROR_ALREADY_EXISTS) return;
  const size_t end = path.find_last_not_of(kSeparators);
  const size_t parent = end == std::wstring::npos ? 0 : path.find_last_of(kSeparators, end);
  if (error != ERROR_PATH_NOT_FOUND || parent == 0 || parent == std::wstring::npos) fail(error);
  createOneAfterAnother(path.substr(0, parent));
  if (!::CreateDirectoryW(systemPath(path).c_str(), nullptr)) fail(::GetLastError());
}

bool isDirectory(const WIN32_FIND_DATAW& entry) {
  return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// A link or a mounted directory: what it stands for is elsewhere.
bool isLink(const WIN32_FIND_DATAW& entry) {
  constexpr DWORD kStandsForAnother = 0x20000000;
  return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (entry.dwReserved0 & kStandsForAnother) != 0;
}

EntryKind kindOf(const std::string& path, const WIN32_FIND_DATAW& entry) {
  if (isDirectory(entry)) return isLink(entry) ? EntryKind::kOther : EntryKind::kDirectory;
  if (!isLink(entry)) return EntryKind::kFile;
  return fileFacts(path).kind == FileKind::kRegular ? EntryKind::kFile : EntryKind::kOther;
}

// Returns the error that ended the search; that there are no more files is none.
template <typename Visit>
DWORD forEachMatch(const std::string& pattern, Visit visit) {
  WIN32_FIND_DATAW entry;
  const HANDLE search = ::FindFirstFileW(systemPath(pattern).c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return ::GetLastError();
  do {
    const std::wstring_view name = entry.cFileName;
    if (name != L"." && name != L"..") visit(entry);
  } while (::FindNextFileW(search, &entry));
  const DWORD error = ::GetLastError();
  ::FindClose(search);
  return error == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : error;
}

}  // namespace

std::vector<std::string> filesNamedBy(const std::string& operand, Wanted wanted) {
  const size_t nameAt = directoryLength(operand, "/\\");
  if (operand.find_first_of("*?", nameAt) == std::string::npos) return {operand};
  std::vector<std::string> files;
  forEachMatch(operand, [&](const WIN32_FIND_DATAW& entry) {
    if (wanted == Wanted::kFilesAndDirectories || !isDirectory(entry))
      files.push_back(operand.substr(0, nameAt) + utf8Of(entry.cFileName));
  });
  if (files.empty()) return {operand};
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<DirectoryEntry> entriesOf(const std::string& directory) {
  std::vector<DirectoryEntry> entries;
  const DWORD error = forEachMatch(joinPath(directory, "*"), [&](const WIN32_FIND_DATAW& entry) {
    const std::string name = utf8Of(entry.cFileName);
    entries.push_back({name, kindOf(joinPath(directory, name), entry)});
  });
  // So a volume without any file answers.
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) fail(error);
  std::ranges::sort(entries, {}, &DirectoryEntry::name);
  return entries;
}

void createDirectories(const std::string& path) {
  const std::optional<std::wstring> units = utf16Of(path);
  if (!units) fail(std::errc::illegal_byte_sequence);
  createOneAfterAnother(*units);
  if (fileFacts(path).kind != FileKind::kDirectory) fail(std::errc::not_a_directory);
}

bool isLink(const std::string& path) {
  const DWORD attributes = ::GetFileAttributesW(systemPath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

void makeDirectoryItself(const std::string& path) {
  const std::wstring units = systemPath(path);
  if (::CreateDirectoryW(units.c_str(), nullptr)) return;
  const DWORD error = ::GetLastError();
  if (error != ERROR_ALREADY_EXISTS) fail(error);
  const DWORD attributes = ::GetFileAttributesW(units.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) fail(::GetLastError());
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) throw Failure(kLinkIsThere);
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) fail(std::errc::not_a_directory);
}

std::string currentDirectory() { return utf8Of(ksv::platform::absolutePath(L".")); }

std::string pathFrom(const std::string& directory, const std::string& path) {
  const bool isAbsolute =
      endsInSeparator(path.substr(0, 1)) || (path.size() >= 2 && path[1] == ':');
  return isAbsolute ? path : joinPath(directory, path);
}

std::vector<std::string> filesIn(const std::string& directory) {
  if (fileFacts(directory).kind != FileKind::kDirectory) fail(ERROR_PATH_NOT_FOUND);
  const std::string all = joinPath(directory, "*");
  std::vector<std::string> names;
  for (const std::string& file : filesNamedBy(all))
    if (file != all) names.push_back(lastComponent(file));
  return names;
}

bool namesHaveNoCase() { return true; }

std::string joinPath(const std::string& directory, const std::string& name) {
  const bool isJoined = directory.empty() || endsInSeparator(directory) ||
                        (directory.size() == 2 && directory[1] == ':');
  return directory + (isJoined ? "" : "\\") + name;
}

std::string lastComponent(const std::string& path) {
  return path.substr(directoryLength(path, "/\\"));
}

std::string withoutRoot(const std::string& path) {
  std::string rest = path;
  for (const char* const prefix : {"\\\\?\\UNC\\", "\\\\?\\", "\\\\.\\"})
    if (rest.starts_with(prefix)) rest.erase(0, std::string_view(prefix).size());
  if (rest.size() >= 2 && rest[1] == ':') rest.erase(0, 2);
  return rest.substr(std::min(rest.find_first_not_of("/\\"), rest.size()));
}

bool backslashSeparates() { return true; }

// Without regard to case, to dots on the way, and to the separator.
std::string placeKey(const std::string& path) {
  std::optional<std::wstring> units = utf16Of(path);
  if (!units) return path;
  std::wstring full = ksv::platform::absolutePath(units->c_str());
  ::CharUpperBuffW(full.data(), static_cast<DWORD>(full.size()));
  return utf8Of(full);
}

}  // namespace ksv_cli::platform
