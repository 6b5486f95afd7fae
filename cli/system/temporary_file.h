// Files of the command's own, in the system's directory for temporary files.
#pragma once

#include <memory>
#include <string>

#include "cli/system/failure.h"
#include "cli/system/streams.h"

namespace ksv_cli::platform {

// It goes with the object. Throws Failure, as its writing does.
class TemporaryFile : public ByteSink {
 public:
  static std::unique_ptr<TemporaryFile> create();
  // Under which others can open it, once nothing more is written.
  virtual const std::string& finish() = 0;
};

// What fails in such a file has nothing to do with the input that is copied to it.
template <typename Action>
auto onTemporaryFile(Action action) {
  try {
    return action();
  } catch (const Failure& failure) {
    throw Failure(std::string("a temporary file cannot be written: ") + failure.what());
  }
}

}  // namespace ksv_cli::platform
