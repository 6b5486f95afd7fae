// How likely it is that the best reading of a text is right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kit/judge/reading.h"

namespace ksv_kit::judge {

// For each reading, in the order of their costs. Readings that are the same text are right
// together: the first of them has the whole likelihood. high: of how many characters above ASCII
// the text is. unknown: what it costs in a charset that nobody knows.
std::vector<double> confidencesOf(const Readings& readings, size_t high, int64_t unknown);

}  // namespace ksv_kit::judge
