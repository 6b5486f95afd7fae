// The rule base of the reference model: charsets, groups (subsets) and code tables.
// Everything is searched linearly, and a table keeps its pairs in plain maps.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "reference/rule_directory.h"

namespace ksv_reference {

uint32_t nameToId(const std::string& name);

bool isControlCode(uint32_t code);

struct CodeBlock {
  uint32_t first = 0;
  uint32_t end = 0;  // exclusive, a 32-bit sum
  std::map<uint32_t, uint32_t> values;

  bool covers(uint32_t key) const { return first <= key && key < end; }
  uint32_t valueAt(uint32_t key) const;
};

struct RuleBase;

struct CodeTable {
  uint32_t keyColumn = 0;  // 1: the first number of a pair is the key
  uint16_t valueBytes = 0;
  uint32_t low = 0;
  uint32_t high = 0;
  std::vector<CodeBlock> blocks;
  std::string fileName;
  int32_t loadAttempts = -1;
  bool loaded = false;
  bool hasEntries = false;

  const CodeBlock* blockOf(uint32_t key) const;
  void insert(uint32_t key, uint32_t value, uint32_t blockSize);
  // The lookup of a subset's table; an unloaded one gives the key itself.
  bool lookup(uint32_t key, uint32_t& value) const;
  // The stored value where the bounds and a block hold the key.
  bool entry(uint32_t key, uint32_t& value) const;
  bool hasTable() const { return !fileName.empty() && loaded; }
  bool ensureLoaded(const RuleBase& rules);
};

struct Subset {
  uint32_t id = 0;
  uint16_t kind = 1;
  uint16_t bytesPerCode = 2;
  CodeTable toUcs;
  CodeTable fromUcs;
  uint16_t defStart = 0;
  uint16_t defNumber = 0;

  bool definesCode(uint32_t code) const;
};

struct Charset {
  std::string name;
  uint32_t id = 0;
  std::string construle;
  std::string destrule;
  std::vector<Subset*> members;
  std::vector<std::vector<CodeTable>> destTables;
};

struct RuleBase {
  uint32_t blockSize = 0;
  std::deque<Charset> charsets;
  std::deque<Subset> subsets;
  std::map<std::string, std::vector<TablePair>> files;

  void load(const RuleDirectory& directory);
  Charset* findCharset(uint32_t id);
  Subset* findSubset(uint32_t id);
  // The sequence lookup of one member of a charset.
  bool findSequence(Charset& charset, size_t member, uint32_t key, uint32_t& value,
                    uint16_t& bytes) const;
};

}  // namespace ksv_reference
