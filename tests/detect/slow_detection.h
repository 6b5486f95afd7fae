// Text detection once more, step by step: every scorer runs on every chunk that its
// encoding is still in the race for.
#pragma once

#include <cstdint>
#include <string>

#include "tests/detect/slow_scorers.h"

namespace ksv_detect_tests {

// The result of dtctText for a file with these bytes, and a language in lower case.
uint32_t slowDetect(const Bytes& file, const std::string& language);

}  // namespace ksv_detect_tests
