// One look into the Shift_JIS mapping, beside a table of 65,536 entries that an array
// index finds. Keys are those of the Japanese text, whose characters gather in few
// pages, and random ones, which are hard on caches.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <random>

#include "bench/benchmarks.h"
#include "bench/text.h"
#include "ksv_sjis.h"

namespace ksv_bench {
namespace {

using Keys = std::vector<uint16_t>;
using Lookup = uint16_t (*)(uint16_t);

constexpr size_t kKeys = 1 << 18;

// A call, as the library's own are.
template <Lookup kLookup>
[[gnu::noinline]] uint16_t directLookup(uint16_t key) {
  static const std::array<uint16_t, 0x10000> table = [] {
    std::array<uint16_t, 0x10000> entries;
    for (size_t i = 0; i < entries.size(); ++i) entries[i] = kLookup(static_cast<uint16_t>(i));
    return entries;
  }();
  return table[key];
}

// The units of the Japanese text, as many as are wanted.
Keys unitsOfText() {
  const std::string text = encode(texts().front().characters, kUtf16);
  Keys keys(kKeys);
  for (size_t i = 0; i < keys.size(); ++i) {
    keys[i] = static_cast<uint16_t>(static_cast<uint8_t>(text[2 * i]) |
                                    static_cast<uint8_t>(text[2 * i + 1]) << 8);
  }
  return keys;
}

Keys codesOf(Keys keys) {
  for (uint16_t& key : keys) key = KSV_unicodetosjis(key);
  return keys;
}

Keys randomKeys() {
  std::mt19937 random(20240611);
  Keys keys(kKeys);
  for (uint16_t& key : keys) key = static_cast<uint16_t>(random());
  return keys;
}

// A mask of no bits, which the compiler does not know of, makes a key wait for the
// answer before it; without one, looks run beside each other as far as they can.
template <bool kWaits>
void lookUpAll(benchmark::State& state, const Keys& keys, Lookup lookup) {
  uint16_t noBits = 0;
  benchmark::DoNotOptimize(noBits);
  uint16_t answer = 0;
  size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    const uint16_t before = kWaits ? answer & noBits : 0;
    answer = lookup(keys[next] | before);
    next = (next + 1) % kKeys;
  }
  benchmark::DoNotOptimize(answer);
}

void registerRow(const std::string& name, const Keys& keys, Lookup library, Lookup direct) {
  for (const auto& [contestant, lookup] : {std::pair("library", library), {"direct", direct}}) {
    const std::string ending = name + "/" + contestant;
    benchmark::RegisterBenchmark(
        ("lookup/" + ending).c_str(),
        [=, lookup = lookup](benchmark::State& state) { lookUpAll<false>(state, keys, lookup); });
    benchmark::RegisterBenchmark(
        ("lookup_waiting/" + ending).c_str(),
        [=, lookup = lookup](benchmark::State& state) { lookUpAll<true>(state, keys, lookup); });
  }
}

}  // namespace

void registerLookups() {
  const Keys units = unitsOfText();
  const Keys random = randomKeys();
  constexpr auto kDirectToUnicode = directLookup<KSV_sjistounicode>;
  constexpr auto kDirectToSjis = directLookup<KSV_unicodetosjis>;
  registerRow("sjis_to_unicode/japanese", codesOf(units), KSV_sjistounicode, kDirectToUnicode);
  registerRow("sjis_to_unicode/random", random, KSV_sjistounicode, kDirectToUnicode);
  registerRow("unicode_to_sjis/japanese", units, KSV_unicodetosjis, kDirectToSjis);
  registerRow("unicode_to_sjis/random", random, KSV_unicodetosjis, kDirectToSjis);
}

}  // namespace ksv_bench
