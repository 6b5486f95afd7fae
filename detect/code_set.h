// A set of 16-bit codes, made from ranges when the library is compiled. One bit a
// code: 8 KB, and a look-up is one load.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ksv::detect {

// Both ends are in the range.
struct CodeRange {
  uint16_t first;
  uint16_t last;
};

// The codes lead * 256 + trail of pairs whose bytes lie in two ranges.
struct PairRange {
  uint8_t firstLead;
  uint8_t lastLead;
  uint8_t firstTrail;
  uint8_t lastTrail;
};

class CodeSet {
 public:
  template <size_t kCount>
  explicit constexpr CodeSet(const CodeRange (&ranges)[kCount]) {
    for (const CodeRange& range : ranges) add(range.first, range.last);
  }

  template <size_t kCount>
  explicit constexpr CodeSet(const PairRange (&ranges)[kCount]) {
    for (const PairRange& range : ranges) {
      for (uint32_t lead = range.firstLead; lead <= range.lastLead; ++lead) {
        add(lead << 8 | range.firstTrail, lead << 8 | range.lastTrail);
      }
    }
  }

  constexpr bool contains(uint32_t code) const { return words_[code / 64] >> (code % 64) & 1; }

  // The same set but for these codes.
  constexpr CodeSet without(const CodeSet& other) const {
    CodeSet result = *this;
    for (size_t i = 0; i < kWords; ++i) result.words_[i] &= ~other.words_[i];
    return result;
  }

 private:
  static constexpr size_t kWords = 0x10000 / 64;

  // Word by word, since compilers limit the steps of what they evaluate.
  constexpr void add(uint32_t first, uint32_t last) {
    for (uint32_t word = first / 64; word <= last / 64; ++word) {
      const uint32_t low = word == first / 64 ? first % 64 : 0;
      const uint32_t high = word == last / 64 ? last % 64 : 63;
      words_[word] |= ~uint64_t{0} >> (63 - (high - low)) << low;
    }
  }

  std::array<uint64_t, kWords> words_{};
};

}  // namespace ksv::detect
