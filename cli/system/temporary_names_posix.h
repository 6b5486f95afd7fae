// Files with passing names, which a signal that ends the process removes.
//
// Whoever creates, renames or removes one does so in a NamesSection. A signal that
// ends the process waits until no thread is in such a section, and lets none in any
// more: so it finds every file under the name that is noted for it, at any instant.
#pragma once

#include <signal.h>

#include <cstddef>
#include <string>

#include "cli/system/open_file_posix.h"

namespace ksv_cli::platform {

// Removes them once no other thread is about to change one; from then on none does.
void removeTemporaryFiles() noexcept;

class NamesSection {
 public:
  NamesSection();
  ~NamesSection();
  NamesSection(const NamesSection&) = delete;
  NamesSection& operator=(const NamesSection&) = delete;

 private:
  sigset_t before_;
};

// A name in a directory that no other file has. From the first one on every signal that would end
// the process, and is not ignored, removes the files first.
class PassingName {
 public:
  // directory: empty for the current one. name: empty for one that nobody knows.
  explicit PassingName(const std::string& directory, const std::string& name = "");
  ~PassingName();
  PassingName(const PassingName&) = delete;
  PassingName& operator=(const PassingName&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  size_t slot_;
};

// A new file under such a name, private to the user, open for writing. It goes with
// the object unless it has been renamed.
class PassingFile {
 public:
  // Throws Failure.
  explicit PassingFile(const std::string& directory, const std::string& name = "");
  ~PassingFile();
  PassingFile(const PassingFile&) = delete;
  PassingFile& operator=(const PassingFile&) = delete;

  const std::string& path() const { return name_.path(); }
  OpenFile& descriptor() { return descriptor_; }

  // In a NamesSection; errno tells why it failed.
  bool renameTo(const std::string& place);

 private:
  PassingName name_;
  OpenFile descriptor_;
  bool isThere_ = true;
};

}  // namespace ksv_cli::platform
