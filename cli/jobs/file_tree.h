// The files below a directory.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/jobs/name_pattern.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"

namespace ksv_cli {

// Which files are wanted. A name that is excluded is not wanted though it is included; where
// nothing is included, everything is.
class FileFilter {
 public:
  // results: the directory where results go, which is not entered; kMissing: there is none.
  FileFilter(const std::vector<std::string>& included, const std::vector<std::string>& excluded,
             const platform::FileFacts& results)
      : included_(included.begin(), included.end()),
        excluded_(excluded.begin(), excluded.end()),
        results_(results) {}

  bool wantsFile(std::string_view below) const;
  bool entersDirectory(const std::string& path, std::string_view below) const;

 private:
  bool isOfResults(const std::string& directory) const;

  const std::vector<NamePattern> included_;
  const std::vector<NamePattern> excluded_;
  const platform::FileFacts results_;
};

// What is found: a file, or a directory that could not be read.
struct FoundFile {
  std::string path;
  size_t belowAt;  // where the part of the path begins that is below the directory searched
  std::optional<Failure> refused = {};
};

// Directory by directory, each in ascending order of the bytes of its names. Files with passing
// names are passed over, and what is neither file nor directory.
void findFilesBelow(const std::string& directory, const FileFilter& filter,
                    const std::function<void(FoundFile)>& take);

}  // namespace ksv_cli
