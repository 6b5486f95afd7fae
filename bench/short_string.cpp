// The cost of one short string: set up, converted and released; with the handle kept from string to
// string; and for the library with nothing but the charset set anew, and nothing but the buffers.
#include <benchmark/benchmark.h>

#include "bench/benchmarks.h"
#include "bench/text.h"

namespace ksv_bench {
namespace {

constexpr size_t kLengths[] = {4, 10, 40, 100, 300, 1000};
constexpr size_t kLongest = 1000;
// So many different strings take turns.
constexpr size_t kStrings = 1024;

using ConvertOnce = size_t (*)(const Pair&, std::string_view, char*, size_t);

template <typename ConvertString>
void convertStrings(benchmark::State& state, const Pair& pair, size_t bytes,
                    ConvertString convertString) {
  const std::vector<std::string> strings = shortStrings(*pair.source, bytes, kStrings);
  char output[roomFor(kLongest)];
  size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    const size_t written = convertString(strings[next], output, sizeof output);
    if (written == Converter::kFailed) fail(pair.name() + ": the conversion failed");
    benchmark::DoNotOptimize(output);
    next = (next + 1) % kStrings;
  }
}

std::string nameOf(const char* group, const Pair& pair, size_t bytes, const char* contestant) {
  return std::string(group) + "/" + pair.name() + "/" + std::to_string(bytes) + "_bytes/" +
         contestant;
}

void registerWhole(const Pair& pair, size_t bytes, const char* name, ConvertOnce convertOnce,
                   bool isLibrary) {
  benchmark::RegisterBenchmark(
      nameOf("string_whole", pair, bytes, name).c_str(), [=](benchmark::State& state) {
        std::unique_ptr<LibrarySession> session;
        if (isLibrary) session = std::make_unique<LibrarySession>();
        convertStrings(state, pair, bytes,
                       [&](std::string_view input, char* output, size_t capacity) {
                         return convertOnce(pair, input, output, capacity);
                       });
      });
}

void registerKept(const Pair& pair, size_t bytes, const Contestant& contestant) {
  benchmark::RegisterBenchmark(nameOf("string_kept", pair, bytes, contestant.name).c_str(),
                               [&contestant, pair, bytes](benchmark::State& state) {
                                 const auto converter = contestant.open(pair);
                                 convertStrings(
                                     state, pair, bytes,
                                     [&](std::string_view input, char* output, size_t capacity) {
                                       return converter->convert(input, output, capacity);
                                     });
                               });
}

void registerLength(const Pair& pair, size_t bytes) {
  registerWhole(pair, bytes, "library", convertOnceWithLibrary, true);
  registerWhole(pair, bytes, "iconv", convertOnceWithIconv, false);
  registerWhole(pair, bytes, "icu", convertOnceWithIcu, false);
  for (const Contestant& contestant : contestants()) {
    // So short an input never takes the bulk path.
    if (std::string_view(contestant.name) != "engine") registerKept(pair, bytes, contestant);
  }
  registerKept(pair, bytes, libraryWithCharsetAgain());
  registerKept(pair, bytes, libraryWithBuffersOnly());
}

}  // namespace

void registerShortStrings() {
  const Pair pairs[] = {{&kWindows31J, &kUtf8}, {&kUtf8, &kWindows31J}, {&kWindows31J, &kUtf16}};
  for (const Pair& pair : pairs) {
    for (const size_t bytes : kLengths) registerLength(pair, bytes);
  }
}

}  // namespace ksv_bench
