// What is found out about a text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ksv.h"

namespace ksv_kit::judge {

struct Guess {
  std::string charset;
  std::string decodeAs;  // empty: it cannot be converted
  std::string language;
  std::string reason;
  double confidence = 0;
  uint64_t invalidOffset = KSV_NO_OFFSET;
  ksv_line_end lineEnd = KSV_LINE_ENDS_NONE;
  uint32_t markLength = 0;
};

struct Detection {
  ksv_content content = KSV_CONTENT_TEXT;
  bool isSettled = false;
  uint64_t bytes = 0;
  std::string misreadAs;
  std::vector<Guess> guesses;
};

// What is known beforehand.
struct Hints {
  std::string languages;
  std::vector<std::string> charsets;
  std::string declared;
  std::string fileName;
};

}  // namespace ksv_kit::judge
