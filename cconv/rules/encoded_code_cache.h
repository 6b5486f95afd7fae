// What a charset writes for each Unicode code, as far as it has been asked.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "cconv/limits.h"

namespace ksv {

// What a charset writes for a Unicode code.
struct EncodedCode {
  uint32_t code = 0;
  uint16_t sequenceLength = 0;  // non-zero: a destination table's sequence
  uint16_t group = 0;           // index of the group in the charset plus 1; 0: none has it
};

// Remembers, for one charset, what the walk along its groups found for a
// Unicode code. Filled code by code by whoever asks first; safe from any thread: pages are
// published zeroed, and an entry is a word that says all by itself (publication.h).
// At most 8.9 MB a charset, when all of Unicode is asked for.
class EncodedCodeCache {
 public:
  EncodedCodeCache() = default;
  ~EncodedCodeCache();
  EncodedCodeCache(const EncodedCodeCache&) = delete;
  EncodedCodeCache& operator=(const EncodedCodeCache&) = delete;

  bool find(uint32_t unicode, EncodedCode& found) const {
    const Page* page = pageOf(unicode);
    if (page == nullptr) return false;
    const uint64_t entry = (*page)[unicode & 0xFF].load(std::memory_order_relaxed);
    found.code = static_cast<uint32_t>(entry);
    found.sequenceLength = static_cast<uint16_t>(entry >> 32);
    found.group = static_cast<uint16_t>((entry >> 48) & 0x7FFF);
    return entry != 0;
  }

  // Does nothing when there is no memory, or for what does not fit an entry.
  void remember(uint32_t unicode, const EncodedCode& found);

 private:
  static constexpr uint32_t kCodes = limits::kRememberedCodes;
  static constexpr uint64_t kKnown = uint64_t{1} << 63;
  using Page = std::array<std::atomic<uint64_t>, 256>;
  // Every charset has a cache, and few are used: there is nothing of a plane until a page of it
  // is needed.
  using Plane = std::array<std::atomic<Page*>, 256>;

  const Page* pageOf(uint32_t unicode) const {
    if (unicode >= kCodes) return nullptr;
    const Plane* plane = planes_[unicode >> 16].load(std::memory_order_acquire);
    return plane == nullptr ? nullptr
                            : (*plane)[unicode >> 8 & 0xFF].load(std::memory_order_acquire);
  }

  std::array<std::atomic<Plane*>, (kCodes >> 16)> planes_ = {};
};

}  // namespace ksv
