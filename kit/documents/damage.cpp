#include "kit/documents/damage.h"

#include "kit/documents/limits.h"

namespace ksv_kit::documents {

void DamageList::tell(ksv_damage_kind kind, uint64_t offset, const char* reason, uint32_t id) {
  if (places_.count({offset, kind}) != 0) return;
  if (told_.size() == limits::kMostDamages) {
    ++untold_;
    return;
  }
  told_.push_back({kind, offset, reason, id});
  places_.insert({offset, kind});
}

}  // namespace ksv_kit::documents
