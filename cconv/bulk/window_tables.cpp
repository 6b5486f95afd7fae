#include "cconv/bulk/window_tables.h"

#include "cconv/bulk/short_table.h"

namespace ksv::vector_runs {
namespace {

constexpr KeptOfEight keptOfEight() {
  KeptOfEight all = {};
  for (uint32_t kept = 0; kept < 256; ++kept) {
    uint32_t count = 0;
    for (uint32_t i = 0; i < 8; ++i) {
      if ((kept >> i & 1) == 0) continue;
      all.bytes[kept][count] = static_cast<uint8_t>(i);
      all.units[kept][2 * count] = static_cast<uint8_t>(2 * i);
      all.units[kept][2 * count + 1] = static_cast<uint8_t>(2 * i + 1);
      ++count;
    }
    all.counts[kept] = static_cast<uint8_t>(count);
  }
  return all;
}

constexpr PushedFour pushedFour() {
  PushedFour all = {};
  for (uint32_t lengths = 0; lengths < 256; ++lengths) {
    uint32_t bytes = 0;
    for (uint32_t i = 0; i < 4; ++i) {
      const uint32_t length = (lengths >> i & 1) | (lengths >> (3 + i) & 2);
      for (uint32_t byte = 0; byte < length; ++byte)
        all.places[lengths][bytes++] = static_cast<uint8_t>(4 * i + byte);
    }
    all.bytes[lengths] = static_cast<uint8_t>(bytes);
  }
  return all;
}

constexpr FourCodes fourCodes() {
  constexpr uint8_t kNo = 0x80;  // of a shuffle: zero
  FourCodes all = {};
  for (uint32_t pairs = 0; pairs < 128; ++pairs) {
    uint32_t at = 0;
    for (uint32_t i = 0; i < 4; ++i) {
      const bool isPair = (pairs >> at & 1) != 0;
      uint8_t* const place = all.places[pairs] + 4 * i;
      place[0] = static_cast<uint8_t>(isPair ? at + 1 : at);
      place[1] = isPair ? static_cast<uint8_t>(at) : kNo;
      place[2] = place[3] = kNo;
      all.singles[pairs][4 * i + 2] = isPair ? 0 : ShortTable::kSingles >> 16;
      at += isPair ? 2 : 1;
    }
  }
  return all;
}

constexpr OneOrTwo oneOrTwo() {
  OneOrTwo all = {};
  for (uint32_t two = 0; two < 256; ++two) {
    uint32_t count = 0;
    for (uint32_t i = 0; i < 8; ++i) {
      all.places[two][count++] = static_cast<uint8_t>(2 * i);
      if ((two >> i & 1) != 0) all.places[two][count++] = static_cast<uint8_t>(2 * i + 1);
    }
  }
  return all;
}

constexpr BitsAsBytes bitsAsBytes() {
  BitsAsBytes all = {};
  for (uint32_t bits = 0; bits < 256; ++bits) {
    for (uint32_t i = 0; i < 8; ++i) all.bytes[bits] |= (bits >> i & 1) * (uint64_t{0xFF} << 8 * i);
  }
  return all;
}

}  // namespace

constinit const KeptOfEight kKeptOfEight = keptOfEight();
constinit const PushedFour kPushedFour = pushedFour();
constinit const FourCodes kFourCodes = fourCodes();
constinit const OneOrTwo kOneOrTwo = oneOrTwo();
constinit const BitsAsBytes kBitsAsBytes = bitsAsBytes();

}  // namespace ksv::vector_runs
