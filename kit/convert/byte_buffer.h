// Bytes that are put together, and room for more that is not cleared first.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace ksv_kit {

class ByteBuffer {
 public:
  const uint8_t* data() const { return bytes_.get(); }
  uint8_t* data() { return bytes_.get(); }
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  void clear() { size_ = 0; }

  // So many bytes behind those that are there, to be written and then added.
  uint8_t* room(size_t count) {
    if (capacity_ - size_ < count) grow(count);
    return bytes_.get() + size_;
  }
  size_t roomLeft() const { return capacity_ - size_; }
  void add(size_t count) { size_ += count; }

  void shrink(size_t size) { size_ = size; }

  void append(const uint8_t* bytes, size_t count) {
    if (count == 0) return;
    std::memcpy(room(count), bytes, count);
    add(count);
  }
  void append(std::string_view text) {
    append(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }

  void erase(size_t at, size_t count) {
    if (count == 0) return;
    std::memmove(bytes_.get() + at, bytes_.get() + at + count, size_ - at - count);
    size_ -= count;
  }

 private:
  void grow(size_t count) {
    constexpr size_t kSmallest = 256;
    const size_t needed = size_ + count;
    const size_t capacity = std::max({needed, 2 * capacity_, kSmallest});
    auto larger = std::make_unique_for_overwrite<uint8_t[]>(capacity);
    if (size_ != 0) std::memcpy(larger.get(), bytes_.get(), size_);
    bytes_ = std::move(larger);
    capacity_ = capacity;
  }

  std::unique_ptr<uint8_t[]> bytes_;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace ksv_kit
