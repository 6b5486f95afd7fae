#include <benchmark/benchmark.h>

#include <algorithm>
#include <string_view>

#include "bench/benchmarks.h"
#include "bench/converters.h"
#include "bench/text.h"
#include "cconv/bulk/vector_level.h"

namespace {

// --vectors=LEVEL: as if the processor had no more.
void limitVectors(std::string_view level) {
  using enum ksv::vector_runs::VectorLevel;
  const struct {
    std::string_view name;
    ksv::vector_runs::VectorLevel level;
  } levels[] = {
      {"none", kNone}, {"neon", kNeon}, {"sse4.1", kSse41}, {"avx2", kAvx2}, {"avx512", kAvx512}};
  for (const auto& known : levels) {
    if (known.name == level) return ksv::vector_runs::limitVectorsForTests(known.level);
  }
  ksv_bench::fail("--vectors takes none, neon, sse4.1, avx2 or avx512, not " + std::string(level));
}

// Takes the program's own option out of the arguments.
void takeOptions(int& count, char** arguments) {
  constexpr std::string_view kVectors = "--vectors=";
  char** const end = std::remove_if(arguments + 1, arguments + count, [&](const char* argument) {
    const std::string_view option(argument);
    if (!option.starts_with(kVectors)) return false;
    limitVectors(option.substr(kVectors.size()));
    return true;
  });
  count = static_cast<int>(end - arguments);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  takeOptions(argumentCount, arguments);
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
