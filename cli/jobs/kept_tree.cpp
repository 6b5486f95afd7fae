#include "cli/jobs/kept_tree.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/system/failure.h"
#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

std::vector<std::string> componentsOf(std::string_view path) {
  const std::string_view separators = platform::backslashSeparates() ? "/\\" : "/";
  std::vector<std::string> components;
  while (!path.empty()) {
    const size_t end = std::min(path.find_first_of(separators), path.size());
    if (end != 0) components.emplace_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return components;
}

// Some systems leave out dots and blanks at the end of a name.
bool leadsBack(const std::string& component) {
  if (component == "..") return true;
  return platform::backslashSeparates() && component.find_first_not_of(". ") == component.npos;
}

}  // namespace

std::string placeInTree(const std::string& path, size_t belowAt) {
  const std::string below = belowAt == 0 ? platform::withoutRoot(path) : path.substr(belowAt);
  std::vector<std::string> kept;
  for (std::string& component : componentsOf(below)) {
    if (component == ".") continue;
    if (!leadsBack(component)) {
      kept.push_back(std::move(component));
      continue;
    }
    if (kept.empty()) throw UsageError(path + " leads out of the directory of the results");
    kept.pop_back();
  }
  std::string place;
  for (const std::string& component : kept) place = platform::joinPath(place, component);
  return place;
}

void makeDirectoriesFor(const std::string& place, const std::string& resultDirectory) {
  std::vector<std::string> components =
      componentsOf(std::string_view(place).substr(resultDirectory.size()));
  if (!components.empty()) components.pop_back();  // the file itself
  std::string directory = resultDirectory;
  for (const std::string& component : components) {
    directory = platform::joinPath(directory, component);
    try {
      platform::makeDirectoryItself(directory);
    } catch (const Failure& failure) {
      throw Failure("the directory " + directory + " cannot be made: " + failure.what());
    }
  }
}

}  // namespace ksv_cli
