// Bound to Windows: the lock is a mutex of the system, which other programs know by
// its name as well.
#include <windows.h>

#include "tests/common/named_mutex_fixture.h"

using ksv::test::NamedMutexTest;

void ksv::test::forgetLock(const std::string& name) {
  const HANDLE mutex = OpenMutexA(SYNCHRONIZE, FALSE, name.c_str());
  EXPECT_EQ(mutex, nullptr) << "the system keeps a lock that nobody has open";
  if (mutex != nullptr) CloseHandle(mutex);
}

TEST_F(NamedMutexTest, is_the_mutex_of_that_name) {
  const auto mutex = open();
  ASSERT_TRUE(mutex);
  const HANDLE same = OpenMutexA(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, name().c_str());
  ASSERT_NE(same, nullptr);
  EXPECT_EQ(mutex->lock(), ksv::platform::NamedMutex::LockResult::kAcquired);
  EXPECT_TRUE(ReleaseMutex(same));
  EXPECT_FALSE(mutex->unlock());
  CloseHandle(same);
}

TEST_F(NamedMutexTest, is_refused_when_the_name_is_another_kind_of_object) {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, name().c_str());
  ASSERT_NE(event, nullptr);
  EXPECT_FALSE(open());
  CloseHandle(event);
  EXPECT_TRUE(open());
}
