// Where the charset directory is that the library loads.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ksv_kit {

struct FoundCharsetDirectory {
  std::string path;     // without a separator at its end
  std::string namedBy;  // who says so: a setting, or that it is installed there
  bool isInstallation;  // the one that came with the library: what is packed in it counts
};

// None when no setting names one and none is installed.
std::optional<FoundCharsetDirectory> findCharsetDirectory();
// Its path.
std::optional<std::string> charsetDirectory();

// What the engine has loaded, in that order.
std::vector<std::string> loadedCharsets();

}  // namespace ksv_kit
