#include "reference/rules.h"

#include <utility>

namespace ksv_reference {
namespace {

std::string lowerCase(std::string name) {
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

const std::pair<const char*, uint32_t> kNames[] = {
    {"shift_jis", 1001},       {"windows31j", 1002},     {"iso-10646-ucs-2", 1003},
    {"iso-10646-ucs-4", 1004}, {"utf-16", 1005},         {"utf-8", 1006},
    {"euc-jp", 1007},          {"euc-jp-fix", 1008},     {"iso-2022-jp", 1009},
    {"shift_jis-2004", 1010},  {"euc-jis-2004", 1011},   {"iso-2022-jp-2004", 1012},
    {"windows31j-usr", 3001},  {"windowsntj-usr", 3002}, {"oasys_extset", 3003},
    {"oasys2_extset", 3004},   {"iso-646irv", 2001},     {"jis_x0201latin", 2002},
    {"jis_x0201kana", 2003},   {"jis_c6226-1978", 2004}, {"jis_x0208-1983", 2005},
    {"jis_x0208-1990", 2006},  {"jis_x0212-1990", 2007}, {"nec_extset", 2008},
    {"ibm_extset", 2009},      {"necibm_extset", 2012},  {"jis-78-83", 2010},
    {"jis_x0213", 2011},       {"chinesegbk", 5000},     {"chinesebig5", 5001},
    {"koreanksc", 5002},       {"gb18030", 5003},
};

uint32_t keepBytes(uint32_t value, uint16_t bytes) {
  return bytes >= 4 ? value : value & ((1U << (8 * bytes)) - 1);
}

CodeTable makeTable(uint32_t keyColumn, uint16_t valueBytes, const std::string& fileName) {
  CodeTable table;
  table.keyColumn = keyColumn;
  table.valueBytes = valueBytes;
  table.fileName = fileName;
  return table;
}

Subset makeSubset(const SubsetFile& file, uint16_t kind) {
  Subset subset;
  subset.id = nameToId(file.name);
  subset.kind = kind;
  subset.bytesPerCode = file.bytesPerCode;
  const std::string tableFile = kind == 3 ? "" : file.tableFile;
  subset.toUcs = makeTable(1, 4, tableFile);
  subset.fromUcs = makeTable(0, file.bytesPerCode, tableFile);
  if (kind == 3) {
    subset.defStart = file.defStart;
    subset.defNumber = file.defNumber;
  }
  return subset;
}

}  // namespace

uint32_t nameToId(const std::string& name) {
  const std::string lower = lowerCase(name);
  for (const auto& [known, id] : kNames) {
    if (lower == known) return id;
  }
  uint32_t id = 4000;
  for (size_t i = 0; i < lower.size(); ++i) {
    id +=
        static_cast<uint32_t>(static_cast<unsigned char>(lower[i])) * static_cast<uint32_t>(i + 1);
  }
  return id;
}

bool isControlCode(uint32_t code) {
  return code == 127 || (code < 32 && code != 9 && code != 10 && code != 13);
}

uint32_t CodeBlock::valueAt(uint32_t key) const {
  const auto found = values.find(key);
  return found == values.end() ? 0 : found->second;
}

const CodeBlock* CodeTable::blockOf(uint32_t key) const {
  for (const CodeBlock& block : blocks) {
    if (block.covers(key)) return &block;
  }
  return nullptr;
}

void CodeTable::insert(uint32_t key, uint32_t value, uint32_t blockSize) {
  CodeBlock* target = nullptr;
  for (CodeBlock& block : blocks) {
    if (block.covers(key)) {
      target = &block;
      break;
    }
  }
  if (target == nullptr) {
    blocks.push_back({key, key + blockSize, {}});
    target = &blocks.back();
  }
  target->values[key] = keepBytes(value, valueBytes);
  if (low == 0 && !hasEntries) {
    hasEntries = true;
    low = high = key;
  } else if (key >= low) {
    if (key > high) high = key;
  } else {
    low = key;
  }
}

bool CodeTable::entry(uint32_t key, uint32_t& value) const {
  if (key < low || key > high) return false;
  const CodeBlock* block = blockOf(key);
  if (block == nullptr) return false;
  value = block->valueAt(key);
  return true;
}

bool CodeTable::lookup(uint32_t key, uint32_t& value) const {
  if (!loaded) {
    value = key;
    return true;
  }
  if (!entry(key, value)) return false;
  return key == 0 || value != 0;
}

bool CodeTable::ensureLoaded(const RuleBase& rules) {
  if (loaded || fileName.empty()) return loaded;
  ++loadAttempts;
  if (loadAttempts != 0) {
    loaded = true;
    return true;
  }
  const auto file = rules.files.find(fileName);
  if (file != rules.files.end()) {
    const uint32_t blockSize = rules.blockSize == 0 ? 4096 : rules.blockSize;
    for (const TablePair& pair : file->second) {
      if (keyColumn == 1) {
        insert(pair.first, pair.second, blockSize);
      } else {
        insert(pair.second, pair.first, blockSize);
      }
    }
  }
  loaded = !(low == high && (low == 0 || low > 0xFFFFFFF));
  return loaded;
}

bool Subset::definesCode(uint32_t code) const {
  return code >= defStart && code < static_cast<uint32_t>(defStart) + defNumber;
}

void RuleBase::load(const RuleDirectory& directory) {
  files = directory.tables;
  for (const auto& [fileName, file] : directory.charsets) {
    const uint32_t id = nameToId(file.name);
    if (findCharset(id) != nullptr) continue;
    Charset charset;
    charset.name = lowerCase(file.name);
    charset.id = id;
    charset.construle = file.construle;
    charset.destrule = file.destrule;
    for (const MemberEntry& member : file.members) {
      if (member.kind != 3) {
        std::vector<CodeTable> tables;
        for (const DestTableEntry& table : member.destTables) {
          tables.push_back(makeTable(0, table.valueBytes, table.tableFile));
        }
        charset.destTables.push_back(tables);
      }
      const Subset subset = makeSubset(directory.subsets.at(member.subsetFile), member.kind);
      if (findSubset(subset.id) == nullptr) subsets.push_back(subset);
      charset.members.push_back(findSubset(subset.id));
    }
    charsets.push_back(charset);
  }
}

Charset* RuleBase::findCharset(uint32_t id) {
  for (Charset& charset : charsets) {
    if (charset.id == id) return &charset;
  }
  return nullptr;
}

Subset* RuleBase::findSubset(uint32_t id) {
  for (Subset& subset : subsets) {
    if (subset.id == id) return &subset;
  }
  return nullptr;
}

bool RuleBase::findSequence(Charset& charset, size_t member, uint32_t key, uint32_t& value,
                            uint16_t& bytes) const {
  if (member >= charset.destTables.size()) return false;
  for (CodeTable& table : charset.destTables[member]) {
    uint32_t found = 0;
    if (table.ensureLoaded(*this) && table.entry(key, found) && found != 0) {
      value = found;
      bytes = table.valueBytes;
      return true;
    }
  }
  return false;
}

}  // namespace ksv_reference
