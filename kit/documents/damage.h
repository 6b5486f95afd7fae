// What is wrong with a document, each thing once.
#pragma once

#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "ksv.h"

namespace ksv_kit::documents {

// No entry of the directory, and no index of an entry of a document.
inline constexpr uint32_t kNoEntry = UINT32_MAX;

struct Damage {
  ksv_damage_kind kind;
  uint64_t offset;     // in the file, of what is wrong
  const char* reason;  // in words, which begin with a verb: "has ..."
  uint32_t id;         // of the entry concerned, as the directory counts them; kNoEntry: none
};

class DamageList {
 public:
  // The same kind at the same place is the same damage.
  void tell(ksv_damage_kind kind, uint64_t offset, const char* reason, uint32_t id = kNoEntry);

  const std::vector<Damage>& told() const { return told_; }
  // Those beyond limits::kMostDamages.
  uint64_t untold() const { return untold_; }

 private:
  std::vector<Damage> told_;
  std::set<std::pair<uint64_t, ksv_damage_kind>> places_;
  uint64_t untold_ = 0;
};

}  // namespace ksv_kit::documents
