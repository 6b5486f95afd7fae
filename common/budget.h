// How many things of a kind a process may have at once.
#pragma once

#include <atomic>
#include <cstdint>

namespace ksv {

// Any thread takes and gives back. Counts what is there and orders nothing else.
class Budget {
 public:
  constexpr explicit Budget(uint32_t most) : most_(most) {}
  Budget(const Budget&) = delete;
  Budget& operator=(const Budget&) = delete;

  // False when there are as many as there may be: do without, then.
  bool take() {
    if (taken_.fetch_add(1, std::memory_order_relaxed) < most_) return true;
    giveBack();
    return false;
  }
  void giveBack() { taken_.fetch_sub(1, std::memory_order_relaxed); }

 private:
  const uint32_t most_;
  std::atomic<uint32_t> taken_ = 0;
};

}  // namespace ksv
