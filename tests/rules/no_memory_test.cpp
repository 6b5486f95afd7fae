// Every allocation fails once: nothing is half entered, and the lock is free.
#include "cconv/rules/rule_loader.h"
#include "common/faults.h"
#include "ksv_cconv.h"
#include "tests/faults/memory_faults.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

class NoMemory : public CharsetDirectoryTest {
 protected:
  NoMemory() {
    directory_.writeRule("s.set", baseGroup("a_subset_with_a_name_that_is_long",
                                            "<defined>8140-84BE 8740</defined>"
                                            "<srtable>&mapping;</srtable>"));
    directory_.writeRule("u.set", "<name>a_user_set_with_a_long_name</name><codec x=\"\"/>");
    const std::string declarations =
        entity("base", "s.set") + entity("user", "u.set") + entity("mapping", "t.txt");
    for (const char* name : {"1", "2", "3"}) {
      directory_.writeRule(
          std::string(name) + ".xml",
          charset(declarations, "<name>a_charset_with_a_long_name" + std::string(name) +
                                    "</name><baseset>&base;<dstable>&mapping;</dstable>"
                                    "</baseset><eudcset>&user;</eudcset>"));
    }
    directory_.writeTable("t.txt", tableLines(pairs_));
  }

  static void expectConsistent() {
    for (const auto& found : ruleBase.lists->charsets()) {
      EXPECT_EQ(findCharsetById(found->id), found.get());
      EXPECT_EQ(found->groups.count(), 2);
      EXPECT_EQ(found->destTables.count(), 1);
      for (const GroupDef* group : found->groups) EXPECT_EQ(findGroupById(group->id), group);
    }
    for (const auto& group : ruleBase.lists->groups()) {
      EXPECT_EQ(findGroupById(group->id), group.get()) << "no second of the same number";
    }
  }

  const Pairs pairs_ = manyPairs(50);
};

TEST_F(NoMemory, fails_the_start_and_leaves_the_count_at_0) {
  int failures = 0;
  for (int count = 0; count < 100; ++count) {
    FailingMemory memory(static_cast<uint64_t>(count), Refused::kAllFromThere);
    const int started = startProcess();
    memory.stop();
    if (started == 1 && ruleBase.tableMutex != nullptr) {
      endProcess();
      break;
    }
    if (started == 1) {  // without the lock, which is no reason to fail
      EXPECT_EQ(lockMutex(), 0);
      endProcess();
      continue;
    }
    ++failures;
    EXPECT_EQ(ruleBase.refCount, 0u);
    EXPECT_EQ(ruleBase.lists, nullptr);
  }
  EXPECT_GT(failures, 0);
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  endProcess();
}

TEST_F(NoMemory, skips_a_rule_file_and_leaves_nothing_of_it_half_entered) {
  int failures = 0;
  for (int count = 0; count < 10000; ++count) {
    ASSERT_EQ(startProcess(), 1);
    const uint64_t faults = faultCount();
    FailingMemory memory(static_cast<uint64_t>(count), Refused::kAllFromThere);
    const int loaded = cconvLoadRule();
    memory.stop();
    const int charsets = ruleBase.lists->charsets().count();
    EXPECT_EQ(loaded, charsets > 0 ? 1 : 0) << count;
    EXPECT_EQ(faultCount() > faults, charsets < 3) << count << ": what is left out is noted";
    expectConsistent();
    // With memory the rest is loaded.
    EXPECT_EQ(cconvLoadRule(), 1);
    EXPECT_EQ(ruleBase.lists->charsets().count(), 3) << count;
    expectConsistent();
    endProcess();
    if (charsets == 3) break;
    ++failures;
  }
  EXPECT_GT(failures, 100);
  EXPECT_LT(failures, 10000);
}

TEST_F(NoMemory, ends_the_filling_of_a_table_and_gives_up_the_lock) {
  ASSERT_EQ(startProcess(), 1);
  int failures = 0;
  for (int count = 0; count < 1000; ++count) {
    for (const char* file : {"t.cmp", "t.cmp.tmp"}) std::filesystem::remove(directory_.path(file));
    auto table = tableOf("t.txt");
    const uint64_t faults = faultCount();
    FailingMemory memory(static_cast<uint64_t>(count), Refused::kAllFromThere);
    ensureTableLoaded(table.get());
    memory.stop();
    EXPECT_EQ(faultCount() > faults, table->isCutShort) << count;
    EXPECT_TRUE(table->isCutShort || mapsAll(*table, pairs_)) << count;
    if (directory_.has("t.cmp")) {
      EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(pairs_)) << count;
    }
    EXPECT_EQ(lockMutex(), 1) << count;
    EXPECT_NE(unlockMutex(), 0);
    EXPECT_EQ(unlockMutex(), 0) << count;
    EXPECT_FALSE(directory_.has("t.cmp.tmp")) << count;
    // What was inserted is right, and nothing else is.
    for (const auto& [first, second] : pairs_) {
      const uint32_t found = table->find(first);
      EXPECT_TRUE(found == 0 || found == second);
    }
    const bool isWhole = table->isWhole() && directory_.has("t.cmp");
    EXPECT_TRUE(ensureTableLoaded(table.get())) << count;
    EXPECT_TRUE(mendTable(*table)) << count;
    EXPECT_TRUE(mapsAll(*table, pairs_)) << count << ": with memory it is read anew";
    if (isWhole) break;
    ++failures;
  }
  EXPECT_GT(failures, 3);
  EXPECT_LT(failures, 1000);
  endProcess();
}

TEST(NoMemoryForValues, leaves_a_table_as_it_was) {
  int failures = 0;
  for (int count = 0; count < 100; ++count) {
    auto table = tableOf("t.txt");
    table->state = CodeTable::State::kLoaded;
    ASSERT_TRUE(tableInsert(*table, 5, 6, 16));
    for (const uint32_t key : {0x10005u, 0x81308130u, 0xFFFFFFu}) {
      FailingMemory memory(static_cast<uint64_t>(count), Refused::kAllFromThere);
      const bool inserted = tableInsert(*table, key, 7, 16);
      memory.stop();
      EXPECT_EQ(table->find(key), inserted ? 7u : 0u);
      EXPECT_EQ(table->find(5), 6u);
      if (!inserted) ++failures;
      EXPECT_TRUE(tableInsert(*table, key, 8, 16));
      EXPECT_EQ(table->find(key), 8u);
    }
  }
  EXPECT_GT(failures, 5);
}

}  // namespace
}  // namespace ksv::test
