// Bound to POSIX: /dev/zero is a text without an end.

#include "command.h"

namespace ksv_cli_tests {
namespace {

class CutOfEndlessText : public CommandTest {};

TEST_F(CutOfEndlessText, reads_no_more_than_it_needs) {
  const Outcome outcome = ksv({"cut", "-c", "utf8", "-n", "100000", "/dev/zero"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, std::string(100000, '\0'));
}

}  // namespace
}  // namespace ksv_cli_tests
