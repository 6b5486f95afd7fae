// System calls that a handled signal may interrupt, which means nothing.
#pragma once

#include <cerrno>

namespace ksv::platform {

// What call returns, -1 where it fails for any other reason.
template <class Call>
auto uninterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

}  // namespace ksv::platform
