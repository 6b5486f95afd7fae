// The buffer of a file that is written front to back.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>

namespace ksv::platform {

// Collects bytes and hands them on in large pieces, by a function that takes a
// pointer and a count and returns false when it could not store them all. After
// that nothing is taken any more.
class WriteBuffer {
 public:
  template <class Store>
  bool write(const void* bytes, size_t count, Store store) {
    if (failed_) return false;
    if (count > buffer_.size() - used_ && !flush(store)) return false;
    if (count > buffer_.size()) return pass(static_cast<const char*>(bytes), count, store);
    if (count > 0) std::memcpy(buffer_.data() + used_, bytes, count);
    used_ += count;
    return true;
  }

  template <class Store>
  bool flush(Store store) {
    const size_t count = used_;
    used_ = 0;
    return pass(buffer_.data(), count, store);
  }

 private:
  template <class Store>
  bool pass(const char* bytes, size_t count, Store store) {
    if (!failed_ && !store(bytes, count)) failed_ = true;
    return !failed_;
  }

  static constexpr size_t kSize = 64 * 1024;

  bool failed_ = false;
  size_t used_ = 0;
  std::array<char, kSize> buffer_;
};

}  // namespace ksv::platform
