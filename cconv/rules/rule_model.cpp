#include "cconv/rules/rule_model.h"

#include <new>
#include <utility>

#include "cconv/rules/publication.h"

namespace ksv {
namespace {

CharsetId idOf(std::string name) { return nameToId(name.data()); }

// What is at the place, made and zeroed by whoever comes first. Null without memory.
template <typename Item>
Item* madeAt(std::atomic<Item*>& place) {
  Item* present = place.load(std::memory_order_acquire);
  if (present != nullptr) return present;
  auto fresh = std::unique_ptr<Item>(new (std::nothrow) Item());
  if (fresh == nullptr) return nullptr;
  pauseForTests(PublicationStep::kMade);
  if (place.compare_exchange_strong(present, fresh.get(), std::memory_order_acq_rel))
    return fresh.release();
  return present;
}

}  // namespace

SubsetDef::SubsetDef(std::string subsetName, SubsetKind subsetKind, uint16_t bytes)
    : name(std::move(subsetName)),
      id(idOf(name)),
      kind(subsetKind),
      bytesPerCode(bytes),
      toUcs(CodeTable::kFirstColumn, 4),
      fromUcs(CodeTable::kSecondColumn, bytes) {}

EncodedCodeCache::~EncodedCodeCache() {
  for (auto& page : pages_) delete page.load(std::memory_order_relaxed);
  const std::unique_ptr<PagesBeyond> beyond(pagesBeyond_.load(std::memory_order_relaxed));
  if (beyond == nullptr) return;
  for (auto& page : *beyond) delete page.load(std::memory_order_relaxed);
}

void EncodedCodeCache::remember(uint32_t unicode, const EncodedCode& found) {
  if (unicode >= kCodes || found.member > 0x7FFF) return;
  Page* page = nullptr;
  if (unicode < kFirstBeyond) {
    page = madeAt(pages_[unicode >> 8]);
  } else if (PagesBeyond* beyond = madeAt(pagesBeyond_)) {
    page = madeAt((*beyond)[(unicode - kFirstBeyond) >> 8]);
  }
  if (page == nullptr) return;
  const uint64_t entry =
      kKnown | uint64_t{found.member} << 48 | uint64_t{found.sequenceLength} << 32 | found.code;
  pauseForTests(PublicationStep::kWord);
  (*page)[unicode & 0xFF].store(entry, std::memory_order_relaxed);
}

void CharsetDef::buildIndexes() {
  uint32_t slots = 4;
  while (slots < 2u * members.count()) slots *= 2;
  idSlotMask_ = slots - 1;
  idSlots_.assign(slots, -1);
  for (int32_t member = 0; member < members.count(); ++member) {
    const SubsetDef* subset = members[static_cast<size_t>(member)];
    if (subset->isUser()) {
      hasUserMembers_ = true;
    } else if (firstPlainMember_ == nullptr) {
      firstPlainMember_ = subset;
    }
    if (memberWithId(subset->id) >= 0) continue;
    uint32_t slot = subset->id & idSlotMask_;
    while (idSlots_[slot] >= 0) slot = (slot + 1) & idSlotMask_;
    idSlots_[slot] = member;
  }
  encodedCodes = std::make_unique<EncodedCodeCache>();
}

}  // namespace ksv
