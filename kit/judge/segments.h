// Where a text changes its charset.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/judge/detection.h"
#include "kit/judge/reading.h"

namespace ksv_kit::judge {

struct Segment {
  uint64_t offset = 0;
  uint64_t length = 0;
  std::string charset;
  std::string decodeAs;
  double confidence = 0;
};

std::vector<Segment> segmentsOf(Bytes text, const Hints& hints);

}  // namespace ksv_kit::judge
