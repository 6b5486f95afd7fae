// The rule model: charsets and the groups that they are made of, as the rule files describe
// them, and the indexes that stand beside the model's lists so that no look-up walks them.
// What conversions learn of a charset stands in loaded_charset.h.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cconv/rules/code_table.h"
#include "cconv/rules/names.h"
#include "cconv/rules/rule_list.h"

namespace ksv {

enum class GroupKind : uint16_t { kBase = 1, kDifference = 2, kUser = 3 };

struct CodeRange {
  uint32_t first;
  uint32_t last;  // inclusive; a single code has first = last
};

struct RangeSet {
  RuleList<CodeRange> ranges;
  // Stays 0 whatever the ranges are: the running minimum starts at 0.
  uint32_t low = 0;
  // The largest last code of a range; single codes do not raise it.
  uint32_t high = 0;
};

// One character set that charsets are built from.
struct GroupDef {
  GroupDef(std::string groupName, GroupKind groupKind, uint16_t bytes);

  std::string name;  // as written in the rule file
  CharsetId id;
  GroupKind kind;
  uint16_t bytesPerCode;
  std::string lang;
  RangeSet defined;
  CodeTable toUcs;    // the set's code to the UCS code
  CodeTable fromUcs;  // the UCS code to the set's code
  std::string basedon;
  uint16_t defStart = 0;   // kind kUser: first code and count of codes,
  uint16_t defNumber = 0;  // which map onto U+E000 and up

  uint32_t type() const { return static_cast<uint32_t>(kind); }
  bool isUser() const { return kind == GroupKind::kUser; }

  // The share of a user-defined set in the Private Use Area, there and back; false
  // outside it.
  bool userCodeToUcs(uint32_t code, uint32_t& ucs) const {
    if (code < defStart || code - defStart >= defNumber) return false;
    ucs = kPrivateUseStart + (code - defStart);
    return true;
  }
  bool ucsToUserCode(uint32_t ucs, uint32_t& code) const {
    if (ucs < kPrivateUseStart || ucs - kPrivateUseStart >= defNumber) return false;
    code = defStart + (ucs - kPrivateUseStart);
    return true;
  }

 private:
  static constexpr uint32_t kPrivateUseStart = 0xE000;
};

// One charset, as a rule file defines it.
struct CharsetDef {
  std::string name;  // lower-cased
  CharsetId id = 0;
  std::string construle;       // the encoder's name in the codec table
  std::string destrule;        // the decoder's
  RuleList<GroupDef*> groups;  // tried in this order; owned by RuleLists
  // One list for each base or difference group, in their order.
  RuleList<std::unique_ptr<TableList>> destTables;

  // Call once when all groups are there.
  void buildIndexes();

  // The first group with that id, null when there is none.
  GroupDef* findGroup(CharsetId group) const {
    for (uint32_t slot = group & idSlotMask_;; slot = (slot + 1) & idSlotMask_) {
      GroupDef* const found = idSlots_[slot];
      if (found == nullptr || found->id == group) return found;
    }
  }

  const TableList* destTablesOf(size_t group) const {
    return group < destTables.count() ? destTables[group].get() : nullptr;
  }

  // The first group that is not user-defined, null when there is none.
  const GroupDef* firstPlainGroup() const { return firstPlainGroup_; }
  bool hasUserGroups() const { return hasUserGroups_; }

 private:
  std::vector<GroupDef*> idSlots_;  // open addressing by id, null: free
  uint32_t idSlotMask_ = 0;
  const GroupDef* firstPlainGroup_ = nullptr;
  bool hasUserGroups_ = false;
};

}  // namespace ksv
