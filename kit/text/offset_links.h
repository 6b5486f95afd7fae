// Where the bytes of a text come from that is made from another one piece by piece.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>

namespace ksv_kit {

class OffsetLinks {
 public:
  // From these two offsets on both texts go along together, up to the next link.
  void add(uint64_t made, uint64_t origin) {
    const bool goesOn = !links_.empty() && links_.back().movesOn &&
                        origin - links_.back().origin == made - links_.back().made;
    if (!goesOn) links_.push_back({made, origin, true});
  }

  // All that is made from here on stems from this one place, up to the next link.
  void addStanding(uint64_t made, uint64_t origin) { links_.push_back({made, origin, false}); }

  uint64_t originOf(uint64_t made) const {
    const auto behind =
        std::upper_bound(links_.begin(), links_.end(), made,
                         [](uint64_t wanted, const Link& link) { return wanted < link.made; });
    if (behind == links_.begin()) return made;
    const Link& link = *(behind - 1);
    return link.origin + (link.movesOn ? made - link.made : 0);
  }

  // Those behind hold back some of what was made, each for a reason of its own: so much stays known
  // in any case.
  static constexpr uint64_t kHeldBehind = 8192;

  // What was made in front of the offset is hardly asked about any more.
  void forgetBefore(uint64_t made) {
    while (links_.size() > 1 && links_[1].made + kHeldBehind <= made) links_.pop_front();
  }

 private:
  struct Link {
    uint64_t made;
    uint64_t origin;
    bool movesOn;
  };

  std::deque<Link> links_;
};

}  // namespace ksv_kit
