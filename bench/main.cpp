#include <benchmark/benchmark.h>

#include "bench/benchmarks.h"
#include "bench/text.h"

int main(int argumentCount, char** arguments) {
  benchmark::Initialize(&argumentCount, arguments);
  if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 1;
  ksv_bench::checkAgreement(ksv_bench::throughputPairs());
  ksv_bench::registerThroughput();
  ksv_bench::registerShortStrings();
  ksv_bench::registerStart();
  ksv_bench::registerLookups();
  ksv_bench::registerDetection();
  ksv_bench::registerJudge();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
