// Writes the parts of mails that have a file name to a directory.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "cli/system/pending_file.h"

namespace ksv_cli {

// A name of its own in any directory, whatever a mail calls its part: no path, no device, none
// that is hidden, and none that is the name of something else on some system.
std::string safeFileName(std::string_view name);
// "a.txt" with a number: "a-2.txt".
std::string numberedName(const std::string& name, uint32_t number);

// May be used from several threads.
class PartSaver {
 public:
  // Makes the directory. Throws Failure.
  explicit PartSaver(const std::string& directory);

  class File {
   public:
    explicit File(const std::string& path);
    // Throw Failure with the name of the file.
    void write(std::string_view bytes);
    // Returns its path.
    std::string commit();

   private:
    const std::string path_;
    std::unique_ptr<platform::PendingFile> pending_;
  };

  // Nothing that is there is overwritten: the next number is taken.
  std::unique_ptr<File> begin(std::string_view name);

 private:
  std::string freePath(const std::string& name);

  const std::string directory_;
  std::mutex mutex_;
  std::map<std::string, uint32_t> numbers_;  // the last one that was tried, by the key of the place
};

}  // namespace ksv_cli
