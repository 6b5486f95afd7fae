#include <windows.h>

#include <algorithm>
#include <optional>
#include <system_error>

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

}  // namespace

std::vector<std::string> filesNamedBy(const std::string& operand) {
  const size_t nameAt = directoryLength(operand, "/\\");
  if (operand.find_first_of("*?", nameAt) == std::string::npos) return {operand};
  WIN32_FIND_DATAW entry;
  const HANDLE search = ::FindFirstFileW(systemPath(operand).c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return {operand};
  std::vector<std::string> files;
  do {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
      files.push_back(operand.substr(0, nameAt) + utf8Of(entry.cFileName));
  } while (::FindNextFileW(search, &entry));
  ::FindClose(search);
  if (files.empty()) return {operand};
  std::sort(files.begin(), files.end());
  return files;
}

void createDirectories(const std::string& path) {
  const std::optional<std::wstring> units = utf16Of(path);
  if (!units) fail(std::errc::illegal_byte_sequence);
  createOneAfterAnother(*units);
  if (fileFacts(path).kind != FileKind::kDirectory) fail(std::errc::not_a_directory);
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
