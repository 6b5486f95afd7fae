#include "kit/documents/byte_store.h"

#include <algorithm>
#include <cstring>

#include "common/platform.h"

namespace ksv_kit::documents {
namespace {

class FileBytes : public ByteStore {
 public:
  template <typename Opened>
  explicit FileBytes(Opened opened) : file_(opened) {
    refuseError();
  }

  uint64_t size() const override { return file_.size(); }
  size_t read(uint64_t offset, void* buffer, size_t count) override {
    const size_t came = file_.read(offset, buffer, count);
    refuseError();
    return came;
  }

 private:
  void refuseError() const {
    if (file_.error() != 0) throw UnreadableDocument(ksv::platform::errorText(file_.error()));
  }

  ksv::platform::PlacedFile file_;
};

class MemoryBytes : public ByteStore {
 public:
  MemoryBytes(const void* bytes, size_t size)
      : bytes_(static_cast<const uint8_t*>(bytes)), size_(size) {}

  uint64_t size() const override { return size_; }
  size_t read(uint64_t offset, void* buffer, size_t count) override {
    if (offset >= size_) return 0;
    const size_t came = std::min(count, size_ - static_cast<size_t>(offset));
    if (came != 0) std::memcpy(buffer, bytes_ + offset, came);
    return came;
  }

 private:
  const uint8_t* const bytes_;
  const size_t size_;
};

}  // namespace

std::unique_ptr<ByteStore> bytesOfFile(const char* path) {
  return std::make_unique<FileBytes>(path);
}

std::unique_ptr<ByteStore> bytesOfDescriptor(intptr_t descriptor) {
  return std::make_unique<FileBytes>(descriptor);
}

std::unique_ptr<ByteStore> bytesAt(const void* bytes, size_t size) {
  return std::make_unique<MemoryBytes>(bytes, size);
}

}  // namespace ksv_kit::documents
