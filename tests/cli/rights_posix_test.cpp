// Bound to POSIX: what the command gives up in front of everything else. A child process gives it
// up, and then asks for it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <thread>

#include "cli/system/rights.h"
#include "tests/system/fork_posix.h"

namespace ksv_cli_tests {
namespace {

constexpr int kDone = 0;

// The error with which the system answers a process that has given up its rights.
int answerAfterwards(const std::function<bool()>& call) {
  return ksv::test::runInChild([&] {
    ksv_cli::platform::dropUnneededRights();
    errno = kDone;
    return call() ? kDone : errno;
  });
}

bool startsProgram() {
  char name[] = "/bin/true";
  char* arguments[] = {name, nullptr};
  return execv(name, arguments) == 0;
}

bool startsProgramOfDescriptor() {
  char name[] = "/bin/true";
  char* arguments[] = {name, nullptr};
  char* none[] = {nullptr};
  return fexecve(open(name, O_RDONLY), arguments, none) == 0;
}

bool readsMemoryOfItsParent() {
  char byte;
  const iovec local = {&byte, 1};
  const iovec remote = {&byte, 1};
  return process_vm_readv(getppid(), &local, 1, &remote, 1, 0) == 1;
}

TEST(DroppedRights, start_no_program) {
  EXPECT_EQ(answerAfterwards(startsProgram), EPERM);
  EXPECT_EQ(answerAfterwards(startsProgramOfDescriptor), EPERM);
}

TEST(DroppedRights, open_no_socket) {
  int pair[2];
  for (const int family : {AF_INET, AF_UNIX}) {
    EXPECT_EQ(answerAfterwards([&] { return socket(family, SOCK_STREAM, 0) >= 0; }), EPERM);
  }
  EXPECT_EQ(answerAfterwards([&] { return socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0; }),
            EPERM);
}

TEST(DroppedRights, look_into_no_other_process) {
  EXPECT_EQ(answerAfterwards([] { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0; }),
            EPERM);
  EXPECT_EQ(answerAfterwards(readsMemoryOfItsParent), EPERM);
}

TEST(DroppedRights, leave_files_and_threads) {
  EXPECT_EQ(answerAfterwards([] {
              bool isRead = false;
              std::thread([&] {
                char byte;
                isRead = read(open("/proc/self/maps", O_RDONLY), &byte, 1) == 1;
              }).join();
              return isRead;
            }),
            kDone);
}

}  // namespace
}  // namespace ksv_cli_tests
