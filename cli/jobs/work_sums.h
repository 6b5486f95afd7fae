// What has come of many inputs, as one line.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace ksv_cli {

struct NamedCount {
  size_t count;
  const char* name;
};

// "3 files: 2 converted, 1 failed; 1234 bytes in 0.1 seconds"
std::string sumsInWords(size_t files, std::initializer_list<NamedCount> outcomes, uint64_t bytes,
                        std::chrono::duration<double> time);

// "1 byte", "2 bytes"
std::string bytesInWords(uint64_t count);

}  // namespace ksv_cli
