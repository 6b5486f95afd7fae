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
  static const std::vector<Pair> pairs = [] {
    std::vector<Pair> all;
    for (const Charset* charset : allCharsets()) {
      if (*charset->script == '\0') continue;
      for (const Charset* form : {&kUtf8, &kUtf16}) {
        all.push_back({charset, form});
        all.push_back({form, charset});
      }
    }
    for (const auto& [first, second] :
         {std::pair(&kShiftJis, &kEucJp), std::pair(&kUtf8, &kUtf16)}) {
      all.push_back({first, second});
      all.push_back({second, first});
    }
    return all;
  }();
  return pairs;
}

void registerThroughput() {
  for (const Text& text : texts()) {
    for (const Pair& pair : throughputPairs()) {
      if (!isTextFor(text, pair)) continue;
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
