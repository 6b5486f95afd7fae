#include "cconv/rules/code_table.h"

#include <new>

#include "cconv/limits.h"
#include "common/faults.h"

namespace ksv {
namespace {

uint32_t keepLowBytes(uint32_t value, uint16_t bytes) {
  return bytes >= 4 ? value : value & ((1u << (8 * bytes)) - 1);
}

void widenBounds(CodeTable& table, uint32_t key) {
  if (table.low == 0 && !table.hasEntries) {
    table.hasEntries = true;
    table.low = table.high = key;
  } else if (key >= table.low) {
    if (key > table.high) table.high = key;
  } else {
    table.low = key;
  }
}

}  // namespace

constinit std::atomic<uint32_t> tablesThatWait = 0;

void CodeTable::setState(State next) {
  const State before = state.exchange(next, std::memory_order_acq_rel);
  if (waitsForSystem(next) && !waitsForSystem(before)) ++tablesThatWait;
  if (waitsForSystem(before) && !waitsForSystem(next)) --tablesThatWait;
}

bool BlockCoverage::covers(uint32_t key) {
  if (key >= lastFirst_ && key < lastEnd_) return true;
  auto next = ranges_.upper_bound(key);
  if (next == ranges_.begin()) return false;
  auto range = std::prev(next);
  if (key >= range->second) return false;
  lastFirst_ = range->first;
  lastEnd_ = range->second;
  return true;
}

bool BlockCoverage::addBlock(uint32_t first, uint32_t size) {
  if (blockCount_ >= limits::kMostBlocks) return false;
  const uint32_t end = first + size;
  if (end > first) {
    uint32_t mergedEnd = end;
    auto next = ranges_.upper_bound(first);
    while (next != ranges_.end() && next->first <= mergedEnd) {
      if (next->second > mergedEnd) mergedEnd = next->second;
      next = ranges_.erase(next);
    }
    if (next != ranges_.begin() && std::prev(next)->second == first) {
      std::prev(next)->second = mergedEnd;
    } else {
      ranges_.emplace(first, mergedEnd);
    }
  }
  coversZero_ = coversZero_ || (first == 0 && end != 0);
  ++blockCount_;
  return true;
}

bool tableInsert(CodeTable& table, uint32_t key, uint32_t value, uint32_t blockSize) try {
  if (!table.coverage.covers(key) && !table.coverage.addBlock(key, blockSize)) return false;
  if (table.coverage.covers(key)) table.values.store(key, keepLowBytes(value, table.valueBytes));
  widenBounds(table, key);
  return true;
} catch (const std::bad_alloc&) {
  table.isCutShort = true;
  noteNoMemory(table.fileName);
  return false;
}

bool tableLookup(const CodeTable& table, uint32_t key, uint32_t& value) {
  const CodeTable::Answers answers = table.answers();
  if (answers == CodeTable::Answers::kItself) {
    value = key;
    return true;
  }
  if (answers == CodeTable::Answers::kNothing || key < table.low || key > table.high) return false;
  if (key == 0) {
    if (!table.coverage.coversZero()) return false;
    value = table.values.find(0);
    return true;
  }
  value = table.values.find(key);
  return value != 0;
}

}  // namespace ksv
