#include "cconv/bulk/direct_table.h"

#include <new>

#include "cconv/limits.h"
#include "cconv/rules/publication.h"

namespace ksv {
namespace {

// The pages of all tables of a process together.
constinit std::atomic<uint32_t> pagesInUse = 0;

}  // namespace

DirectTable::~DirectTable() {
  for (auto& page : pages_) deletePage(page.load(std::memory_order_relaxed));
}

DirectTable::Page* DirectTable::newPage() {
  if (pagesInUse.fetch_add(1, std::memory_order_relaxed) < limits::kMostPages) {
    if (Page* page = new (std::nothrow) Page()) return page;
    timesWithoutMemory_.fetch_add(1, std::memory_order_relaxed);
  }
  pagesInUse.fetch_sub(1, std::memory_order_relaxed);
  return nullptr;
}

void DirectTable::deletePage(const Page* page) {
  if (page == nullptr) return;
  delete page;
  pagesInUse.fetch_sub(1, std::memory_order_relaxed);
}

const DirectTable::Page* DirectTable::publish(uint32_t index, const Page* made) {
  const Page* published = nullptr;
  pauseForTests(PublicationStep::kMade);
  if (pages_[index].compare_exchange_strong(published, made, std::memory_order_acq_rel)) {
    return made;
  }
  deletePage(made);
  return published;
}

}  // namespace ksv
