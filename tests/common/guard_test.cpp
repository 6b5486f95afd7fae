// What keeps exceptions inside, and what counts things that a process may have.
#include "common/guard.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "common/budget.h"

namespace ksv::test {
namespace {

[[noreturn]] int lackMemory() { throw std::bad_alloc(); }
[[noreturn]] int goWrong() { throw std::runtime_error("wrong"); }

TEST(Guards, give_what_the_function_gives_or_the_failure) {
  EXPECT_EQ(guarded(-1, [] { return 7; }), 7);
  EXPECT_EQ(guarded(-1, lackMemory), -1);
  EXPECT_EQ(guarded(-1, goWrong), -1);
  EXPECT_EQ(guardedAndNoted(-1, [] { return 7; }), 7);
  EXPECT_EQ(guardedAndNoted(-1, lackMemory), -1);
  EXPECT_EQ(guardedAndNoted(-1, goWrong), -1);
}

TEST(Guards, note_memory_that_has_run_out_where_they_are_asked_to) {
  const uint64_t before = faultCount();
  guarded(0, lackMemory);
  guardedAndNoted(0, [] { return 1; });
  guardedAndNoted(0, goWrong);
  EXPECT_EQ(faultCount(), before);
  guardedAndNoted(0, lackMemory);
  EXPECT_EQ(faultCount(), before + 1);
  const Fault fault = faultBehind(before);
  EXPECT_EQ(fault.subject, FaultSubject::kMemory);
  EXPECT_EQ(fault.error, platform::outOfMemory());
}

TEST(Budgets, are_taken_up_to_their_end_and_given_back) {
  Budget budget(2);
  EXPECT_TRUE(budget.take());
  EXPECT_TRUE(budget.take());
  EXPECT_FALSE(budget.take());
  EXPECT_FALSE(budget.take()) << "refusals take nothing";
  budget.giveBack();
  EXPECT_TRUE(budget.take());
  EXPECT_FALSE(budget.take());
  EXPECT_FALSE(Budget(0).take());
}

TEST(Budgets, never_give_threads_more_than_there_is) {
  Budget budget(100);
  std::atomic<uint32_t> granted = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 100; ++i) granted += budget.take();
    });
  }
  for (std::thread& thread : threads) thread.join();
  // Threads that are refused at once may keep one another from what is left.
  EXPECT_LE(granted, 100u);
  EXPECT_GT(granted, 0u);
  uint32_t rest = 0;
  while (budget.take()) ++rest;
  EXPECT_EQ(granted + rest, 100u);
}

}  // namespace
}  // namespace ksv::test
