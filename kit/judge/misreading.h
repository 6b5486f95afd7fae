// Texts in UTF-8 that were taken for another charset, and written as UTF-8 once more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kit/judge/decoding.h"

namespace ksv_kit::judge {

// The charset that most of the lines were taken for; empty when they are what they are.
std::string misreadingOf(Bytes lines);

struct RepairCounts {
  uint64_t repaired = 0;
  uint64_t lost = 0;
  uint64_t ambiguous = 0;
  uint64_t firstLeft = UINT64_MAX;  // where the first line begins that was left alone
  uint64_t firstLeftLine = 0;
  std::string misreadAs;
};

// The text with each line as it once was, where there is one way back. misreadAs: the charset, as
// the directory has it; empty: any that texts are taken for.
std::string repaired(Bytes text, const std::string& misreadAs, RepairCounts& counts);

}  // namespace ksv_kit::judge
