// The packed form of a charset directory, as far as the command tells of it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ksv_cli {

struct PackedDirectory {
  size_t charsets = 0;
  size_t tables = 0;
  std::vector<std::string> overridden;  // the packed files before which one of the directory goes
};

// None when there is no packed file, or not a sound one.
std::optional<PackedDirectory> packedDirectory(const std::string& directory);

}  // namespace ksv_cli
