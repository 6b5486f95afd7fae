// lockMutex and unlockMutex: one lock for the threads and processes of a user.
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

using std::chrono::milliseconds;

// The time that a thread gets to do what it must not do.
constexpr milliseconds kAWhile{60};

// Nobody waits for it to pass.
constexpr std::chrono::hours kLong{1};

class Lock : public RuleBaseTest {
 protected:
  // What lockMutex gives a thread of its own that releases it again.
  static int lockInAnotherThread() {
    int result = -1;
    std::thread([&] {
      result = lockMutex();
      unlockMutex();
    }).join();
    return result;
  }

  // That the calling thread holds the lock: another one waits until it is given up.
  static void expectHeldUntil(const std::function<void()>& release) {
    std::atomic<bool> entered = false;
    int result = -1;
    std::thread other([&] {
      result = lockMutex();
      entered = true;
      unlockMutex();
    });
    std::this_thread::sleep_for(kAWhile);
    EXPECT_FALSE(entered);
    release();
    other.join();
    EXPECT_EQ(result, 1);
  }
};

using LockOutside = CharsetDirectoryTest;

TEST_F(LockOutside, fails_before_the_first_start_and_behind_the_last_end) {
  EXPECT_EQ(lockMutex(), 0);
  EXPECT_EQ(unlockMutex(), 0);
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  endProcess();
  EXPECT_EQ(lockMutex(), 0);
  EXPECT_EQ(unlockMutex(), 0);
}

TEST_F(LockOutside, the_last_end_gives_up_what_its_thread_holds) {
  EXPECT_EQ(startProcess(), 1);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_EQ(lockMutex(), 1);
  endProcess();
  EXPECT_EQ(startProcess(), 1);
  int result = -1;
  std::thread([&] {
    result = lockMutex();
    unlockMutex();
  }).join();
  EXPECT_EQ(result, 1);
  endProcess();
}

TEST_F(Lock, is_released_as_often_as_it_was_taken) {
  EXPECT_EQ(unlockMutex(), 0);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  expectHeldUntil([] { EXPECT_NE(unlockMutex(), 0); });
  EXPECT_EQ(unlockMutex(), 0);
}

TEST_F(Lock, is_released_by_its_holder_only) {
  EXPECT_EQ(lockMutex(), 1);
  std::thread([] { EXPECT_EQ(unlockMutex(), 0); }).join();
  expectHeldUntil([] { EXPECT_NE(unlockMutex(), 0); });
}

TEST_F(Lock, survives_the_end_of_a_nested_pair) {
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_EQ(startProcess(), 1);
  endProcess();
  expectHeldUntil([] { EXPECT_NE(unlockMutex(), 0); });
}

TEST_F(Lock, excludes_threads) {
  int counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 3000; ++i) {
        EXPECT_EQ(lockMutex(), 1);
        ++counter;
        EXPECT_NE(unlockMutex(), 0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 12000);
}

struct Counts {
  std::atomic<bool> begin;
  volatile int counter;
};

const ChildBody kCounting("counts_under_the_lock", [](const std::vector<std::string>& arguments) {
  const StartedRuleBase started;
  const Shared<Counts> counts(arguments.at(0));
  while (!counts->begin) std::this_thread::yield();
  for (int i = 0; i < 2000; ++i) {
    if (lockMutex() != 1) return 1;
    counts->counter = counts->counter + 1;
    if (unlockMutex() == 0) return 2;
  }
  return 0;
});

TEST_F(Lock, excludes_processes) {
  const Shared<Counts> counts;
  std::vector<ChildProcess> children;
  for (int c = 0; c < 5; ++c) {
    children.push_back(ChildProcess::start(kCounting.name, {counts.name()}));
  }
  counts->begin = true;
  for (ChildProcess& child : children) EXPECT_EQ(child.result(), 0);
  EXPECT_EQ(counts->counter, 10000);
}

struct Steps {
  std::atomic<bool> ready;
  std::atomic<bool> entered;
};

const ChildBody kEntering("enters_the_lock", [](const std::vector<std::string>& arguments) {
  const StartedRuleBase started;
  const Shared<Steps> steps(arguments.at(0));
  steps->ready = true;
  if (lockMutex() != 1) return 1;
  steps->entered = true;
  return unlockMutex() != 0 ? 0 : 2;
});

TEST_F(Lock, excludes_a_process_that_started_on_its_own) {
  EXPECT_EQ(lockMutex(), 1);
  const Shared<Steps> steps;
  ChildProcess child = ChildProcess::start(kEntering.name, {steps.name()});
  EXPECT_TRUE(waitUntil([&] { return steps->ready.load(); }));
  std::this_thread::sleep_for(kAWhile);
  EXPECT_FALSE(steps->entered);
  EXPECT_NE(unlockMutex(), 0);
  EXPECT_EQ(child.result(), 0);
  EXPECT_TRUE(steps->entered);
}

// Takes the lock so many times, and never comes back.
const ChildBody kHolding("holds_the_lock", [](const std::vector<std::string>& arguments) {
  const StartedRuleBase started;
  const Shared<std::atomic<bool>> taken(arguments.at(0));
  for (int i = 0; i < std::stoi(arguments.at(1)); ++i) {
    if (lockMutex() != 1) return 1;
  }
  *taken = true;
  for (;;) std::this_thread::sleep_for(kLong);
});

// A process that holds the lock until it is killed.
ChildProcess startHolder(int times) {
  const Shared<std::atomic<bool>> taken;
  ChildProcess holder = ChildProcess::start(kHolding.name, {taken.name(), std::to_string(times)});
  EXPECT_TRUE(waitUntil([&] { return taken->load(); }));
  return holder;
}

TEST_F(Lock, gives_0_once_and_is_held_after_its_holding_thread_ended) {
  std::thread([] { EXPECT_EQ(lockMutex(), 1); }).join();
  EXPECT_EQ(lockMutex(), 0);
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_NE(unlockMutex(), 0);
  expectHeldUntil([] { EXPECT_NE(unlockMutex(), 0); });
  EXPECT_EQ(unlockMutex(), 0);
  EXPECT_EQ(lockInAnotherThread(), 1);
}

TEST_F(Lock, gives_0_once_and_is_held_after_its_holding_process_was_killed) {
  for (int round = 0; round < 5; ++round) {
    ChildProcess holder = startHolder(round > 2 ? 2 : 1);
    holder.kill();
    EXPECT_EQ(holder.result(), -1);
    EXPECT_EQ(lockMutex(), 0);
    EXPECT_EQ(lockMutex(), 1);
    EXPECT_NE(unlockMutex(), 0);
    expectHeldUntil([] { EXPECT_NE(unlockMutex(), 0); });
  }
}

TEST_F(Lock, wakes_one_waiter_with_0_when_the_holder_is_killed) {
  ChildProcess holder = startHolder(1);
  std::atomic<int> abandoned = 0;
  std::atomic<int> acquired = 0;
  std::vector<std::thread> waiters;
  for (int t = 0; t < 4; ++t) {
    waiters.emplace_back([&] {
      ++(lockMutex() == 1 ? acquired : abandoned);
      EXPECT_NE(unlockMutex(), 0);
    });
  }
  std::this_thread::sleep_for(kAWhile);
  EXPECT_EQ(acquired + abandoned, 0);
  holder.kill();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(abandoned, 1);
  EXPECT_EQ(acquired, 3);
  EXPECT_EQ(holder.result(), -1);
}

TEST_F(Lock, keeps_others_from_filling_a_table) {
  directory_.writeTable("t.txt", "8140 3000");
  auto table = tableOf("t.txt");
  EXPECT_EQ(lockMutex(), 1);
  std::atomic<bool> loaded = false;
  std::thread other([&] {
    ensureTableLoaded(table.get());
    loaded = true;
  });
  std::this_thread::sleep_for(kAWhile);
  EXPECT_FALSE(loaded);
  EXPECT_FALSE(table->isLoaded());
  EXPECT_NE(unlockMutex(), 0);
  other.join();
  EXPECT_TRUE(table->isLoaded());
}

TEST_F(Lock, lets_its_own_thread_fill_a_table) {
  directory_.writeTable("t.txt", "8140 3000");
  auto table = tableOf("t.txt");
  EXPECT_EQ(lockMutex(), 1);
  EXPECT_TRUE(ensureTableLoaded(table.get()));
  expectHeldUntil([] { EXPECT_NE(unlockMutex(), 0); });
}

TEST_F(Lock, that_could_not_be_made_leaves_tables_filled_without_it) {
  directory_.writeTable("t.txt", "8140 3000");
  platform::NamedMutex* const made = std::exchange(ruleBase.tableMutex, nullptr);
  EXPECT_EQ(lockMutex(), 0);
  EXPECT_EQ(unlockMutex(), 0);
  auto table = tableOf("t.txt");
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] { EXPECT_TRUE(ensureTableLoaded(table.get())); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(mapsAll(*table, {{0x8140, 0x3000}}));
  ruleBase.tableMutex = made;
}

}  // namespace
}  // namespace ksv::test
