// Bound to POSIX, where a thread that waits at a known instant can be cancelled there, and a
// process can be forked then.
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "cconv/rules/publication.h"
#include "tests/rules/compiling.h"
#include "tests/system/fork_posix.h"

namespace ksv::test {
namespace {

// Whoever compiles stays at it, with the lock held and the compiled file begun, until he is
// let go on.
class CompilingHeldUp : public Compiling {
 protected:
  CompilingHeldUp() {
    EXPECT_EQ(pipe(gate_), 0);
    directory_.writeTable("t.txt", "1 2\r\n3 4");
    publicationPauseForTests = waitAtTheGate;
  }
  ~CompilingHeldUp() override {
    holdUpNoMore();
    for (const int end : gate_) close(end);
  }

  // Those who come there from now on, in this process.
  static void holdUpNoMore() { publicationPauseForTests = nullptr; }
  static void letOneGoOn() { EXPECT_EQ(write(gate_[1], "", 1), 1); }

  bool waitUntilCompiling() {
    return waitUntil([&] { return directory_.has("t.cmp.tmp"); });
  }
  static bool waitUntilAsleep(pid_t process) {
    return waitUntil([&] {
      const std::string status = readFile("/proc/" + std::to_string(process) + "/stat");
      return status.find(") S ") != std::string::npos;
    });
  }

 private:
  static void waitAtTheGate(PublicationStep step) {
    char opened;
    if (step != PublicationStep::kFilling) return;
    EXPECT_EQ(read(gate_[0], &opened, 1), 1);
  }

  static inline int gate_[2];
};

TEST_F(Compiling, by_processes_forked_from_one_that_has_the_lock_open_is_exclusive) {
  const Pairs pairs = manyPairs(20000);
  directory_.writeTable("t.txt", tableLines(pairs));
  Shared<std::atomic<bool>> begin;
  std::vector<pid_t> children;
  for (int c = 0; c < 8; ++c) {
    children.push_back(startForked([&] {
      while (!*begin) std::this_thread::yield();
      return readTable(pairs);
    }));
  }
  *begin = true;
  for (const pid_t child : children) EXPECT_EQ(resultOf(child), 0);
  EXPECT_EQ(directory_.read("t.cmp"), compiledBytes(pairs));
  EXPECT_FALSE(directory_.has("t.cmp.tmp"));
}

TEST_F(CompilingHeldUp, by_a_process_killed_at_it_leaves_the_lock_and_the_table_usable) {
  const pid_t child = startForked([&] { return readTable({}); });
  ASSERT_TRUE(waitUntilCompiling());
  kill(child, SIGKILL);
  EXPECT_EQ(resultOf(child), -1);
  EXPECT_FALSE(directory_.has("t.cmp"));
  holdUpNoMore();
  expectAbandonedLock();
  expectCompilable(manyPairs(100));
}

TEST_F(CompilingHeldUp, goes_on_at_once_when_the_process_at_it_is_killed) {
  const pid_t victim = startForked([&] { return readTable({}); });
  ASSERT_TRUE(waitUntilCompiling());
  ASSERT_TRUE(waitUntilAsleep(victim));
  const Pairs pairs = manyPairs(100);
  directory_.writeTable("t.txt", tableLines(pairs));
  holdUpNoMore();
  const pid_t heir = startForked([&] {
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

TEST_F(CompilingHeldUp, by_a_thread_cancelled_at_it_leaves_the_lock_and_other_tables_usable) {
  if (KSV_UNDER_SANITIZERS) GTEST_SKIP() << "they cannot unwind a cancelled thread";
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
  holdUpNoMore();
  expectAbandonedLock();
  expectCompilable(manyPairs(100));
}

TEST_F(CompilingHeldUp, works_in_a_process_forked_while_a_thread_is_at_it) {
  auto table = tableOf("t.txt");
  std::thread filling([&] { ensureTableLoaded(table.get()); });
  ASSERT_TRUE(waitUntilCompiling());
  directory_.writeTable("other.txt", "1 2\r\n3 4");
  holdUpNoMore();
  const pid_t child = startForked([] {
    alarm(20);
    auto other = tableOf("other.txt");
    return ensureTableLoaded(other.get()) && mapsAll(*other, {{1, 2}, {3, 4}}) ? 0 : 1;
  });
  // Its lock becomes free when the thread goes on.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  letOneGoOn();
  filling.join();
  EXPECT_EQ(resultOf(child), 0);
}

}  // namespace
}  // namespace ksv::test
