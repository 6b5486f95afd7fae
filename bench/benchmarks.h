// The groups of benchmarks; names are group/pair/text/contestant.
#pragma once

#include <vector>

#include "bench/converters.h"

namespace ksv_bench {

const std::vector<Pair>& throughputPairs();

void registerThroughput();
void registerShortStrings();
void registerStart();
void registerLookups();
void registerDetection();
void registerJudge();

}  // namespace ksv_bench
