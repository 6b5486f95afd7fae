// A small file system that fills up, which Linux lets root mount where nobody else sees it.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <string>

#include "tests/system/fork_posix.h"

namespace ksv::test {

// Runs a test's body in a process of its own, with the file system mounted at place. The
// options are those of tmpfs.
template <class Body>
void onSmallDisk(const std::string& place, const char* options, Body body) {
  constexpr int kNotMounted = 77;
  const int result = runInChild([&] {
    if (unshare(CLONE_NEWNS) != 0) return kNotMounted;
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kNotMounted;
    if (mount("ksv_tests", place.c_str(), "tmpfs", 0, options) != 0) return kNotMounted;
    body();
    return testing::Test::HasFailure() ? 1 : 0;
  });
  if (result == kNotMounted) GTEST_SKIP() << "nothing can be mounted here";
  EXPECT_EQ(result, 0);
}

}  // namespace ksv::test
