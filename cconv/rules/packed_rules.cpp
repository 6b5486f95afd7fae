#include "cconv/rules/packed_rules.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "cconv/rules/rule_base.h"
#include "common/faults.h"

namespace ksv {
namespace {

// All packed tables come from rule files in UTF-16 with a mark, least significant byte first.
void attach(CodeTable& table, const PackedCatalog& catalog, uint32_t file) {
  table.fileName = catalog.tableFiles[file].name;
  table.sourceEncoding = TextEncodingKind::kUtf16;
  table.sourceBigEndian = false;
}

std::unique_ptr<GroupDef> makeGroup(const PackedCatalog& catalog,
                                    const PackedCatalog::Group& packed) {
  auto group =
      std::make_unique<GroupDef>(std::string(packed.name), GroupKind::kBase, packed.bytesPerCode);
  group->lang = packed.language;
  if (packed.table) {
    attach(group->toUcs, catalog, *packed.table);
    attach(group->fromUcs, catalog, *packed.table);
  }
  return group;
}

std::unique_ptr<TableList> makeDestTables(const PackedCatalog& catalog,
                                          const PackedCatalog::Member& member) {
  auto tables = std::make_unique<TableList>();
  for (const PackedCatalog::DestTable& packed : member.destTables) {
    auto table = std::make_unique<CodeTable>(CodeTable::kSecondColumn, packed.bytesPerCode);
    attach(*table, catalog, packed.table);
    if (tables->append(std::move(table)) == 0) return nullptr;
  }
  return tables;
}

// Makes the group unless one with its number is there, which is then the one that counts.
bool addGroupOf(CharsetDef& charset, const PackedCatalog& catalog,
                const PackedCatalog::Group& packed) {
  std::string name(packed.name);
  GroupDef* const known = findGroupById(nameToId(name.data()));
  return known != nullptr ? charset.groups.append(known) != 0
                          : addGroup(charset, makeGroup(catalog, packed));
}

bool addMember(CharsetDef& charset, const PackedCatalog& catalog,
               const PackedCatalog::Member& member) {
  auto tables = makeDestTables(catalog, member);
  return tables && charset.destTables.append(std::move(tables)) != 0 &&
         addGroupOf(charset, catalog, catalog.groups[member.group]);
}

bool addCharset(const PackedCatalog& catalog, const PackedCatalog::Charset& packed) {
  auto charset = std::make_unique<LoadedCharset>();
  charset->name = packed.name;
  charset->id = nameToId(charset->name.data());
  if (findCharsetById(charset->id) != nullptr) return true;
  charset->construle = std::string("const").append(packed.codec);
  charset->destrule = std::string("dest").append(packed.codec);
  for (const PackedCatalog::Member& member : packed.members)
    if (!addMember(*charset, catalog, member)) return false;
  charset->buildIndexes();
  return ruleBase.lists->addCharset(std::move(charset));
}

}  // namespace

bool isAsPacked(const std::vector<std::string>& names, const PackedCharsets& packed) {
  return std::ranges::all_of(names, [&](const std::string& name) {
    const PackedCatalog::RuleFile* const file = packed.catalog().findRuleFile(name);
    return file != nullptr && !packed.isOverridden(*file);
  });
}

std::vector<std::string> withPackedNames(std::vector<std::string> names,
                                         const PackedCharsets& packed) {
  for (const PackedCatalog::RuleFile& file : packed.catalog().ruleFiles)
    names.emplace_back(file.name);
  std::ranges::sort(names);
  // Not of std::ranges, whose answer clang 14 cannot read in the C++ library of gcc.
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

size_t loadPackedRules(const PackedCharsets& packed) {
  size_t accepted = 0;
  for (const PackedCatalog::Charset& charset : packed.catalog().charsets) {
    try {
      if (addCharset(packed.catalog(), charset)) ++accepted;
    } catch (const std::bad_alloc&) {
      // As of files: this one is skipped and the next one is tried.
      noteNoMemory(packed.directory());
    }
  }
  return accepted;
}

}  // namespace ksv
