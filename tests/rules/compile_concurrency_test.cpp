// Compiling a table by several processes at once, and by processes and threads
// that die at it.
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <thread>

#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

class Compiling : public RuleBaseTest {
 protected:
  // What a process of its own sees of the table: 0 when every pair is there.
  static int readTable(const Pairs& pairs) {
    auto table = tableOf("t.txt");
    return ensureTableLoaded(table.get()) && mapsAll(*table, pairs) ? 0 : 1;
  }

  // A text that nobody can finish opening: whoever compiles it stays at it, with
  // the lock held and the compiled file begun.
  void writeEndlessText() {
    std::filesystem::remove(directory_.path("t.txt"));
    ASSERT_EQ(mkfifo(directory_.path("t.txt").c_str(), 0600), 0);
  }

  bool waitUntilCompiling() {
    return waitUntil([&] { return directory_.has("t.cmp.tmp"); });
  }
  static bool waitUntilAsleep(pid_t process) {
    return waitUntil([&] {
      const std::string status = readFile("/proc/" + std::to_string(process) + "/stat");
      return status.find(") S ") != std::string::npos;
    });
  }

  void expectCompilable(const Pairs& pairs) {
    std::filesystem::remove(directory_.path("t.txt"));
    directory_.writeTable("t.txt", tableLines(pairs));
    EXPECT_EQ(readTable(pairs), 0);
    EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(pairs));
    EXPECT_FALSE(directory_.has("t.cmp.tmp")) << "taken up and renamed";
  }
};

TEST_F(Compiling, by_eight_processes_at_once_gives_each_the_full_table) {
  const Pairs pairs = manyPairs(20000);
  directory_.writeTable("t.txt", tableLines(pairs));
  for (int round = 0; round < 5; ++round) {
    std::filesystem::remove(directory_.path("t.cmp"));
    Shared<std::atomic<bool>> begin;
    std::vector<pid_t> children;
    for (int c = 0; c < 8; ++c) {
      children.push_back(startChild([&] {
        while (!*begin) std::this_thread::yield();
        return readTable(pairs);
      }));
    }
    *begin = true;
    for (const pid_t child : children) EXPECT_EQ(resultOf(child), 0);
    EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(pairs));
    EXPECT_FALSE(directory_.has("t.cmp.tmp"));
  }
}

TEST_F(Compiling, by_eight_processes_without_the_lock_gives_each_the_full_table) {
  const Pairs pairs = manyPairs(20000);
  directory_.writeTable("t.txt", tableLines(pairs));
  Shared<std::atomic<bool>> begin;
  std::vector<pid_t> children;
  for (int c = 0; c < 8; ++c) {
    children.push_back(startChild([&] {
      ruleBase.tableMutex = nullptr;
      while (!*begin) std::this_thread::yield();
      return readTable(pairs);
    }));
  }
  *begin = true;
  for (const pid_t child : children) EXPECT_EQ(resultOf(child), 0);
  EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(pairs));
  EXPECT_FALSE(directory_.has("t.cmp.tmp"));
}

TEST_F(Compiling, survives_a_kill_at_any_instant) {
  constexpr int kKills = 200;
  const Pairs pairs = manyPairs(200000);
  const std::string expected = compiledBytes(pairs);
  directory_.writeTable("t.txt", tableLines(pairs));
  const std::string path = directory_.path("t.cmp");

  const auto begin = Clock::now();
  ASSERT_EQ(resultOf(startChild([&] { return readTable(pairs); })), 0);
  const auto whole = std::chrono::duration_cast<microseconds>(Clock::now() - begin);
  ASSERT_EQ(directory_.read("t.cmp"), expected);

  std::mt19937 random(testSeed());
  int absent = 0;
  int begun = 0;
  for (int kill_ = 0; kill_ < kKills; ++kill_) {
    std::filesystem::remove(path);
    const pid_t child = startChild([&] {
      const int result = readTable(pairs);
      while (result == 0) pause();
      return result;
    });
    // Somewhat longer than it takes, so that some kills come when all is done.
    std::this_thread::sleep_for(
        microseconds(random() % static_cast<uint64_t>(whole.count() * 3 / 2)));
    kill(child, SIGKILL);
    EXPECT_EQ(resultOf(child), -1);
    begun += directory_.has("t.cmp.tmp") ? 1 : 0;
    if (directory_.has("t.cmp")) {
      ASSERT_EQ(directory_.read("t.cmp") == expected, true) << "half written";
    } else {
      ++absent;
      // Every fourth is left to the next victim, with what lies there half made.
      if (kill_ % 4 == 3) continue;
    }
    ASSERT_EQ(resultOf(startChild([&] { return readTable(pairs); })), 0);
    ASSERT_EQ(directory_.read("t.cmp") == expected, true);
    ASSERT_FALSE(directory_.has("t.cmp.tmp"));
  }
  std::cout << kKills << " kills within " << whole.count() << " us: " << absent
            << " before the compiled file was there, " << begun << " while it was written\n";
  EXPECT_GT(absent, 0);
  EXPECT_GT(begun, 0);
}

TEST_F(Compiling, by_a_process_killed_at_it_leaves_the_lock_and_the_table_usable) {
  writeEndlessText();
  const pid_t child = startChild([&] { return readTable({}); });
  ASSERT_TRUE(waitUntilCompiling());
  kill(child, SIGKILL);
  EXPECT_EQ(resultOf(child), -1);
  EXPECT_FALSE(directory_.has("t.cmp"));
  EXPECT_EQ(lockMutex(), 0) << "held, and its holder died";
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  EXPECT_NE(unlockMutex(), 0);
  expectCompilable(manyPairs(100));
}

TEST_F(Compiling, goes_on_at_once_when_the_process_at_it_is_killed) {
  writeEndlessText();
  const pid_t victim = startChild([&] { return readTable({}); });
  ASSERT_TRUE(waitUntilCompiling());
  ASSERT_TRUE(waitUntilAsleep(victim));
  // The one that waits for the lock opens another text: by now there is one.
  const Pairs pairs = manyPairs(100);
  directory_.writeTable("new.txt", tableLines(pairs));
  std::filesystem::rename(directory_.path("new.txt"), directory_.path("t.txt"));
  const pid_t heir = startChild([&] {
    if (readTable(pairs) != 0) return 1;
    return lockMutex() == 1 && unlockMutex() != 0 ? 0 : 2;  // the filling took the 0
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_FALSE(directory_.has("t.cmp"));
  kill(victim, SIGKILL);
  EXPECT_EQ(resultOf(heir), 0);
  EXPECT_EQ(resultOf(victim), -1);
  // A dying process gives up the lock before its files: the heir may have found the
  // compiled file still begun by another, and then leaves it to the next process.
  if (directory_.has("t.cmp")) {
    EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(pairs));
  }
  expectCompilable(pairs);
}

TEST_F(Compiling, works_after_a_process_died_with_the_lock) {
  const pid_t child = startChild([] {
    lockMutex();
    kill(getpid(), SIGKILL);
    return 0;
  });
  EXPECT_EQ(resultOf(child), -1);
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

TEST_F(Compiling, by_a_thread_cancelled_at_it_leaves_the_lock_and_other_tables_usable) {
  if (KSV_UNDER_SANITIZERS) GTEST_SKIP() << "they cannot unwind a cancelled thread";
  writeEndlessText();
  auto table = tableOf("t.txt");
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, nullptr,
                [](void* unfinished) -> void* {
                  ensureTableLoaded(static_cast<CodeTable*>(unfinished));
                  return nullptr;
                },
                table.get()),
            0);
  ASSERT_TRUE(waitUntilCompiling());
  ASSERT_EQ(pthread_cancel(thread), 0);
  void* result = nullptr;
  ASSERT_EQ(pthread_join(thread, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_FALSE(table->isLoaded());
  EXPECT_FALSE(directory_.has("t.cmp"));
  EXPECT_EQ(lockMutex(), 0);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  EXPECT_NE(unlockMutex(), 0);
  expectCompilable(manyPairs(100));
}

TEST_F(Compiling, works_in_a_process_forked_while_a_thread_is_at_it) {
  writeEndlessText();
  auto table = tableOf("t.txt");
  std::thread filling([&] { ensureTableLoaded(table.get()); });
  ASSERT_TRUE(waitUntilCompiling());
  directory_.writeTable("other.txt", "1 2\r\n3 4");
  const pid_t child = startChild([] {
    alarm(20);
    auto other = tableOf("other.txt");
    return ensureTableLoaded(other.get()) && mapsAll(*other, {{1, 2}, {3, 4}}) ? 0 : 1;
  });
  // The thread goes on, and its lock becomes free, when its text is there.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  FILE* const text = std::fopen(directory_.path("t.txt").c_str(), "wb");
  ASSERT_NE(text, nullptr);
  std::fclose(text);
  filling.join();
  EXPECT_EQ(resultOf(child), 0);
}

}  // namespace
}  // namespace ksv::test
