// Bound to POSIX: arguments are bytes, which need not be text.

#include "command.h"

namespace ksv_cli_tests {
namespace {

class PropertyEditsOnPosix : public CommandTest {};

TEST_F(PropertyEditsOnPosix, that_are_no_text_are_wrong_usage) {
  write("a", "any file");
  const Outcome outcome = ksv({"summary", "--set", "title=\xFF", "--in-place", "a"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err, "");
  EXPECT_EQ(read("a"), "any file");
}

}  // namespace
}  // namespace ksv_cli_tests
