// Runs the tests, or the body of a child process that a test has started.
#include "tests/system/system.h"
#include "tests/system/test_program.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = ksv::test::commandLine(argc, argv);
  if (arguments.size() > 2 && arguments[1] == ksv::test::kChildOption) {
    return ksv::test::runChildBody(arguments[2], {arguments.begin() + 3, arguments.end()});
  }
  return ksv::test::runTests(argc, argv);
}
