// What the tests of compiling a table by several processes and threads share.
#pragma once

#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {

class Compiling : public RuleBaseTest {
 protected:
  // What the table gives: 0 when every pair is there.
  static int readTable(const Pairs& pairs) {
    auto table = tableOf("t.txt");
    return ensureTableLoaded(table.get()) && mapsAll(*table, pairs) ? 0 : 1;
  }

  void expectCompilable(const Pairs& pairs) {
    std::filesystem::remove(directory_.path("t.txt"));
    directory_.writeTable("t.txt", tableLines(pairs));
    EXPECT_EQ(readTable(pairs), 0);
    EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(pairs));
    EXPECT_FALSE(directory_.has("t.cmp.tmp")) << "taken up and renamed";
  }

  // That the last holder died, which is told once, and the lock is free again.
  static void expectAbandonedLock() {
    EXPECT_EQ(lockMutex(), 0) << "held, and its holder died";
    EXPECT_EQ(lockMutex(), 1);
    EXPECT_NE(unlockMutex(), 0);
    EXPECT_NE(unlockMutex(), 0);
  }
};

}  // namespace ksv::test
