// Progress shows on a terminal only. The tests of each system make one; here is
// what needs none.

#include "cli/system/console.h"
#include "command.h"

namespace ksv_cli_tests {
namespace {

class ShownProgress : public CommandTest {};

TEST_F(ShownProgress, is_not_shown_where_standard_error_is_no_terminal) {
  write("a", "a");
  write("b", "b");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "a", "b"}).err, "");
}

TEST(LineChange, wipes_what_is_longer_than_the_new_line) {
  EXPECT_EQ(ksv_cli::lineChange(5, "abc", true), "\rabc\x1B[K");
  EXPECT_EQ(ksv_cli::lineChange(5, "abc", false), "\rabc  \b\b");
  EXPECT_EQ(ksv_cli::lineChange(2, "abc", false), "\rabc");
  EXPECT_EQ(ksv_cli::lineChange(3, "", false), "\r   \b\b\b");
}

}  // namespace
}  // namespace ksv_cli_tests
