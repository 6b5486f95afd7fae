#include "fuzz/reference_table.h"

#include "fuzz/support.h"

namespace ksv_fuzz {

ReferenceTable::ReferenceTable(const std::vector<Pair>& pairs, bool firstIsKey, uint16_t valueBytes,
                               uint32_t blockSize) {
  for (const auto& [first, second] : pairs) {
    insert(firstIsKey ? first : second, firstIsKey ? second : first, valueBytes, blockSize);
  }
}

void ReferenceTable::insert(uint32_t key, uint32_t value, uint16_t valueBytes, uint32_t blockSize) {
  if (valueBytes < 4) value %= 1u << (8 * valueBytes);
  Block* block = const_cast<Block*>(findBlock(key));
  if (block != nullptr) {
    block->values[key] = value;
  } else {
    blocks_.push_back({key, key + blockSize, {{key, value}}});
  }
  if (low_ == 0 && !hasEntries_) {
    hasEntries_ = true;
    low_ = high_ = key;
  } else if (key >= low_) {
    high_ = key > high_ ? key : high_;
  } else {
    low_ = key;
  }
  for (const uint32_t base : {key, key + blockSize, low_, high_}) {
    keys_.insert({base - 1, base, base + 1});
  }
}

const ReferenceTable::Block* ReferenceTable::findBlock(uint32_t key) const {
  for (const Block& block : blocks_) {
    if (block.first <= key && key < block.end) return &block;
  }
  return nullptr;
}

bool ReferenceTable::isFilled() const {
  return !(low_ == high_ && (low_ == 0 || low_ > 0xFFFFFFF));
}

bool ReferenceTable::find(uint32_t key, uint32_t& value) const {
  if (key < low_ || key > high_) return false;
  const Block* block = findBlock(key);
  if (block == nullptr) return false;
  const auto found = block->values.find(key);
  value = found == block->values.end() ? 0 : found->second;
  return key == 0 || value != 0;
}

void requireSameTable(ksv::CodeTable& table, const ReferenceTable& reference) {
  for (const bool secondAttempt : {false, true}) {
    const bool loaded = reference.isFilled() || secondAttempt;
    require(ksv::ensureTableLoaded(&table) == loaded, "the table is loaded when it should be");
    for (const uint32_t key : reference.keys()) {
      uint32_t wanted = key;
      const bool has = !loaded || reference.find(key, wanted);
      uint32_t value = 0;
      require(ksv::tableLookup(table, key, value) == has, "the table has the same keys");
      require(!has || value == wanted, "the table has the same values");
    }
  }
}

}  // namespace ksv_fuzz
