// Files as the system has them. Paths are UTF-8. Everything here throws Failure with the system's
// own words.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "cli/system/streams.h"

namespace ksv_cli::platform {

enum class FileKind { kMissing, kRegular, kDirectory, kOther };

struct FileFacts {
  FileKind kind = FileKind::kMissing;
  uint64_t size = 0;
  uint64_t device = 0;
  uint64_t number = 0;  // of the file on its device
  uint64_t names = 0;   // hard links
  // In the system's own count, by which nothing is lost when they are given back.
  int64_t readTime = 0;
  int64_t writeTime = 0;

  bool isSameFileAs(const FileFacts& other) const {
    return kind != FileKind::kMissing && kind == other.kind && device == other.device &&
           number == other.number;
  }
  // Not written to since, as far as that can be seen.
  bool isSameTextAs(const FileFacts& other) const {
    return isSameFileAs(other) && size == other.size && writeTime == other.writeTime;
  }
};

// Follows links. What cannot be reached is kMissing, which whoever opens it is told as well.
// Throws Failure where the system cannot say what there is.
FileFacts fileFacts(const std::string& path);

// A time of a file in nanoseconds since 1970.
int64_t sinceEpoch(int64_t time);

// Opening a directory fails.
std::unique_ptr<ByteSource> openInput(const std::string& path);
// Opens a file that is no regular one, such as a device or a pipe, for writing.
std::unique_ptr<ByteSink> openSpecialOutput(const std::string& path);

}  // namespace ksv_cli::platform
