// What the tests of the named lock have in common.
#pragma once

#include <memory>
#include <string>

#include "common/platform.h"
#include "tests/common/support.h"

namespace ksv::test {

// Removes what a lock that nobody has open leaves in the system.
void forgetLock(const std::string& name);

// A lock of its own for each test: nothing else has the name of a new directory.
class NamedMutexTest : public testing::Test {
 protected:
  ~NamedMutexTest() override { forgetLock(name_); }

  std::unique_ptr<platform::NamedMutex> open() const {
    return platform::NamedMutex::open(name_.c_str());
  }
  const std::string& name() const { return name_; }

 private:
  TempDirectory directory_;
  const std::string name_ = directory_.path().substr(directory_.path().rfind('/') + 1);
};

}  // namespace ksv::test
