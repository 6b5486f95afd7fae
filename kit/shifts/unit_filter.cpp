#include "kit/shifts/unit_filter.h"

#include <algorithm>

namespace ksv_kit {

size_t UnitFilter::filter(const uint8_t* bytes, size_t size, bool isEnd, std::vector<uint8_t>& out,
                          size_t& bad) {
  out_ = &out;
  outBegin_ = out.size();
  bad = 0;
  refusedBefore_ = 0;
  const size_t used = takeUnits({bytes, size}, isEnd, bad);
  if (isEnd && bad == 0) close();
  madeBefore_ = made();
  return used;
}

size_t UnitFilter::takeUnits(Bytes bytes, bool isEnd, size_t& bad) {
  size_t at = 0;
  while (keptSize_ > 0 || at < bytes.size()) {
    const Bytes rest = bytes.subspan(at);
    const Unit unit = keptSize_ > 0 ? takeKept(rest) : take(rest);
    if (unit.kind == Unit::Kind::kRefused) return refuse(unit.length, at, bad);
    if (unit.kind == Unit::Kind::kCut) {
      if (isEnd) return refuse(keptSize_ + rest.size(), at, bad);
      std::copy(rest.begin(), rest.end(), kept_.begin() + static_cast<ptrdiff_t>(keptSize_));
      keptSize_ += rest.size();
      return bytes.size();
    }
    const size_t fromKept = std::min(unit.length, keptSize_);
    dropKept(fromKept);
    at += unit.length - fromKept;
    origin_ += unit.length;
  }
  return at;
}

UnitFilter::Unit UnitFilter::takeKept(Bytes bytes) {
  std::array<uint8_t, kLongestUnit> window = kept_;
  const size_t more = std::min(bytes.size(), kLongestUnit - keptSize_);
  std::copy_n(bytes.begin(), more, window.begin() + static_cast<ptrdiff_t>(keptSize_));
  return take({window.data(), keptSize_ + more});
}

void UnitFilter::dropKept(size_t count) {
  std::copy(kept_.begin() + static_cast<ptrdiff_t>(count), kept_.end(), kept_.begin());
  keptSize_ -= count;
}

// Refused bytes that are kept are left out here, the others by the caller.
size_t UnitFilter::refuse(size_t length, size_t at, size_t& bad) {
  refusedBefore_ = keptSize_;
  dropKept(std::min(length, keptSize_));
  bad = length;
  origin_ += length;
  return at;
}

void UnitFilter::write(Bytes made, size_t place) {
  links_.add(this->made(), origin_ + place);
  out_->insert(out_->end(), made.begin(), made.end());
}

void UnitFilter::insert(Bytes made) {
  links_.addStanding(this->made(), origin_);
  out_->insert(out_->end(), made.begin(), made.end());
}

void UnitFilter::insert(std::string_view made) {
  insert({reinterpret_cast<const uint8_t*>(made.data()), made.size()});
}

}  // namespace ksv_kit
