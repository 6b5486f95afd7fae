// What a process pays before its first text is converted, compiled tables being
// there: start, rule files, first converter, first conversion. Every iteration goes
// through all of it in this process and ends with endProcess, whose time counts
// apart; files are in the system's cache.
#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstring>

#include "bench/benchmarks.h"
#include "bench/text.h"
#include "ksv_cconv.h"

namespace ksv_bench {
namespace {

constexpr const char* kParts[] = {"start_us", "rules_us", "converter_us", "conversion_us",
                                  "end_us"};
constexpr size_t kEnd = std::size(kParts) - 1;

void startAndConvert(benchmark::State& state, const Pair& pair, const std::string& input) {
  using Clock = std::chrono::steady_clock;
  std::string output(roomFor(input.size()), '\0');
  std::array<double, std::size(kParts)> sums = {};
  for ([[maybe_unused]] auto _ : state) {
    Clock::time_point before = Clock::now();
    double total = 0;
    const auto finishPart = [&](size_t part, bool succeeded) {
      if (!succeeded) fail(pair.name() + ": " + kParts[part] + " failed");
      const Clock::time_point now = Clock::now();
      const double seconds = std::chrono::duration<double>(now - before).count();
      sums[part] += seconds;
      if (part != kEnd) total += seconds;
      before = now;
    };

    finishPart(0, startProcess() == 1);
    finishPart(1, cconvLoadRule() == 1);
    ConverterRecord record;
    std::memset(&record, 0, sizeof record);
    ConvertOptions options = {};
    options.outputBigEndian = pair.target->littleEndian ? 0 : 1;
    uint32_t source[3] = {pair.source->littleEndian ? 0u : 1u, 0, 0};
    finishPart(2, cconvInitConvert(&record, &options, pair.target->library) == KSV_STATUS_DONE &&
                      cconvChgCharset(&record, source, pair.source->library) == KSV_STATUS_DONE);
    record.input = reinterpret_cast<const uint8_t*>(input.data());
    record.inputLength = static_cast<int32_t>(input.size());
    record.output = reinterpret_cast<uint8_t*>(output.data());
    record.outputCapacity = static_cast<int32_t>(output.size());
    finishPart(3, cconvConvert(&record) == KSV_STATUS_DONE);
    endProcess();
    finishPart(kEnd, true);
    state.SetIterationTime(total);
  }
  for (size_t part = 0; part < std::size(kParts); ++part) {
    state.counters[kParts[part]] =
        benchmark::Counter(sums[part] * 1e6, benchmark::Counter::kAvgIterations);
  }
}

}  // namespace

void registerStart() {
  const Pair pairs[] = {
      {&kWindows31J, &kUtf8}, {&kUtf8, &kShiftJis}, {&kShiftJis2004, &kUtf8}, {&kUtf8, &kUtf16}};
  const std::pair<const char*, size_t> sizes[] = {{"40_bytes", 40}, {"64_KB", 65536}};
  for (const Pair& pair : pairs) {
    for (const auto& [sizeName, bytes] : sizes) {
      benchmark::RegisterBenchmark(("start/" + pair.name() + "/" + sizeName + "/library").c_str(),
                                   [pair, bytes = bytes](benchmark::State& state) {
                                     startAndConvert(state, pair,
                                                     shortStrings(*pair.source, bytes, 1)[0]);
                                   })
          ->UseManualTime()
          ->Unit(benchmark::kMicrosecond);
    }
  }
}

}  // namespace ksv_bench
