// What the tests of temporary files have in common.
#pragma once

#include <string>

#include "ksv_path.h"
#include "tests/common/support.h"

namespace ksv::test {

inline std::string createTemporary(const char* hint) {
  char path[780] = "";
  char* result = KSV_ASC_tmpnam1(hint, path);
  if (result == nullptr) return "null";
  EXPECT_EQ(result, path);
  EXPECT_TRUE(exists(path)) << path;
  EXPECT_TRUE(std::filesystem::is_empty(pathOf(path)));
  EXPECT_TRUE(textOf(pathOf(path).filename()).starts_with("ksv"));
  return path;
}

inline std::string directoryOf(const std::string& path) {
  return textOf(pathOf(path).parent_path());
}

}  // namespace ksv::test
