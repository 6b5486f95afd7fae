#include "cconv/bulk/short_table.h"

#include "cconv/limits.h"
#include "common/heap.h"

namespace ksv {
namespace {

// The short tables of a process together.
constinit std::atomic<uint32_t> shortTablesInUse = 0;

}  // namespace

ShortTable::ShortTable() {
  if (shortTablesInUse.fetch_add(1, std::memory_order_relaxed) < limits::kMostShortTables) {
    // Zeroed memory that the system hands out page by page as it is used.
    entries_ = static_cast<Slot*>(heap::allocateZeroed(kSize, sizeof(Slot)));
    hadNoMemory_ = entries_ == nullptr;
  }
  if (entries_ == nullptr) shortTablesInUse.fetch_sub(1, std::memory_order_relaxed);
}

ShortTable::~ShortTable() {
  if (entries_ == nullptr) return;
  heap::release(entries_);
  shortTablesInUse.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace ksv
