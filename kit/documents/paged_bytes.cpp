#include "kit/documents/paged_bytes.h"

#include <algorithm>
#include <cstring>

#include "common/little_endian.h"

namespace ksv_kit::documents {

using limits::kPageSize;

// A page is not known by its number before its bytes have come.
const PagedBytes::Page& PagedBytes::page(uint64_t number) {
  std::unique_ptr<Page>& slot = pages_[number % limits::kPages];
  if (slot == nullptr) slot = std::make_unique<Page>();
  if (slot->number == number) return *slot;
  slot->number = UINT64_MAX;
  slot->length = store_->read(number * kPageSize, slot->bytes.data(), kPageSize);
  slot->number = number;
  return *slot;
}

std::optional<uint32_t> PagedBytes::dword(uint64_t offset) {
  const Page& here = page(offset / kPageSize);
  const size_t at = offset % kPageSize;
  if (at + 4 > here.length) return std::nullopt;
  return ksv::dwordAt(here.bytes.data() + at);
}

size_t PagedBytes::readTable(uint64_t offset, void* buffer, size_t count) {
  size_t done = 0;
  while (done < count) {
    const Page& here = page((offset + done) / kPageSize);
    const size_t at = (offset + done) % kPageSize;
    if (at >= here.length) break;
    const size_t part = std::min(count - done, here.length - at);
    std::memcpy(static_cast<uint8_t*>(buffer) + done, here.bytes.data() + at, part);
    done += part;
  }
  return done;
}

}  // namespace ksv_kit::documents
