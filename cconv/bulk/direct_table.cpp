#include "cconv/bulk/direct_table.h"

#include <memory>
#include <new>

#include "cconv/limits.h"
#include "cconv/rules/publication.h"
#include "common/budget.h"

namespace ksv {
namespace {

// The pages of all tables of a process together.
constinit Budget pageBudget(limits::kMostPages);

}  // namespace

DirectTable::~DirectTable() {
  for (auto& page : pages_) deletePage(page.load(std::memory_order_relaxed));
}

DirectTable::Page* DirectTable::newPage() {
  if (!pageBudget.take()) return nullptr;
  if (Page* page = new (std::nothrow) Page()) return page;
  timesWithoutMemory_.fetch_add(1, std::memory_order_relaxed);
  pageBudget.giveBack();
  return nullptr;
}

void DirectTable::deletePage(const Page* page) {
  if (page == nullptr) return;
  delete page;
  pageBudget.giveBack();
}

const DirectTable::Page* DirectTable::publish(uint32_t index, const Page* made) {
  struct Drop {
    void operator()(const Page* page) const { deletePage(page); }
  };
  return ksv::publish(pages_[index], std::unique_ptr<const Page, Drop>(made));
}

}  // namespace ksv
