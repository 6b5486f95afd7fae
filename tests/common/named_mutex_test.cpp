#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "tests/common/named_mutex_fixture.h"

using ksv::platform::NamedMutex;
using ksv::test::Arguments;
using ksv::test::ChildBody;
using ksv::test::ChildProcess;
using ksv::test::NamedMutexTest;
using ksv::test::Shared;
using ksv::test::waitUntil;
using LockResult = NamedMutex::LockResult;

namespace {

constexpr auto kAWhile = std::chrono::milliseconds(50);

// What processes that count under the lock share.
struct Counts {
  std::atomic<bool> begin;
  volatile int counter;
  std::atomic<int> failures;
};

const ChildBody kHold("hold the lock", [](const Arguments& arguments) {
  Shared<std::atomic<int>> held(arguments[1]);
  const auto mutex = NamedMutex::open(arguments[0].c_str());
  mutex->lock();
  mutex->lock();
  *held = 1;
  for (;;) std::this_thread::sleep_for(std::chrono::seconds(1));
  return 0;
});

const ChildBody kRelease("release a lock of another process", [](const Arguments& arguments) {
  return NamedMutex::open(arguments[0].c_str())->unlock() ? 1 : 0;
});

const ChildBody kTakeAndClose("take the lock and close it", [](const Arguments& arguments) {
  return NamedMutex::open(arguments[0].c_str())->lock() == LockResult::kAcquired ? 0 : 1;
});

const ChildBody kTakeAndExit("take the lock and exit", [](const Arguments& arguments) {
  static NamedMutex* const neverClosed = NamedMutex::open(arguments[0].c_str()).release();
  return neverClosed->lock() == LockResult::kAcquired ? 0 : 1;
});

const ChildBody kEnter("tell when the lock is taken", [](const Arguments& arguments) {
  Shared<std::atomic<int>> entered(arguments[1]);
  const auto mutex = NamedMutex::open(arguments[0].c_str());
  *entered = 1;
  const bool acquired = mutex->lock() == LockResult::kAcquired;
  *entered = 2;
  return acquired && mutex->unlock() ? 0 : 1;
});

const ChildBody kCount("count under the lock", [](const Arguments& arguments) {
  Shared<Counts> counts(arguments[1]);
  while (!counts->begin) std::this_thread::yield();
  const auto mutex = NamedMutex::open(arguments[0].c_str());
  if (!mutex) return 1;
  for (int i = 0; i < 3000; ++i) {
    if (mutex->lock() != LockResult::kAcquired) ++counts->failures;
    counts->counter = counts->counter + 1;
    if (!mutex->unlock()) ++counts->failures;
  }
  return 0;
});

// A process that holds the lock.
ChildProcess startHolder(const std::string& name) {
  Shared<std::atomic<int>> held;
  ChildProcess child = ChildProcess::start("hold the lock", {name, held.name()});
  EXPECT_TRUE(waitUntil([&] { return *held == 1; }));
  return child;
}

void killAHolder(const std::string& name) {
  ChildProcess child = startHolder(name);
  child.kill();
  EXPECT_EQ(child.result(), -1);
}

}  // namespace

TEST_F(NamedMutexTest, is_taken_again_by_its_holder_and_released_as_often) {
  auto mutex = open();
  ASSERT_TRUE(mutex);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(mutex->lock(), LockResult::kAcquired);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(mutex->unlock());
  EXPECT_FALSE(mutex->unlock());
}

TEST_F(NamedMutexTest, is_released_by_its_holder_only) {
  auto mutex = open();
  mutex->lock();
  std::thread([&] { EXPECT_FALSE(mutex->unlock()); }).join();
  EXPECT_EQ(ChildProcess::run("release a lock of another process", {name()}), 0);
  EXPECT_TRUE(mutex->unlock());
}

TEST_F(NamedMutexTest, lets_another_thread_in_after_the_last_release) {
  auto mutex = open();
  mutex->lock();
  mutex->lock();
  std::atomic<bool> entered = false;
  std::thread other([&] {
    EXPECT_EQ(mutex->lock(), LockResult::kAcquired);
    entered = true;
    EXPECT_TRUE(mutex->unlock());
  });
  mutex->unlock();
  std::this_thread::sleep_for(kAWhile);
  EXPECT_FALSE(entered);
  mutex->unlock();
  other.join();
  EXPECT_TRUE(entered);
}

TEST_F(NamedMutexTest, excludes_threads_that_opened_it_on_their_own) {
  int counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      auto mutex = open();
      for (int i = 0; i < 5000; ++i) {
        mutex->lock();
        ++counter;
        mutex->unlock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 20000);
}

TEST_F(NamedMutexTest, excludes_processes_that_create_it_at_the_same_time) {
  Shared<Counts> counts;
  std::vector<ChildProcess> children;
  for (int c = 0; c < 6; ++c) {
    children.push_back(ChildProcess::start("count under the lock", {name(), counts.name()}));
  }
  counts->begin = true;
  for (ChildProcess& child : children) EXPECT_EQ(child.result(), 0);
  EXPECT_EQ(counts->counter, 18000);
  EXPECT_EQ(counts->failures, 0);
}

TEST_F(NamedMutexTest, excludes_another_process) {
  auto mutex = open();
  mutex->lock();
  Shared<std::atomic<int>> entered;
  ChildProcess child = ChildProcess::start("tell when the lock is taken", {name(), entered.name()});
  ASSERT_TRUE(waitUntil([&] { return *entered == 1; }));
  std::this_thread::sleep_for(kAWhile);
  EXPECT_EQ(*entered, 1);
  mutex->unlock();
  EXPECT_EQ(child.result(), 0);
  EXPECT_EQ(*entered, 2);
}

TEST_F(NamedMutexTest, is_abandoned_once_after_its_holding_process_was_killed) {
  auto mutex = open();
  for (int i = 0; i < 3; ++i) {
    killAHolder(name());
    EXPECT_EQ(mutex->lock(), LockResult::kAbandoned);
    EXPECT_EQ(mutex->lock(), LockResult::kAcquired);
    EXPECT_TRUE(mutex->unlock());
    EXPECT_TRUE(mutex->unlock());
    EXPECT_FALSE(mutex->unlock());
    EXPECT_EQ(mutex->lock(), LockResult::kAcquired);
    EXPECT_TRUE(mutex->unlock());
  }
}

TEST_F(NamedMutexTest, is_abandoned_when_its_holder_exits_without_a_release) {
  auto mutex = open();
  EXPECT_EQ(ChildProcess::run("take the lock and close it", {name()}), 0);
  // The object that the child did release gave the lock back.
  EXPECT_EQ(mutex->lock(), LockResult::kAcquired);
  mutex->unlock();
  EXPECT_EQ(ChildProcess::run("take the lock and exit", {name()}), 0);
  EXPECT_EQ(mutex->lock(), LockResult::kAbandoned);
  EXPECT_TRUE(mutex->unlock());
}

TEST_F(NamedMutexTest, is_abandoned_once_after_its_holding_thread_ended) {
  auto mutex = open();
  std::thread([&] { mutex->lock(); }).join();
  EXPECT_EQ(mutex->lock(), LockResult::kAbandoned);
  EXPECT_TRUE(mutex->unlock());
  EXPECT_EQ(mutex->lock(), LockResult::kAcquired);
  EXPECT_TRUE(mutex->unlock());
}

TEST_F(NamedMutexTest, wakes_a_waiter_when_the_holder_is_killed) {
  auto mutex = open();
  ChildProcess child = startHolder(name());
  LockResult result = LockResult::kFailed;
  std::thread waiter([&] {
    result = mutex->lock();
    mutex->unlock();
  });
  std::this_thread::sleep_for(kAWhile);
  child.kill();
  waiter.join();
  EXPECT_EQ(result, LockResult::kAbandoned);
}

TEST_F(NamedMutexTest, gives_back_what_the_closing_thread_holds) {
  auto mutex = open();
  mutex->lock();
  mutex->lock();
  mutex.reset();
  auto again = open();
  std::thread([&] {
    EXPECT_EQ(again->lock(), LockResult::kAcquired);
    again->unlock();
  }).join();
}

TEST_F(NamedMutexTest, stays_with_another_thread_when_the_object_is_closed) {
  auto mutex = open();
  auto other = open();
  std::atomic<int> stage = 0;
  std::thread holder([&] {
    mutex->lock();
    stage = 1;
    waitUntil([&] { return stage == 2; });
  });
  waitUntil([&] { return stage == 1; });
  mutex.reset();
  stage = 2;
  holder.join();
  EXPECT_EQ(other->lock(), LockResult::kAbandoned);
}

TEST_F(NamedMutexTest, needs_a_name) { EXPECT_FALSE(NamedMutex::open("")); }

TEST_F(NamedMutexTest, leaves_nothing_open) {
  open();
  const auto before = ksv::test::openDescriptors();
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(open());
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}
