// Compiling a table by several processes at once, and by processes and threads
// that die at it.
#include <atomic>
#include <chrono>
#include <iostream>
#include <thread>

#include "tests/rules/compiling.h"

namespace ksv::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

// Nobody waits for it to pass.
constexpr std::chrono::hours kLong{1};

struct Start {
  std::atomic<int> ready;
  std::atomic<bool> begin;
};

class CompilingBySeveral : public Compiling {
 public:
  // Reads a table of so many pairs as soon as all are told to begin, with the lock
  // or without it.
  static int readAtOnce(const std::vector<std::string>& arguments) {
    const StartedRuleBase started;
    const Shared<Start> start(arguments.at(0));
    const Pairs pairs = manyPairs(static_cast<uint32_t>(std::stoul(arguments.at(1))));
    const bool locked = arguments.at(2) == kLocked;
    platform::NamedMutex* const mutex = ruleBase.tableMutex;
    if (!locked) ruleBase.tableMutex = nullptr;
    ++start->ready;
    while (!start->begin) std::this_thread::yield();
    const int result = readTable(pairs);
    ruleBase.tableMutex = mutex;
    return result;
  }

 protected:
  static constexpr char kLocked[] = "locked";
  static constexpr char kUnlocked[] = "unlocked";
  static constexpr int kProcesses = 8;
  static constexpr uint32_t kPairCount = 20000;

  void compileByAll(const char* lock);
};

const ChildBody kReading("reads_a_table_at_once", CompilingBySeveral::readAtOnce);

void CompilingBySeveral::compileByAll(const char* lock) {
  const Shared<Start> start;
  std::vector<ChildProcess> children;
  for (int c = 0; c < kProcesses; ++c) {
    children.push_back(
        ChildProcess::start(kReading.name, {start.name(), std::to_string(kPairCount), lock}));
  }
  EXPECT_TRUE(waitUntil([&] { return start->ready == kProcesses; }));
  start->begin = true;
  for (ChildProcess& child : children) EXPECT_EQ(child.result(), 0);
  EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(manyPairs(kPairCount)));
  EXPECT_FALSE(directory_.has("t.cmp.tmp"));
}

TEST_F(CompilingBySeveral, processes_at_once_gives_each_the_full_table) {
  directory_.writeTable("t.txt", tableLines(manyPairs(kPairCount)));
  for (int round = 0; round < 5; ++round) {
    std::filesystem::remove(directory_.path("t.cmp"));
    compileByAll(kLocked);
  }
}

TEST_F(CompilingBySeveral, processes_without_the_lock_gives_each_the_full_table) {
  directory_.writeTable("t.txt", tableLines(manyPairs(kPairCount)));
  compileByAll(kUnlocked);
}

class CompilingKilled : public Compiling {
 public:
  // Reads a table of so many pairs when it is told to begin, and waits to be killed.
  static int readUntilKilled(const std::vector<std::string>& arguments) {
    const StartedRuleBase started;
    const Shared<Start> start(arguments.at(0));
    const Pairs pairs = manyPairs(static_cast<uint32_t>(std::stoul(arguments.at(1))));
    ++start->ready;
    while (!start->begin) std::this_thread::yield();
    if (const int result = readTable(pairs)) return result;
    std::this_thread::sleep_for(kLong);
    return 0;
  }

 protected:
  // Large enough to be killed at.
  static constexpr uint32_t kPairCount = 200000;

  CompilingKilled() {
    directory_.writeTable("t.txt", tableLines(pairs_));
    const auto begin = Clock::now();
    EXPECT_EQ(readTable(pairs_), 0);
    whole_ = std::chrono::duration_cast<microseconds>(Clock::now() - begin);
    EXPECT_EQ(directory_.read("t.cmp"), compiled_);
    std::filesystem::remove(directory_.path("t.cmp"));
  }

  static void killAfter(microseconds delay);

  // After it the lock is free, and no dead holder of it is left to be told of.
  static void takeOverLock() {
    lockMutex();
    unlockMutex();
  }

  const Pairs pairs_ = manyPairs(kPairCount);
  const std::string compiled_ = compiledBytes(pairs_);
  microseconds whole_{};  // what compiling takes
};

const ChildBody kKilledReading("reads_a_table_until_killed", CompilingKilled::readUntilKilled);

// Has a process begin to read, and kills it so much later.
void CompilingKilled::killAfter(microseconds delay) {
  const Shared<Start> start;
  ChildProcess child =
      ChildProcess::start(kKilledReading.name, {start.name(), std::to_string(kPairCount)});
  EXPECT_TRUE(waitUntil([&] { return start->ready == 1; }));
  start->begin = true;
  std::this_thread::sleep_for(delay);
  child.kill();
  EXPECT_EQ(child.result(), -1);
}

TEST_F(CompilingKilled, at_any_instant_leaves_a_whole_file_or_none) {
  constexpr int kKills = 200;
  std::mt19937 random(testSeed());
  int absent = 0;
  int begun = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    std::filesystem::remove(directory_.path("t.cmp"));
    // Somewhat longer than it takes, so that some kills come when all is done.
    killAfter(microseconds(random() % static_cast<uint64_t>(whole_.count() * 3 / 2)));
    begun += directory_.has("t.cmp.tmp") ? 1 : 0;
    if (directory_.has("t.cmp")) {
      ASSERT_EQ(directory_.read("t.cmp") == compiled_, true) << "half written";
    } else {
      ++absent;
      // Every fourth is left to the next victim, with what lies there half made.
      if (kill % 4 == 3) continue;
    }
    ASSERT_EQ(readTable(pairs_), 0);
    ASSERT_EQ(directory_.read("t.cmp") == compiled_, true);
    ASSERT_FALSE(directory_.has("t.cmp.tmp"));
  }
  std::cout << kKills << " kills within " << whole_.count() * 3 / 2 << " us: " << absent
            << " before the compiled file was there, " << begun << " while it was written\n";
  EXPECT_GT(absent, 0);
  EXPECT_GT(begun, 0);
}

TEST_F(CompilingKilled, at_it_leaves_the_lock_and_the_table_usable) {
  // The instant is guessed until it is one at which the file is begun.
  std::mt19937 random(testSeed());
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts && !directory_.has("t.cmp.tmp"); ++attempt) {
    takeOverLock();
    std::filesystem::remove(directory_.path("t.cmp"));
    killAfter(microseconds(random() % static_cast<uint64_t>(whole_.count())));
  }
  ASSERT_TRUE(directory_.has("t.cmp.tmp"));
  EXPECT_FALSE(directory_.has("t.cmp"));
  expectAbandonedLock();
  expectCompilable(manyPairs(100));
}

const ChildBody kDying("dies_with_the_lock", [](const std::vector<std::string>&) {
  const StartedRuleBase started;
  if (lockMutex() != 1) return 1;
  killOwnProcess();
});

TEST_F(Compiling, works_after_a_process_died_with_the_lock) {
  EXPECT_EQ(ChildProcess::run(kDying.name), -1);
  expectCompilable(manyPairs(100));
  EXPECT_EQ(lockMutex(), 1) << "released in order";
  EXPECT_NE(unlockMutex(), 0);
  EXPECT_EQ(unlockMutex(), 0);
}

TEST_F(Compiling, works_after_a_thread_ended_with_the_lock) {
  std::thread([] { EXPECT_EQ(lockMutex(), 1); }).join();
  expectCompilable(manyPairs(100));
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  EXPECT_EQ(unlockMutex(), 0);
}

}  // namespace
}  // namespace ksv::test
