// Which sectors have been seen: a bit each, in pages, so that a set costs what was put into it
// and not what its highest number claims.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace ksv_kit::documents {

class SectorSet {
 public:
  // False: it was there already.
  bool add(uint32_t sector) {
    if (lastPage_ == nullptr || sector / kPageSectors != lastNumber_) {
      lastNumber_ = sector / kPageSectors;
      lastPage_ = &pages_[lastNumber_];
    }
    const size_t bit = sector % kPageSectors;
    if (lastPage_->test(bit)) return false;
    lastPage_->set(bit);
    return true;
  }

  bool has(uint32_t sector) const {
    const auto page = pages_.find(sector / kPageSectors);
    return page != pages_.end() && page->second.test(sector % kPageSectors);
  }

 private:
  static constexpr uint32_t kPageSectors = 1024;
  using Page = std::bitset<kPageSectors>;

  std::unordered_map<uint32_t, Page> pages_;  // whose elements stay where they are
  Page* lastPage_ = nullptr;
  uint32_t lastNumber_ = 0;
};

}  // namespace ksv_kit::documents
