// The files that results go to. Everything here throws Failure with the system's own words.
#pragma once

#include <cstdint>
#include <functional>
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

// How a file takes its place in a run that can be resumed.
struct Placing {
  std::string passingName = {};  // empty: one that no other file has
  bool isDurable = false;        // a new file is safe from a loss of power as well
};

// A file that comes into being whole or not at all. It is written under a passing
// name in the directory of its place and takes its place at commit(); without
// commit() it disappears again. Where it replaces a file, it is safe from a loss of
// power when commit() returns. A file that cannot be removed is told (console.h).
class PendingFile : public ByteSink {
 public:
  // path: the place; where it is a link, the file that the link leads to. A file
  // that is there already gives the new one its permissions and attributes.
  static std::unique_ptr<PendingFile> create(const std::string& path, const Placing& placing = {});

  // The same with all that the file at path has: its owner and, when they are to be
  // kept, its times. Fails where something of it cannot be kept, where it has further
  // names, which would go on naming the older text, where it has been changed since,
  // and where there is something at the path of the backup. A file whose bytes stay
  // the same is left alone, and not kept.
  static std::unique_ptr<PendingFile> createInPlace(const std::string& path, const InPlace& how,
                                                    const Placing& placing = {});

  // announce is called when nothing is left to do but to take the place, and where a file is
  // converted in place, when nothing stands at the path of the backup. What it throws leaves all
  // as it was. False: the bytes stay the same.
  using Announce = std::function<void()>;
  virtual bool commit(const Announce& announce = nullptr) = 0;
};

}  // namespace ksv_cli::platform
