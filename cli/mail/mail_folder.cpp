#include "cli/mail/mail_folder.h"

#include <algorithm>

#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

bool isDirectory(const std::string& path) {
  return platform::fileFacts(path).kind == platform::FileKind::kDirectory;
}

// Files that are hidden are no mails.
void addFilesIn(const std::string& directory, std::vector<std::string>& files) {
  if (!isDirectory(directory)) return;
  for (const std::string& name : platform::filesIn(directory))
    if (!name.starts_with('.')) files.push_back(platform::joinPath(directory, name));
}

bool isNumber(const std::string& name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
}

std::vector<std::string> numberedFilesIn(const std::string& directory) {
  std::vector<std::string> names;
  for (std::string& name : platform::filesIn(directory))
    if (isNumber(name)) names.push_back(std::move(name));
  std::ranges::sort(names, [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  for (std::string& name : names) name = platform::joinPath(directory, name);
  return names;
}

}  // namespace

std::vector<std::string> filesOfMailFolder(const std::string& directory) {
  const std::string cur = platform::joinPath(directory, "cur");
  const std::string fresh = platform::joinPath(directory, "new");
  std::vector<std::string> files;
  if (isDirectory(cur) || isDirectory(fresh)) {
    addFilesIn(cur, files);
    addFilesIn(fresh, files);
    return files;
  }
  files = numberedFilesIn(directory);
  if (files.empty()) throw Failure("is a directory that holds no mails");
  return files;
}

}  // namespace ksv_cli
