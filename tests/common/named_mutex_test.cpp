#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "common/platform.h"
#include "tests/common/support.h"

using ksv::platform::NamedMutex;
using ksv::test::runInChild;
using LockResult = NamedMutex::LockResult;

namespace {

constexpr auto kAWhile = std::chrono::milliseconds(50);

// A lock of its own for each test.
class NamedMutexTest : public testing::Test {
 protected:
  ~NamedMutexTest() override {
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
      if (entry.path().string().starts_with(file())) std::filesystem::remove(entry.path());
    }
  }

  std::unique_ptr<NamedMutex> open() const { return NamedMutex::open(name_.c_str()); }
  std::string file() const {
    return "/dev/shm/ksv_comm." + std::to_string(geteuid()) + "." + name_;
  }

 private:
  static inline int count = 0;
  const std::string name_ = "Test." + std::to_string(getpid()) + "." + std::to_string(++count);
};

// Memory that forked processes share.
template <class Value>
class Shared {
 public:
  Shared()
      : value_(new (mmap(nullptr, sizeof(Value), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                         -1, 0)) Value()) {}
  ~Shared() { munmap(value_, sizeof(Value)); }
  Value& operator*() { return *value_; }
  Value* operator->() { return value_; }

 private:
  Value* value_;
};

template <class Condition>
void waitFor(Condition condition) {
  while (!condition()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// Forks a process that takes the lock, and kills it when it has.
void killAHolder(NamedMutex& mutex) {
  Shared<std::atomic<int>> held;
  const pid_t child = fork();
  if (child == 0) {
    mutex.lock();
    mutex.lock();
    *held = 1;
    for (;;) pause();
  }
  waitFor([&] { return *held == 1; });
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
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
  EXPECT_EQ(runInChild([&] { return mutex->unlock() ? 1 : 0; }), 0);
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
  struct Counts {
    std::atomic<bool> begin;
    volatile int counter;
    std::atomic<int> failures;
  };
  Shared<Counts> counts;
  std::vector<pid_t> children;
  for (int c = 0; c < 6; ++c) {
    children.push_back(fork());
    if (children.back() != 0) continue;
    while (!counts->begin) std::this_thread::yield();
    auto mutex = open();
    if (!mutex) _exit(1);
    for (int i = 0; i < 3000; ++i) {
      if (mutex->lock() != LockResult::kAcquired) ++counts->failures;
      counts->counter = counts->counter + 1;
      if (!mutex->unlock()) ++counts->failures;
    }
    _exit(0);
  }
  counts->begin = true;
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(counts->counter, 18000);
  EXPECT_EQ(counts->failures, 0);
}

TEST_F(NamedMutexTest, excludes_a_forked_child_from_its_parent) {
  auto mutex = open();
  mutex->lock();
  Shared<std::atomic<int>> entered;
  const pid_t child = fork();
  if (child == 0) {
    auto own = open();
    const bool acquired = own->lock() == LockResult::kAcquired;
    *entered = 1;
    _exit(acquired && own->unlock() ? 0 : 1);
  }
  std::this_thread::sleep_for(kAWhile);
  EXPECT_EQ(*entered, 0);
  mutex->unlock();
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST_F(NamedMutexTest, is_abandoned_once_after_its_holding_process_was_killed) {
  auto mutex = open();
  for (int i = 0; i < 3; ++i) {
    killAHolder(*mutex);
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
  EXPECT_EQ(runInChild([&] { return open()->lock() == LockResult::kAcquired ? 0 : 1; }), 0);
  // The object that the child did release gave the lock back.
  EXPECT_EQ(mutex->lock(), LockResult::kAcquired);
  mutex->unlock();
  EXPECT_EQ(runInChild([&] { return mutex->lock() == LockResult::kAcquired ? 0 : 1; }), 0);
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
  Shared<std::atomic<int>> held;
  const pid_t child = fork();
  if (child == 0) {
    mutex->lock();
    *held = 1;
    for (;;) pause();
  }
  waitFor([&] { return *held == 1; });
  LockResult result = LockResult::kFailed;
  std::thread waiter([&] {
    result = mutex->lock();
    mutex->unlock();
  });
  std::this_thread::sleep_for(kAWhile);
  kill(child, SIGKILL);
  waiter.join();
  EXPECT_EQ(result, LockResult::kAbandoned);
  waitpid(child, nullptr, 0);
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
  std::atomic<int> stage = 0;
  std::thread holder([&] {
    mutex->lock();
    stage = 1;
    waitFor([&] { return stage == 2; });
  });
  waitFor([&] { return stage == 1; });
  mutex.reset();
  stage = 2;
  holder.join();
  EXPECT_EQ(open()->lock(), LockResult::kAbandoned);
}

TEST_F(NamedMutexTest, survives_processes_killed_while_they_open_it) {
  for (int i = 0; i < 60; ++i) {
    std::filesystem::remove(file());
    const pid_t child = fork();
    if (child == 0) {
      for (;;) {
        std::filesystem::remove(file());
        // A name of its own is not mapped yet in this process.
        const pid_t grandchild = fork();
        if (grandchild == 0) _exit(open() ? 0 : 1);
        waitpid(grandchild, nullptr, 0);
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200 * i));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(runInChild([&] {
                auto mutex = open();
                return mutex && mutex->lock() != LockResult::kFailed ? 0 : 1;
              }),
              0);
  }
}

TEST_F(NamedMutexTest, is_private_to_the_user) {
  ASSERT_TRUE(open());
  struct stat status;
  ASSERT_EQ(stat(file().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(NamedMutexTest, leaves_files_alone_that_are_no_lock_of_this_layout) {
  const std::string victim = file() + ".victim";
  for (int kind = 0; kind < 4; ++kind) {
    std::filesystem::remove(file());
    if (kind == 0) ksv::test::writeFile(file(), "short");
    if (kind == 1) ksv::test::writeFile(file(), std::string(sizeof(pthread_mutex_t) + 16, 'x'));
    if (kind == 2) std::filesystem::create_symlink(victim, file());
    if (kind == 3) mkfifo(file().c_str(), 0600);
    chmod(file().c_str(), 0600);
    // Another place serves instead, here and in every other process.
    EXPECT_EQ(runInChild([&] {
                auto mutex = open();
                return mutex && mutex->lock() == LockResult::kAcquired ? 0 : 1;
              }),
              0)
        << kind;
    EXPECT_FALSE(ksv::test::exists(victim));
  }
  const std::string user = std::to_string(geteuid());
  const std::string name = std::filesystem::path(file()).filename().string();
  std::filesystem::remove("/tmp/" + name);
  std::error_code ignored;
  std::filesystem::remove("/run/user/" + user + "/" + name, ignored);
}

TEST_F(NamedMutexTest, refuses_names_that_are_none) {
  EXPECT_FALSE(NamedMutex::open(""));
  EXPECT_FALSE(NamedMutex::open("../x"));
  EXPECT_FALSE(NamedMutex::open(std::string(65, 'n').c_str()));
}

TEST_F(NamedMutexTest, leaves_no_descriptor_and_no_other_file_behind) {
  const auto before = ksv::test::openDescriptors();
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(open());
  EXPECT_EQ(ksv::test::openDescriptors(), before);
  const std::string name = std::filesystem::path(file()).filename().string();
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
    EXPECT_FALSE(entry.path().filename().string().starts_with(name + ".")) << entry.path();
  }
}
