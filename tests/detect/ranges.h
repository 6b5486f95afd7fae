// Sets of codes written as people write them: "40-7E 80 A1-FE".
#pragma once

#include <cstdint>
#include <set>
#include <sstream>
#include <string>

namespace ksv_detect_tests {

inline std::set<uint32_t> codesOf(const std::string& ranges) {
  std::set<uint32_t> codes;
  std::istringstream words(ranges);
  for (std::string word; words >> word;) {
    const size_t hyphen = word.find('-');
    const uint32_t first = static_cast<uint32_t>(std::stoul(word.substr(0, hyphen), nullptr, 16));
    const uint32_t last =
        hyphen == word.npos
            ? first
            : static_cast<uint32_t>(std::stoul(word.substr(hyphen + 1), nullptr, 16));
    for (uint32_t code = first; code <= last; ++code) codes.insert(code);
  }
  return codes;
}

// The ranges of the sets, as the tests know them.
extern const char kAssignedText[];
extern const char kShiftJisCodeText[];
extern const char kCheckedText[];

}  // namespace ksv_detect_tests
