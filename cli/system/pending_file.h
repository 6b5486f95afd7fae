// The files that results go to. Everything here throws Failure with the system's own words.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "cli/system/files.h"
#include "cli/system/streams.h"

namespace ksv_cli::platform {

// What a file becomes that is converted where it is.
struct InPlace {
  FileFacts original;  // as it was before it was read
  std::string backup;  // the path at which it is kept; empty: it is not. On its volume
  bool keepsTimes = true;
};

// A file that comes into being whole or not at all. It is written under a passing
// name in the directory of its place and takes its place at commit(); without
// commit() it disappears again. Where it replaces a file, it is safe from a loss of
// power when commit() returns. A file that cannot be removed is told (console.h).
class PendingFile : public ByteSink {
 public:
  // path: the place; where it is a link, the file that the link leads to. A file
  // that is there already gives the new one its permissions and attributes.
  static std::unique_ptr<PendingFile> create(const std::string& path);

  // The same with all that the file at path has: its owner and, when they are to be
  // kept, its times. Fails where something of it cannot be kept, where it has further
  // names, which would go on naming the older text, where it has been changed since,
  // and where there is something at the path of the backup. A file whose bytes stay
  // the same is left alone, and not kept.
  static std::unique_ptr<PendingFile> createInPlace(const std::string& path, const InPlace& how);

  // False: the bytes stay the same.
  virtual bool commit() = 0;
};

}  // namespace ksv_cli::platform
