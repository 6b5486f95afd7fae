#include "cconv/rules/encoded_code_cache.h"

#include <memory>
#include <new>
#include <utility>

#include "cconv/rules/publication.h"

namespace ksv {
namespace {

// What is at the place, made and zeroed by whoever comes first. Null without memory.
template <typename Item>
Item* madeAt(std::atomic<Item*>& place) {
  if (Item* present = place.load(std::memory_order_acquire)) return present;
  auto made = std::unique_ptr<Item>(new (std::nothrow) Item());
  return made == nullptr ? nullptr : publish(place, std::move(made));
}

}  // namespace

EncodedCodeCache::~EncodedCodeCache() {
  for (auto& page : pages_) delete page.load(std::memory_order_relaxed);
  const std::unique_ptr<PagesBeyond> beyond(pagesBeyond_.load(std::memory_order_relaxed));
  if (beyond == nullptr) return;
  for (auto& page : *beyond) delete page.load(std::memory_order_relaxed);
}

void EncodedCodeCache::remember(uint32_t unicode, const EncodedCode& found) {
  if (unicode >= kCodes || found.group > 0x7FFF) return;
  Page* page = nullptr;
  if (unicode < kFirstBeyond) {
    page = madeAt(pages_[unicode >> 8]);
  } else if (PagesBeyond* beyond = madeAt(pagesBeyond_)) {
    page = madeAt((*beyond)[(unicode - kFirstBeyond) >> 8]);
  }
  if (page == nullptr) return;
  const uint64_t entry =
      kKnown | uint64_t{found.group} << 48 | uint64_t{found.sequenceLength} << 32 | found.code;
  pauseForTests(PublicationStep::kWord);
  (*page)[unicode & 0xFF].store(entry, std::memory_order_relaxed);
}

}  // namespace ksv
