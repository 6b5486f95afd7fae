// System calls that a handled signal may interrupt, which means nothing.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace ksv::platform {

// What call returns, -1 where it fails for any other reason.
template <class Call>
auto uninterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

// All of the bytes, however the system parts them. False when it refuses.
inline bool writeWhole(int file, const char* bytes, size_t count) {
  while (count > 0) {
    const ssize_t stored = uninterrupted([&] { return write(file, bytes, count); });
    if (stored <= 0) return false;
    bytes += stored;
    count -= static_cast<size_t>(stored);
  }
  return true;
}

}  // namespace ksv::platform
