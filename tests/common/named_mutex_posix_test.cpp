// Bound to POSIX: the lock is a file that processes map, which they can find
// replaced, be killed over while they make it, and inherit by a fork.
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "tests/common/named_mutex_fixture.h"
#include "tests/system/fork_posix.h"

using ksv::platform::NamedMutex;
using ksv::test::NamedMutexTest;
using ksv::test::runInChild;
using LockResult = NamedMutex::LockResult;

namespace {

std::string fileOf(const std::string& name) {
  return "/dev/shm/ksv_comm." + std::to_string(geteuid()) + "." + name;
}

}  // namespace

void ksv::test::forgetLock(const std::string& name) {
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
    if (entry.path().string().starts_with(fileOf(name))) std::filesystem::remove(entry.path());
  }
}

TEST_F(NamedMutexTest, leaves_no_descriptor_open) {
  const auto before = ksv::test::openDescriptors();
  ASSERT_NE(open(), nullptr);
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST_F(NamedMutexTest, has_a_name_of_at_most_64_bytes) {
  const std::string longest = name() + std::string(64 - name().size(), 'n');
  EXPECT_NE(NamedMutex::open(longest.c_str()), nullptr);
  EXPECT_EQ(NamedMutex::open((longest + "n").c_str()), nullptr);
}

TEST_F(NamedMutexTest, is_not_inherited_by_a_fork_as_held) {
  auto mutex = open();
  mutex->lock();
  EXPECT_EQ(runInChild([&] { return mutex->unlock() ? 1 : 0; }), 0);
  mutex->unlock();
  EXPECT_EQ(runInChild([&] { return mutex->lock() == LockResult::kAcquired ? 0 : 1; }), 0);
  EXPECT_EQ(mutex->lock(), LockResult::kAbandoned);
  EXPECT_TRUE(mutex->unlock());
}

TEST_F(NamedMutexTest, survives_processes_killed_while_they_open_it) {
  for (int i = 0; i < 60; ++i) {
    std::filesystem::remove(fileOf(name()));
    const pid_t child = fork();
    if (child == 0) {
      for (;;) {
        std::filesystem::remove(fileOf(name()));
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
  ASSERT_EQ(stat(fileOf(name()).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(NamedMutexTest, leaves_files_alone_that_are_no_lock_of_this_layout) {
  const std::string victim = fileOf(name()) + ".victim";
  for (int kind = 0; kind < 4; ++kind) {
    std::filesystem::remove(fileOf(name()));
    if (kind == 0) ksv::test::writeFile(fileOf(name()), "short");
    if (kind == 1)
      ksv::test::writeFile(fileOf(name()), std::string(sizeof(pthread_mutex_t) + 16, 'x'));
    if (kind == 2) std::filesystem::create_symlink(victim, fileOf(name()));
    if (kind == 3) mkfifo(fileOf(name()).c_str(), 0600);
    chmod(fileOf(name()).c_str(), 0600);
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
  const std::string fileName = std::filesystem::path(fileOf(name())).filename().string();
  std::filesystem::remove("/tmp/" + fileName);
  std::error_code ignored;
  std::filesystem::remove("/run/user/" + user + "/" + fileName, ignored);
}

TEST_F(NamedMutexTest, leaves_no_other_file_behind) {
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(open());
  const std::string fileName = std::filesystem::path(fileOf(name())).filename().string();
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
    EXPECT_FALSE(entry.path().filename().string().starts_with(fileName + ".")) << entry.path();
  }
}

TEST_F(NamedMutexTest, refuses_names_that_are_no_file_name) {
  EXPECT_FALSE(NamedMutex::open("../x"));
  EXPECT_FALSE(NamedMutex::open(std::string(65, 'n').c_str()));
}
