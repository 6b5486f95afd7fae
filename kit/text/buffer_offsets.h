// Where the bytes of a buffer stand in the stream that they were read from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ksv_kit {

class BufferOffsets {
 public:
  uint64_t offset(size_t position) const {
    uint64_t result = base_ + position;
    for (const Gap& gap : gaps_)
      if (gap.at <= position) result += gap.length;
    return result;
  }

  // So many bytes have been taken out of the buffer in front of the position.
  void noteGap(size_t at, size_t length) {
    if (!gaps_.empty() && gaps_.back().at == at)
      gaps_.back().length += length;
    else
      gaps_.push_back({at, length});
  }

  // So many bytes have been taken off the beginning of the buffer.
  void advance(size_t used) {
    base_ = offset(used);
    std::erase_if(gaps_, [used](const Gap& gap) { return gap.at <= used; });
    for (Gap& gap : gaps_) gap.at -= used;
  }

  // The first byte of the buffer stands there.
  void startAt(uint64_t offset) {
    base_ = offset;
    gaps_.clear();
  }

 private:
  struct Gap {
    size_t at;
    size_t length;
  };

  uint64_t base_ = 0;
  std::vector<Gap> gaps_;
};

}  // namespace ksv_kit
