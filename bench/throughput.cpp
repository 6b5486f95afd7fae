// Megabytes of input a second, on texts of more than 1 MB.
#include <benchmark/benchmark.h>

#include "bench/benchmarks.h"
#include "bench/text.h"

namespace ksv_bench {
namespace {

void convertText(benchmark::State& state, const Pair& pair, const Text& text,
                 const Contestant& contestant) {
  const std::string input = encode(text.characters, *pair.source);
  std::string output(roomFor(input.size()), '\0');
  const auto converter = contestant.open(pair);
  // Once before the clock starts: tables are made, pages are touched.
  converter->convert(input, output.data(), output.size());
  for ([[maybe_unused]] auto _ : state) {
    if (converter->convert(input, output.data(), output.size()) == Converter::kFailed) {
      fail(pair.name() + ": the conversion failed");
    }
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(input.size()));
}

}  // namespace

const std::vector<Pair>& throughputPairs() {
  static const std::vector<Pair> pairs = {{&kWindows31J, &kUtf8},   {&kUtf8, &kWindows31J},
                                          {&kShiftJis, &kUtf8},     {&kUtf8, &kShiftJis},
                                          {&kShiftJis, &kUtf16},    {&kUtf16, &kShiftJis},
                                          {&kShiftJis2004, &kUtf8}, {&kUtf8, &kShiftJis2004},
                                          {&kUtf8, &kUtf16},        {&kUtf16, &kUtf8}};
  return pairs;
}

void registerThroughput() {
  for (const Text& text : texts()) {
    for (const Pair& pair : throughputPairs()) {
      for (const Contestant& contestant : contestants()) {
        if (contestant.open(pair) == nullptr) continue;
        const std::string name = "convert/" + pair.name() + "/" + text.name + "/" + contestant.name;
        benchmark::RegisterBenchmark(name.c_str(), [&](benchmark::State& state) {
          convertText(state, pair, text, contestant);
        })->Unit(benchmark::kMillisecond);
      }
    }
  }
}

}  // namespace ksv_bench
