// An open file, and the words of the system for what it refuses.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>
#include <utility>

namespace ksv_cli::platform {

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// In the words that every system has for it, and in this system's own for the rest.
std::string words(DWORD error);

// Writes to a pipe that nobody reads any more end the work, but are no news.
[[noreturn]] void fail(DWORD error);
[[noreturn]] void fail(std::errc error);

class OpenFile {
 public:
  explicit OpenFile(HANDLE value) : value_(value) {}
  ~OpenFile() {
    if (isOpen()) ::CloseHandle(value_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  HANDLE get() const { return value_; }
  bool isOpen() const { return value_ != INVALID_HANDLE_VALUE; }

  void closeChecked() {
    if (!::CloseHandle(std::exchange(value_, INVALID_HANDLE_VALUE))) fail(::GetLastError());
  }

 private:
  HANDLE value_;
};

void writeAll(HANDLE handle, const uint8_t* bytes, size_t size);

}  // namespace ksv_cli::platform
