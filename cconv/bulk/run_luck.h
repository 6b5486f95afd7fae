// Whether it pays to set runs by vectors up.
#pragma once

#include <atomic>
#include <cstdint>

namespace ksv {

// Where runs mostly end soon, whichever they are, those by vectors cost more than they save, and
// are tried now and then only. Answers do not depend on it, so threads need no order.
class RunLuck {
 public:
  bool isWorthTrying() {
    const int32_t luck = luck_.load(std::memory_order_relaxed);
    if (luck >= 0) return true;
    luck_.store(luck + 1, std::memory_order_relaxed);
    return false;
  }
  // How far the runs from one place have come together.
  void note(uint32_t characters) {
    const int32_t luck = luck_.load(std::memory_order_relaxed);
    const int32_t next = characters >= kFar ? kMost : luck > 0 ? luck - 1 : -kPause;
    if (luck >= 0 ? next != luck : next == kMost) luck_.store(next, std::memory_order_relaxed);
  }

 private:
  static constexpr uint32_t kFar = 32;
  static constexpr int32_t kMost = 4;
  static constexpr int32_t kPause = 64;

  std::atomic<int32_t> luck_ = kMost;
};

}  // namespace ksv
