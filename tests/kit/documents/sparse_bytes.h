// A file of which only a few pieces are there.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>

#include "kit/documents/byte_store.h"

namespace ksv_kit::documents {

// Pieces of a file that is zero elsewhere, and how much of it was read.
class SparseBytes : public ByteStore {
 public:
  SparseBytes(uint64_t size, uint64_t& bytesRead) : size_(size), bytesRead_(bytesRead) {}

  void cut(uint64_t size) { size_ = size; }
  void put(uint64_t offset, std::string bytes) { pieces_[offset] = std::move(bytes); }

  uint64_t size() const override { return size_; }
  size_t read(uint64_t offset, void* buffer, size_t count) override {
    if (offset >= size_) return 0;
    count = static_cast<size_t>(std::min<uint64_t>(count, size_ - offset));
    bytesRead_ += count;
    std::memset(buffer, 0, count);
    for (const auto& [begin, piece] : pieces_) {
      const uint64_t from = std::max(begin, offset);
      const uint64_t to = std::min(begin + piece.size(), offset + count);
      if (from < to)
        std::memcpy(static_cast<char*>(buffer) + (from - offset), piece.data() + (from - begin),
                    static_cast<size_t>(to - from));
    }
    return count;
  }

 private:
  uint64_t size_;
  uint64_t& bytesRead_;
  std::map<uint64_t, std::string> pieces_;
};

}  // namespace ksv_kit::documents
