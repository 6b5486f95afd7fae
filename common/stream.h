// A stream that is closed with its owner.
#pragma once

#include <cstdio>
#include <memory>

namespace ksv {

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};

using Stream = std::unique_ptr<std::FILE, CloseStream>;

}  // namespace ksv
