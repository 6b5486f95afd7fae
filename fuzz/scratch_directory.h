// A charset directory of the fuzz target's own: one for each process, in memory
// where there is /dev/shm, else where temporary files are; removed when the
// process ends.
#pragma once

#include <string>
#include <string_view>

namespace ksv_fuzz {

// The bytes of a file that has to be there.
std::string contentOf(const std::string& path);

class ScratchDirectory {
 public:
  // Makes the directory and points the library's setting at it.
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  // With its last separator.
  const std::string& path() const { return path_; }

  // Removes every file.
  void clear() const;
  void write(const std::string& name, std::string_view bytes) const;
  // Copies every file of another directory into this one.
  void copyFilesOf(const std::string& directory) const;
  void remove(const std::string& name) const;
  std::string pathOf(const std::string& name) const { return path_ + name; }
  std::string read(const std::string& name) const { return contentOf(pathOf(name)); }

 private:
  const std::string path_;
};

}  // namespace ksv_fuzz
