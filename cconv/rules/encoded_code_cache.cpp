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
  for (auto& place : planes_) {
    const std::unique_ptr<Plane> plane(place.load(std::memory_order_relaxed));
    if (plane == nullptr) continue;
    for (auto& page : *plane) delete page.load(std::memory_order_relaxed);
  }
}

void EncodedCodeCache::remember(uint32_t unicode, const EncodedCode& found) {
  if (unicode >= kCodes || found.group > 0x7FFF) return;
  Plane* const plane = madeAt(planes_[unicode >> 16]);
  Page* const page = plane == nullptr ? nullptr : madeAt((*plane)[unicode >> 8 & 0xFF]);
  if (page == nullptr) return;
  const uint64_t entry =
      kKnown | uint64_t{found.group} << 48 | uint64_t{found.sequenceLength} << 32 | found.code;
  pauseForTests(PublicationStep::kWord);
  (*page)[unicode & 0xFF].store(entry, std::memory_order_relaxed);
}

}  // namespace ksv
