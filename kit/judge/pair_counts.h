// Which characters, or bytes, a text has behind each other, and how often.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ksv_kit::judge {

struct PairCount {
  uint16_t before;  // indexes of what stands there
  uint16_t next;
  uint32_t count;
};

class PairCounts {
 public:
  // Of bytes; and of characters, of which those of rare scripts are counted as one.
  explicit PairCounts(std::span<const uint8_t> bytes);
  explicit PairCounts(std::span<const char16_t> units);

  // What the indexes stand for: bytes, or characters.
  const std::vector<char16_t>& kinds() const { return kinds_; }
  // All pairs but those of ASCII only; frequent ones come first. The text begins behind a blank.
  const std::vector<PairCount>& telling() const { return telling_; }
  // How many of the bytes or characters are above ASCII.
  size_t high() const { return high_; }

 private:
  template <typename Index>
  void count(size_t length, Index indexAt);

  std::vector<char16_t> kinds_;
  std::vector<PairCount> telling_;
  size_t high_ = 0;
};

}  // namespace ksv_kit::judge
