#include "kit/documents/chain.h"

#include <algorithm>

#include "common/compound_format.h"

namespace ksv_kit::documents {

std::optional<Chain::Run> Chain::from(uint64_t index, uint64_t wanted) {
  reach(wanted > UINT64_MAX - index ? UINT64_MAX : index + wanted);
  if (index >= known_) return std::nullopt;
  const auto behind = std::upper_bound(runs_.begin(), runs_.end(), index,
                                       [](uint64_t at, const Run& run) { return at < run.index; });
  const Run& run = *(behind - 1);
  const auto skipped = static_cast<uint32_t>(index - run.index);
  const uint64_t count = std::min<uint64_t>(run.count - skipped, wanted);
  return Run{index, run.sector + skipped, static_cast<uint32_t>(count)};
}

uint64_t Chain::length() {
  reach(UINT64_MAX);
  return known_;
}

void Chain::reach(uint64_t count) {
  while (!isEnded_ && known_ < count) step();
}

// A sector that the table does not reach is none of the chain: what stands there nobody knows.
void Chain::step() {
  const uint32_t sector = next_;
  if (sector == ksv::kEndOfChain) {
    isEnded_ = true;
    return;
  }
  if (sector > kHighestSector)
    return breakOff(KSV_DAMAGE_CHAIN, "has a chain that leads to no sector");
  const std::optional<uint32_t> behind = links_.next(sector);
  if (!behind) return breakOff(KSV_DAMAGE_CHAIN, "has a chain that leads out of its table");
  if (!seen_.add(sector))
    return breakOff(KSV_DAMAGE_CYCLE, "has a chain that comes back to itself");
  append(sector);
  next_ = *behind;
  namedAt_ = links_.placeOf(sector);
}

void Chain::append(uint32_t sector) {
  const bool goesOn = !runs_.empty() && runs_.back().count != UINT32_MAX &&
                      runs_.back().sector + runs_.back().count == sector;
  if (goesOn)
    ++runs_.back().count;
  else
    runs_.push_back({known_, sector, 1});
  ++known_;
}

void Chain::breakOff(ksv_damage_kind kind, const char* reason) {
  damages_.tell(kind, namedAt_, reason, id_);
  isEnded_ = isBroken_ = true;
}

}  // namespace ksv_kit::documents
