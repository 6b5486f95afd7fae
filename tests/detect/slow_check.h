// The encoding check once more, by the letter and without regard to speed. It shares
// no function and no table with the library.
#pragma once

#include <cstdint>
#include <string>

#include "tests/detect/slow_scorers.h"

namespace ksv_detect_tests {

struct SlowCheck {
  uint32_t result = 0;
  std::string name = "unknown";
  uint32_t declared = 0;
  uint32_t mark = 0;
  uint32_t bigEndian = 1;
  uint32_t lineEnd = 0;
  uint32_t resultClass = 0;
};

SlowCheck slowCheck(const Bytes& input, size_t position, size_t end);

}  // namespace ksv_detect_tests
