// The cost of one string of 40 bytes: set up, converted and released, and with the
// handle kept from string to string.
#include <benchmark/benchmark.h>

#include "bench/benchmarks.h"
#include "bench/text.h"

namespace ksv_bench {
namespace {

constexpr size_t kBytes = 40;
// So many different strings take turns.
constexpr size_t kStrings = 1024;

using ConvertOnce = size_t (*)(const Pair&, std::string_view, char*, size_t);

template <typename ConvertString>
void convertStrings(benchmark::State& state, const Pair& pair, ConvertString convertString) {
  const std::vector<std::string> strings = shortStrings(*pair.source, kBytes, kStrings);
  char output[roomFor(kBytes)];
  size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    const size_t written = convertString(strings[next], output, sizeof output);
    if (written == Converter::kFailed) fail(pair.name() + ": the conversion failed");
    benchmark::DoNotOptimize(output);
    next = (next + 1) % kStrings;
  }
}

void registerWhole(const Pair& pair, const char* name, ConvertOnce convertOnce, bool isLibrary) {
  benchmark::RegisterBenchmark(
      ("string_whole/" + pair.name() + "/40_bytes/" + name).c_str(), [=](benchmark::State& state) {
        std::unique_ptr<LibrarySession> session;
        if (isLibrary) session = std::make_unique<LibrarySession>();
        convertStrings(state, pair, [&](std::string_view input, char* output, size_t capacity) {
          return convertOnce(pair, input, output, capacity);
        });
      });
}

void registerKept(const Pair& pair, const Contestant& contestant) {
  benchmark::RegisterBenchmark(
      ("string_kept/" + pair.name() + "/40_bytes/" + contestant.name).c_str(),
      [&contestant, pair](benchmark::State& state) {
        const auto converter = contestant.open(pair);
        convertStrings(state, pair, [&](std::string_view input, char* output, size_t capacity) {
          return converter->convert(input, output, capacity);
        });
      });
}

}  // namespace

void registerShortStrings() {
  const Pair pairs[] = {{&kWindows31J, &kUtf8}, {&kUtf8, &kWindows31J}, {&kWindows31J, &kUtf16}};
  for (const Pair& pair : pairs) {
    registerWhole(pair, "library", convertOnceWithLibrary, true);
    registerWhole(pair, "iconv", convertOnceWithIconv, false);
    registerWhole(pair, "icu", convertOnceWithIcu, false);
    for (const Contestant& contestant : contestants()) {
      // So short an input never takes the bulk path.
      if (std::string_view(contestant.name) != "engine") registerKept(pair, contestant);
    }
  }
}

}  // namespace ksv_bench
