#include "kit/judge/pair_counts.h"

#include <algorithm>
#include <memory>

namespace ksv_kit::judge {
namespace {

// Alphabets and the general punctuation; all above is one kind.
constexpr size_t kAlphabets = 0x2200;
constexpr size_t kMostKinds = 512;
constexpr uint16_t kNone = 0xFFFF;

}  // namespace

PairCounts::PairCounts(std::span<const uint8_t> bytes) {
  std::array<uint16_t, 256> indexes;
  indexes.fill(kNone);
  kinds_.push_back(u' ');
  indexes[' '] = 0;
  for (const uint8_t byte : bytes) {
    high_ += byte >> 7;
    if (indexes[byte] != kNone) continue;
    indexes[byte] = static_cast<uint16_t>(kinds_.size());
    kinds_.push_back(byte);
  }
  count(bytes.size(), [&](size_t i) { return indexes[bytes[i]]; });
}

PairCounts::PairCounts(std::span<const char16_t> units) {
  const auto indexes = std::make_unique<std::array<uint16_t, kAlphabets + 1>>();
  indexes->fill(kNone);
  kinds_.push_back(u' ');
  (*indexes)[u' '] = 0;
  const auto slotOf = [](char16_t unit) { return unit < kAlphabets ? unit : kAlphabets; };
  for (const char16_t unit : units) {
    high_ += unit >= 0x80 ? 1 : 0;
    uint16_t& index = (*indexes)[slotOf(unit)];
    if (index != kNone) continue;
    if (kinds_.size() == kMostKinds) {
      index = static_cast<uint16_t>(kMostKinds - 1);
      continue;
    }
    index = static_cast<uint16_t>(kinds_.size());
    kinds_.push_back(unit);
  }
  count(units.size(), [&](size_t i) { return (*indexes)[slotOf(units[i])]; });
}

template <typename Index>
void PairCounts::count(size_t length, Index indexAt) {
  const size_t size = kinds_.size();
  std::vector<uint32_t> places(size * size);  // of each pair in its list, from 1 on
  uint16_t before = 0;
  for (size_t i = 0; i < length; ++i) {
    const uint16_t next = indexAt(i);
    const bool isPlain = kinds_[before] < 0x80 && kinds_[next] < 0x80;
    if (isPlain) {
      before = next;
      continue;
    }
    uint32_t& place = places[before * size + next];
    if (place == 0) {
      telling_.push_back({before, next, 0});
      place = static_cast<uint32_t>(telling_.size());
    }
    ++telling_[place - 1].count;
    before = next;
  }
  std::stable_partition(telling_.begin(), telling_.end(),
                        [](const PairCount& pair) { return pair.count > 3; });
}

}  // namespace ksv_kit::judge
