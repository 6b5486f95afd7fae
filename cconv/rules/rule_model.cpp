#include "cconv/rules/rule_model.h"

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
}

}  // namespace ksv
