#include "cconv/rules/packed_rule_set.h"

#include <new>
#include <string>
#include <utility>

#include "cconv/rules/provisional_answers.h"
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
  for (const PackedCatalog::DestTable& packed : catalog.destTablesOf(member)) {
    auto table = std::make_unique<CodeTable>(CodeTable::kSecondColumn, packed.bytesPerCode);
    attach(*table, catalog, packed.table);
    tables->append(std::move(table));
  }
  return tables;
}

}  // namespace

PackedRuleSet::PackedRuleSet(const PackedCharsets& packed, const Others& others,
                             CharsetNames& names)
    : packed_(packed), catalog_(packed.catalog()), others_(others), names_(names) {
  std::vector<bool> isEntered(catalog_.groups.size());
  for (uint32_t number = 0; number < catalog_.charsets.size(); ++number) {
    const PackedCatalog::Charset& charset = catalog_.charsets[number];
    const CharsetId id = idOfName(charset.name);
    if (!others_.hasCharset(id) && charsets_.enter(id, number)) enterMembers(charset, isEntered);
  }
  charsets_.complete();
  groups_.complete();
}

// Most groups are members of many charsets, and all of this is done at each start of a program.
void PackedRuleSet::enterMembers(const PackedCatalog::Charset& charset,
                                 std::vector<bool>& isEntered) {
  for (const PackedCatalog::Member& member : catalog_.membersOf(charset)) {
    if (isEntered[member.group]) continue;
    isEntered[member.group] = true;
    const CharsetId id = idOfName(catalog_.groups[member.group].name);
    if (others_.groupOfFiles(id) == nullptr) groups_.enter(id, member.group);
  }
}

std::string_view PackedRuleSet::charsetName(size_t place) const {
  return catalog_.charsets[charsets_.packed(place)].name;
}

// What was to be had without this thing may be answered otherwise later.
template <class Make>
auto PackedRuleSet::withMemory(Make make) -> decltype(make()) {
  try {
    const std::lock_guard<std::mutex> guard(making_);
    return make();
  } catch (const std::bad_alloc&) {
    noteNoMemory(packed_.directory());
    ProvisionalAnswers::note();
    return nullptr;
  }
}

LoadedCharset* PackedRuleSet::findCharset(CharsetId id) {
  const std::optional<size_t> place = charsets_.placeOf(id);
  if (!place) return nullptr;
  if (LoadedCharset* const made = charsets_.get(*place)) return made;
  return withMemory([&] { return madeCharset(*place); });
}

GroupDef* PackedRuleSet::findGroup(CharsetId id) {
  const std::optional<size_t> place = groups_.placeOf(id);
  if (!place) return nullptr;
  if (GroupDef* const made = groups_.get(*place)) return made;
  return withMemory([&] { return madeGroup(*place); });
}

void PackedRuleSet::makeAll() {
  const std::lock_guard<std::mutex> guard(making_);
  for (size_t place = 0; place < charsets_.count(); ++place) madeCharset(place);
}

// The following four: while no other thread makes anything.

LoadedCharset* PackedRuleSet::madeCharset(size_t place) {
  if (LoadedCharset* const made = charsets_.get(place)) return made;
  LoadedCharset* const charset =
      charsets_.put(place, makeCharset(catalog_.charsets[charsets_.packed(place)]));
  names_.enter(charset->name, charset);
  return charset;
}

GroupDef* PackedRuleSet::madeGroup(size_t place) {
  if (GroupDef* const made = groups_.get(place)) return made;
  return groups_.put(place, makeGroup(catalog_, catalog_.groups[groups_.packed(place)]));
}

GroupDef* PackedRuleSet::groupWithNumberOf(const PackedCatalog::Group& packed) {
  const CharsetId id = idOfName(packed.name);
  const std::optional<size_t> place = groups_.placeOf(id);
  return place ? madeGroup(*place) : others_.groupOfFiles(id);
}

std::unique_ptr<LoadedCharset> PackedRuleSet::makeCharset(const PackedCatalog::Charset& packed) {
  auto charset = std::make_unique<LoadedCharset>();
  charset->name = packed.name;
  charset->id = nameToId(charset->name.data());
  charset->construle = std::string("const").append(packed.codec);
  charset->destrule = std::string("dest").append(packed.codec);
  for (const PackedCatalog::Member& member : catalog_.membersOf(packed)) {
    charset->destTables.append(makeDestTables(catalog_, member));
    charset->groups.append(groupWithNumberOf(catalog_.groups[member.group]));
  }
  charset->buildIndexes();
  return charset;
}

}  // namespace ksv
