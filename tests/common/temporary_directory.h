// A directory of the test's own, removed with all it holds.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include "tests/common/support.h"

namespace ksv::test {

class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(const std::string& prefix)
      : path_(pathOf(makeTemporaryDirectory(prefix))) {}
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  const std::filesystem::path path_;
};

}  // namespace ksv::test
