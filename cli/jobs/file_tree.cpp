#include "cli/jobs/file_tree.h"

#include <algorithm>
#include <utility>

#include "cli/system/passing_names.h"
#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

using platform::DirectoryEntry;
using platform::EntryKind;

bool anyMatches(const std::vector<NamePattern>& patterns, std::string_view below,
                bool isDirectory) {
  return std::ranges::any_of(
      patterns, [&](const NamePattern& pattern) { return pattern.matches(below, isDirectory); });
}

// What is still to be looked at, the next of it last. A path may be as deep as the system lets it
// be, so the search has no recursion.
class TreeSearch {
 public:
  TreeSearch(const FileFilter& filter, const std::function<void(FoundFile)>& take)
      : filter_(filter), take_(take) {}

  void search(const std::string& directory) {
    belowAt_ = platform::joinPath(directory, "").size();
    addEntriesOf(directory, "");
    while (!waiting_.empty()) {
      const Place place = std::move(waiting_.back());
      waiting_.pop_back();
      if (place.isDirectory)
        addEntriesOf(place.path, place.below + '/');
      else
        take_({place.path, belowAt_});
    }
  }

 private:
  struct Place {
    std::string path;
    std::string below;
    bool isDirectory;
  };

  void addEntriesOf(const std::string& directory, const std::string& below) {
    try {
      const std::vector<DirectoryEntry> entries = platform::entriesOf(directory);
      for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
        add(*entry, platform::joinPath(directory, entry->name), below + entry->name);
    } catch (const Failure& failure) {
      take_({directory, std::min(belowAt_, directory.size()), failure});
    }
  }

  void add(const DirectoryEntry& entry, std::string path, std::string below) {
    const bool isDirectory = entry.kind == EntryKind::kDirectory;
    if (entry.kind == EntryKind::kOther || isPassingName(entry.name)) return;
    if (isDirectory ? filter_.entersDirectory(path, below) : filter_.wantsFile(below))
      waiting_.push_back({std::move(path), std::move(below), isDirectory});
  }

  const FileFilter& filter_;
  const std::function<void(FoundFile)>& take_;
  size_t belowAt_ = 0;
  std::vector<Place> waiting_;
};

}  // namespace

// One that cannot be looked at is told by whoever opens it.
bool FileFilter::isOfResults(const std::string& directory) const {
  if (results_.kind == platform::FileKind::kMissing) return false;
  try {
    return platform::fileFacts(directory).isSameFileAs(results_);
  } catch (const Failure&) {
    return false;
  }
}

bool FileFilter::wantsFile(std::string_view below) const {
  if (anyMatches(excluded_, below, false)) return false;
  return included_.empty() || anyMatches(included_, below, false);
}

bool FileFilter::entersDirectory(const std::string& path, std::string_view below) const {
  return !anyMatches(excluded_, below, true) && !isOfResults(path);
}

void findFilesBelow(const std::string& directory, const FileFilter& filter,
                    const std::function<void(FoundFile)>& take) {
  TreeSearch(filter, take).search(directory);
}

}  // namespace ksv_cli
