// Files with passing names, which an interrupt removes.
#pragma once

#include <windows.h>

#include <mutex>
#include <set>
#include <string>

#include "cli/system/open_file_windows.h"

namespace ksv_cli::platform {

// The passing names that exist at the moment. An interrupt comes on a thread of
// its own: it takes the lock, removes them, and keeps the lock, so that whoever
// wants to create, remove or rename one waits for the end of the process.
class TemporaryNames {
 public:
  template <typename Action>
  auto guarded(Action action) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return action(names_);
  }

  void removeAllForGood() {
    mutex_.lock();
    removeAll();
  }

  // For a thread that may have stopped with the lock.
  void tryToRemoveAllForGood() {
    if (mutex_.try_lock()) removeAll();
  }

 private:
  void removeAll() {
    for (const std::wstring& name : names_) ::DeleteFileW(name.c_str());
  }

  std::mutex mutex_;
  std::set<std::wstring> names_;
};

TemporaryNames& temporaryNames();

// From here on an interrupt removes the files, and ends the process.
void removeTemporaryFilesAtInterrupts();

// A new file under a passing name, open for writing. It goes with the object unless
// it has been renamed.
class PassingFile {
 public:
  // directory: with the separator at its end, or empty. name: empty for one that nobody knows.
  // Throws Failure.
  explicit PassingFile(const std::wstring& directory, const std::string& name = "");
  ~PassingFile();
  PassingFile(const PassingFile&) = delete;
  PassingFile& operator=(const PassingFile&) = delete;

  const std::wstring& path() const { return path_; }
  OpenFile& handle() { return file_; }

  // Does what renames the file, and forgets its name. What action throws leaves it.
  template <typename Action>
  void rename(Action action) {
    temporaryNames().guarded([&](std::set<std::wstring>& names) {
      action();
      names.erase(path_);
    });
  }

 private:
  HANDLE create() const;
  void tellStays(DWORD error) const noexcept;

  std::wstring path_;
  OpenFile file_;
};

}  // namespace ksv_cli::platform
