// The split of a path that rule files and tables share.
#pragma once

#include <string>

namespace ksv {

struct PathParts {
  std::string drive;      // leading separators with a server name, or a drive letter
  std::string directory;  // with its last separator
  std::string fileName;   // up to the last dot
  std::string extension;  // with its dot
};

// Both '/' and '\' separate.
PathParts splitPath(const std::string& path);
std::string joinPath(const PathParts& parts);

// The file's name and extension, 'A' to 'Z' lower-cased, as every file of the
// charset directory is named.
void lowerFileName(PathParts& parts);

}  // namespace ksv
