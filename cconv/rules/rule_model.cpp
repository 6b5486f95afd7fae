#include "cconv/rules/rule_model.h"

#include <new>
#include <utility>

namespace ksv {
namespace {

CharsetId idOf(std::string name) { return nameToId(name.data()); }

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
}

void EncodedCodeCache::remember(uint32_t unicode, const EncodedCode& found) {
  if (unicode >= kCodes || found.member > 0x7FFF) return;
  std::atomic<Page*>& place = pages_[unicode >> 8];
  Page* page = place.load(std::memory_order_acquire);
  if (page == nullptr) {
    Page* fresh = new (std::nothrow) Page();
    if (fresh == nullptr) return;
    if (place.compare_exchange_strong(page, fresh, std::memory_order_acq_rel)) {
      page = fresh;
    } else {
      delete fresh;
    }
  }
  const uint64_t entry =
      kKnown | uint64_t{found.member} << 48 | uint64_t{found.sequenceLength} << 32 | found.code;
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
