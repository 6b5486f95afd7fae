#include "cconv/bulk/short_table.h"

#include "cconv/limits.h"
#include "common/budget.h"
#include "common/heap.h"

namespace ksv {
namespace {

// The short tables of a process together.
constinit Budget shortTableBudget(limits::kMostShortTables);

}  // namespace

ShortTable::ShortTable() {
  if (!shortTableBudget.take()) return;
  // Zeroed memory that the system hands out page by page as it is used.
  entries_ = static_cast<Slot*>(heap::allocateZeroed(kSize, sizeof(Slot)));
  hadNoMemory_ = entries_ == nullptr;
  if (hadNoMemory_) shortTableBudget.giveBack();
}

ShortTable::~ShortTable() {
  if (entries_ == nullptr) return;
  heap::release(entries_);
  shortTableBudget.giveBack();
}

}  // namespace ksv
