#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/open_file_posix.h"
#include "cli/system/paths.h"

namespace ksv_cli::platform {

std::vector<std::string> filesNamedBy(const std::string& operand) { return {operand}; }

void createDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw Failure(error.message());
  if (fileFacts(path).kind != FileKind::kDirectory) fail(ENOTDIR);
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

bool backslashSeparates() { return false; }

std::string placeKey(const std::string& path) { return path; }

}  // namespace ksv_cli::platform
