// Inputs that are opened by their names.
#pragma once

#include <memory>
#include <string>

#include "cli/system/temporary_file.h"

namespace ksv_cli {

// An input under a name that the library can open, and read from any place. What has
// none is copied to a temporary file, which is removed afterwards: standard input,
// pipes, and files with names that are too long or no UTF-8.
class NamedInput {
 public:
  // Throws Failure when there is no such file.
  explicit NamedInput(const std::string& input);

  const std::string& path() const { return path_; }

 private:
  std::unique_ptr<platform::TemporaryFile> copy_;
  std::string path_;
};

}  // namespace ksv_cli
