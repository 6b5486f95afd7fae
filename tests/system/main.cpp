// Runs the tests, or the body of a child process that a test has started.
#include <gtest/gtest.h>

#include "tests/system/system.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = ksv::test::commandLine(argc, argv);
  if (arguments.size() > 2 && arguments[1] == ksv::test::kChildOption) {
    return ksv::test::runChildBody(arguments[2], {arguments.begin() + 3, arguments.end()});
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
