#include "cconv/rules/rule_model.h"

#include <utility>

namespace ksv {
namespace {

CharsetId idOf(std::string name) { return nameToId(name.data()); }

}  // namespace

GroupDef::GroupDef(std::string groupName, GroupKind groupKind, uint16_t bytes)
    : name(std::move(groupName)),
      id(idOf(name)),
      kind(groupKind),
      bytesPerCode(bytes),
      toUcs(CodeTable::kFirstColumn, 4),
      fromUcs(CodeTable::kSecondColumn, bytes) {}

void CharsetDef::buildIndexes() {
  uint32_t slots = 4;
  while (slots < 2u * groups.count()) slots *= 2;
  idSlotMask_ = slots - 1;
  idSlots_.assign(slots, nullptr);
  for (GroupDef* group : groups) {
    if (group->isUser()) {
      hasUserGroups_ = true;
    } else if (firstPlainGroup_ == nullptr) {
      firstPlainGroup_ = group;
    }
    if (findGroup(group->id) != nullptr) continue;
    uint32_t slot = group->id & idSlotMask_;
    while (idSlots_[slot] != nullptr) slot = (slot + 1) & idSlotMask_;
    idSlots_[slot] = group;
  }
}

}  // namespace ksv
