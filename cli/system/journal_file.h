// A file that lines are put behind each other in. One process at a time has it. Everything here
// throws Failure with the system's own words.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ksv_cli::platform {

class JournalFile {
 public:
  // A new one, whose name is on the disk; fails where a file is already.
  static std::unique_ptr<JournalFile> create(const std::string& path);
  // One that is there.
  static std::unique_ptr<JournalFile> open(const std::string& path);

  virtual ~JournalFile() = default;

  // Keeps the first bytes only.
  virtual void cut(uint64_t size) = 0;
  virtual void append(const std::string& text) = 0;
  // Returns when all that has been appended is on the disk. May be called while another thread
  // appends.
  virtual void synchronise() = 0;
};

}  // namespace ksv_cli::platform
