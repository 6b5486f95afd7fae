// What a charset directory says, as plain structs: the rule files and the number
// pairs of the tables. The model reads these structs, the library reads the files
// that writeRuleDirectory makes of them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ksv_reference {

struct TablePair {
  uint32_t first = 0;
  uint32_t second = 0;
};

struct SubsetFile {
  std::string name;
  uint16_t bytesPerCode = 2;
  std::string tableFile;  // empty: every code is its own character
  uint16_t defStart = 0;
  uint16_t defNumber = 0;
};

struct DestTableEntry {
  std::string tableFile;
  uint16_t valueBytes = 2;
};

struct MemberEntry {
  uint16_t kind = 1;  // 1 baseset, 2 diffset, 3 eudcset
  std::string subsetFile;
  std::vector<DestTableEntry> destTables;
};

struct CharsetFile {
  std::string name;
  std::string construle;
  std::string destrule;
  std::vector<MemberEntry> members;
};

// Keys are file names; the directory is read in their ascending byte order.
struct RuleDirectory {
  std::map<std::string, CharsetFile> charsets;
  std::map<std::string, SubsetFile> subsets;
  std::map<std::string, std::vector<TablePair>> tables;  // a name not in here: no such file
};

void writeRuleDirectory(const RuleDirectory& rules, const std::filesystem::path& directory);

// Reads a directory of the form that charsets/generate.py writes.
RuleDirectory readRuleDirectory(const std::filesystem::path& directory);

}  // namespace ksv_reference
