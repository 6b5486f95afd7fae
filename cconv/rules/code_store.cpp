#include "cconv/rules/code_store.h"

namespace ksv {

const CodeStore::Own::Directory CodeStore::Own::kEmptyDirectory = {};

CodeStore::Own::Own() : pages_(1) { planes_.fill(&kEmptyDirectory); }

void CodeStore::store(uint32_t key, uint32_t value) {
  if (own_ == nullptr) own_ = std::make_unique<Own>();
  own_->store(key, value);
}

void CodeStore::Own::store(uint32_t key, uint32_t value) {
  uint32_t* pageNumber = pageNumberFor(key);
  if (*pageNumber == 0) {
    pages_.emplace_back();
    *pageNumber = static_cast<uint32_t>(pages_.size() - 1);
    if (key >= kDirectKeys) ++hashedPages_;
  }
  pages_[*pageNumber][key & 0xF] = value;
}

uint32_t* CodeStore::Own::pageNumberFor(uint32_t key) {
  if (key < kDirectKeys) {
    const uint32_t plane = key >> 16;
    if (!ownedPlanes_[plane]) {
      ownedPlanes_[plane] = std::make_unique<Directory>();
      planes_[plane] = ownedPlanes_[plane].get();
    }
    return &(*ownedPlanes_[plane])[(key >> 4) & 0xFFF];
  }
  if ((hashedPages_ + 1) * 2 > hash_.size()) growHash();
  HashSlot& slot = hash_[hashSlotOf(key >> 4)];
  slot.keyPrefix = key >> 4;
  return &slot.page;
}

// The slot that holds keyPrefix, or the free slot where it belongs. The hash is
// never more than half full, so the walk ends.
size_t CodeStore::Own::hashSlotOf(uint32_t keyPrefix) const {
  const size_t mask = hash_.size() - 1;
  size_t slot = (keyPrefix * 0x9E3779B1u) >> 7 & mask;
  while (hash_[slot].page != 0 && hash_[slot].keyPrefix != keyPrefix) slot = (slot + 1) & mask;
  return slot;
}

void CodeStore::Own::growHash() {
  std::vector<HashSlot> old(hash_.empty() ? 64 : hash_.size() * 2);
  old.swap(hash_);
  for (const HashSlot& slot : old) {
    if (slot.page != 0) hash_[hashSlotOf(slot.keyPrefix)] = slot;
  }
}

}  // namespace ksv
