// The named lock belongs to the user. These tests kill its holders, so they take one
// of their own where the system lets them: a /dev/shm that nobody else sees, theirs
// and their child processes'. Bound to Linux, which alone has private mounts; on
// Windows the lock belongs to a session, and tests run in one of their own.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace ksv::test {
namespace {

class OwnLock : public testing::Environment {
 public:
  void SetUp() override {
    if (geteuid() != 0 || unshare(CLONE_NEWNS) != 0) return;
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return;
    // Without it the tests run all the same, beside whoever else uses the lock.
    if (mount("ksv_tests", "/dev/shm", "tmpfs", 0, "mode=1777") != 0) return;
  }
};

const testing::Environment* const kOwnLock = testing::AddGlobalTestEnvironment(new OwnLock);

}  // namespace
}  // namespace ksv::test
