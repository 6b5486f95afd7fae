// Groups, the indexes of a charset, and what it remembers of its groups.
#include "cconv/rules/rule_model.h"

#include <algorithm>
#include <thread>

#include "cconv/rules/encoded_code_cache.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

TEST(Group, has_a_table_from_and_one_to_its_codes) {
  const GroupDef group("JIS_X0208-1990", GroupKind::kDifference, 3);
  EXPECT_EQ(group.name, "JIS_X0208-1990") << "its case is kept";
  EXPECT_EQ(group.id, 2006u);
  EXPECT_EQ(group.type(), 2u);
  EXPECT_EQ(group.bytesPerCode, 3);
  EXPECT_EQ(group.toUcs.keyColumn, CodeTable::kFirstColumn);
  EXPECT_EQ(group.toUcs.valueBytes, 4);
  EXPECT_EQ(group.fromUcs.keyColumn, CodeTable::kSecondColumn);
  EXPECT_EQ(group.fromUcs.valueBytes, 3);
  for (const CodeTable* table : {&group.toUcs, &group.fromUcs}) {
    EXPECT_EQ(table->low, 0u);
    EXPECT_EQ(table->high, 0u);
    EXPECT_FALSE(table->hasEntries);
    EXPECT_TRUE(table->fileName.empty());
    EXPECT_EQ(table->reading, CodeTable::Reading::kNotRead);
    EXPECT_FALSE(table->isLoaded());
  }
  EXPECT_TRUE(group.lang.empty());
  EXPECT_TRUE(group.basedon.empty());
  EXPECT_EQ(group.defined.ranges.count(), 0);
  EXPECT_EQ(group.defined.low, 0u);
  EXPECT_EQ(group.defined.high, 0u);
  EXPECT_EQ(group.defStart, 0);
  EXPECT_EQ(group.defNumber, 0);
}

TEST(CharsetGroups, are_found_by_number_the_first_of_equals) {
  std::vector<std::unique_ptr<GroupDef>> owned;
  CharsetDef charset;
  charset.buildIndexes();
  EXPECT_EQ(charset.findGroup(2006), nullptr);
  EXPECT_EQ(charset.firstPlainGroup(), nullptr);
  EXPECT_FALSE(charset.hasUserGroups());
  const auto add = [&](const std::string& name, GroupKind kind) {
    owned.push_back(std::make_unique<GroupDef>(name, kind, 2));
    charset.groups.append(owned.back().get());
  };
  add("user", GroupKind::kUser);
  add("ab", GroupKind::kDifference);
  add("ca", GroupKind::kBase);  // the number of "ab"
  for (int i = 0; i < 500; ++i) add("set" + std::to_string(i), GroupKind::kBase);
  charset.buildIndexes();
  EXPECT_EQ(charset.findGroup(4293), owned[1].get());
  EXPECT_EQ(charset.findGroup(1), nullptr);
  EXPECT_EQ(charset.firstPlainGroup(), owned[1].get());
  EXPECT_TRUE(charset.hasUserGroups());
  for (size_t i = 0; i < owned.size(); ++i) {
    const CharsetId id = owned[i]->id;
    const auto first = std::find_if(owned.begin(), owned.end(),
                                    [&](const auto& group) { return group->id == id; });
    EXPECT_EQ(charset.findGroup(id), first->get());
  }
}

TEST(CharsetGroups, without_destination_tables_have_none) {
  CharsetDef charset;
  charset.destTables.append(std::make_unique<TableList>());
  EXPECT_EQ(charset.destTablesOf(0), charset.destTables[0].get());
  EXPECT_EQ(charset.destTablesOf(1), nullptr);
}

TEST(EncodedCodes, are_remembered_for_every_unicode_code) {
  EncodedCodeCache cache;
  EncodedCode found;
  EXPECT_FALSE(cache.find(0, found));
  cache.remember(0, {0, 0, 0});
  EXPECT_TRUE(cache.find(0, found)) << "that no member has it is known too";
  EXPECT_EQ(found.group, 0);
  cache.remember(0x10FFFF, {0xFFFFFFFF, 0xFFFF, 0x7FFF});
  EXPECT_TRUE(cache.find(0x10FFFF, found));
  EXPECT_EQ(found.code, 0xFFFFFFFFu);
  EXPECT_EQ(found.sequenceLength, 0xFFFF);
  EXPECT_EQ(found.group, 0x7FFF);
  cache.remember(0x110000, {1, 0, 1});
  EXPECT_FALSE(cache.find(0x110000, found));
  EXPECT_FALSE(cache.find(0xFFFFFFFF, found));
  cache.remember(5, {1, 0, 0x8000});
  EXPECT_FALSE(cache.find(5, found)) << "the member's number does not fit";
}

TEST(EncodedCodes, can_be_remembered_by_several_threads) {
  EncodedCodeCache cache;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (uint32_t code = 0; code < 0x4000; ++code) {
        EncodedCode found;
        if (!cache.find(code, found)) cache.remember(code, {code * 2, 0, 1});
        if (cache.find(code, found)) {
          EXPECT_EQ(found.code, code * 2);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace ksv::test
