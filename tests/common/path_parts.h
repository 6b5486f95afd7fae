// What the tests of path parts have in common.
#pragma once

#include <ostream>
#include <string>

#include "ksv_path.h"
#include "tests/common/support.h"

namespace ksv::test {

struct Parts {
  std::string directory, base, extension;
  bool operator==(const Parts&) const = default;
};

inline void PrintTo(const Parts& parts, std::ostream* out) {
  *out << "[" << parts.directory << "][" << parts.base << "][" << parts.extension << "]";
}

// Splits with both functions, which agree on every path without a drive that fits.
inline Parts split(const char* path) {
  char drive[3] = "x", directory[768] = "x", base[768] = "x", extension[768] = "x";
  EXPECT_EQ(KSV_splitpath(path, drive, directory, base, extension), 0);
  EXPECT_STREQ(drive, "");
  char driveA[3] = "x", directoryA[768] = "x", baseA[768] = "x", extensionA[768] = "x";
  const char* pathA = path;
  std::string ansi;
  if (path != nullptr) pathA = (ansi = *toAnsi(path)).c_str();
  KSV_splitpathA(pathA, driveA, directoryA, baseA, extensionA);
  EXPECT_STREQ(driveA, "");
  const Parts parts{directory, base, extension};
  EXPECT_EQ(parts, (Parts{fromAnsi(directoryA), fromAnsi(baseA), fromAnsi(extensionA)}));
  return parts;
}

}  // namespace ksv::test
