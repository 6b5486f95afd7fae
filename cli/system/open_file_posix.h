// An open file, and the words of the system for what it refuses.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <system_error>

#include "cli/system/failure.h"

namespace ksv_cli::platform {

// Writes to a pipe that nobody reads any more end the work, but are no news.
[[noreturn]] inline void fail(int error) {
  throw Failure(std::generic_category().message(error), error == EPIPE);
}

inline bool isOneOf(int error, std::initializer_list<int> errors) {
  for (const int other : errors)
    if (error == other) return true;
  return false;
}

class OpenFile {
 public:
  explicit OpenFile(int number) : number_(number) {}
  ~OpenFile() {
    if (number_ > STDERR_FILENO) ::close(number_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int number() const { return number_; }
  bool isOpen() const { return number_ >= 0; }

  void writeAll(const uint8_t* bytes, size_t size) const {
    while (size != 0) {
      const ssize_t count = ::write(number_, bytes, size);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) fail(errno);
      bytes += count;
      size -= static_cast<size_t>(count);
    }
  }

  size_t readSome(uint8_t* buffer, size_t size) const {
    for (;;) {
      const ssize_t count = ::read(number_, buffer, size);
      if (count >= 0) return static_cast<size_t>(count);
      if (errno != EINTR) fail(errno);
    }
  }

  void closeChecked() {
    if (!isOpen()) return;
    const int number = number_;
    number_ = -1;
    if (::close(number) != 0 && errno != EINTR) fail(errno);
  }

 private:
  int number_;
};

}  // namespace ksv_cli::platform
