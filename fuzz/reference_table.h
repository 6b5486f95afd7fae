// A code table as its description has it, slow and obvious: blocks in a list, each
// found by walking them from the first.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "cconv/rules/table_loader.h"

namespace ksv_fuzz {

using Pair = std::pair<uint32_t, uint32_t>;  // first and second column

class ReferenceTable {
 public:
  ReferenceTable(const std::vector<Pair>& pairs, bool firstIsKey, uint16_t valueBytes,
                 uint32_t blockSize);

  // Whether filling it once makes it a loaded table.
  bool isFilled() const;
  // The mapping in a loaded table.
  bool find(uint32_t key, uint32_t& value) const;
  // Keys worth a look-up: those inserted, their neighbours, the ends of blocks, 0.
  const std::set<uint32_t>& keys() const { return keys_; }

 private:
  struct Block {
    uint32_t first;
    uint32_t end;
    std::map<uint32_t, uint32_t> values;
  };

  void insert(uint32_t key, uint32_t value, uint16_t valueBytes, uint32_t blockSize);
  const Block* findBlock(uint32_t key) const;

  std::vector<Block> blocks_;
  std::set<uint32_t> keys_ = {0, 1};
  uint32_t low_ = 0;
  uint32_t high_ = 0;
  bool hasEntries_ = false;
};

// Fills the table twice, as two users of it do, and compares what it says: as long
// as it is not loaded, it maps every code to itself.
void requireSameTable(ksv::CodeTable& table, const ReferenceTable& reference);

}  // namespace ksv_fuzz
