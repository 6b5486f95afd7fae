// The bytes of a document, of whose tables a few pages are kept in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "kit/documents/byte_store.h"
#include "kit/documents/limits.h"

namespace ksv_kit::documents {

class PagedBytes {
 public:
  explicit PagedBytes(std::unique_ptr<ByteStore> store) : store_(std::move(store)) {}

  uint64_t size() const { return store_->size(); }

  // What is read once: past the pages, unless it is a part of one. How many bytes came: fewer only
  // behind the end.
  size_t read(uint64_t offset, void* buffer, size_t count) {
    if (count < limits::kPageSize) return readTable(offset, buffer, count);
    return store_->read(offset, buffer, count);
  }

  // What tables hold, a value at an offset that is a multiple of 4; none behind the end.
  std::optional<uint32_t> dword(uint64_t offset);
  // The same of more bytes.
  size_t readTable(uint64_t offset, void* buffer, size_t count);

 private:
  struct Page {
    uint64_t number = UINT64_MAX;
    size_t length = 0;
    std::array<uint8_t, limits::kPageSize> bytes;
  };

  const Page& page(uint64_t number);

  std::unique_ptr<ByteStore> store_;
  // Page n stands in slot n modulo the slots.
  std::array<std::unique_ptr<Page>, limits::kPages> pages_;
};

}  // namespace ksv_kit::documents
