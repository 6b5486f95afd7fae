// Progress shows on a terminal, when there is much to do, and never otherwise.

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class ShownProgress : public CommandTest {
 protected:
  // What a terminal that is standard error gets to see.
  std::string seen(const std::vector<std::string>& arguments) const {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0) return "no terminal";
    const int screen = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    const int process = start(arguments, null, null, screen);
    ::close(screen);
    std::string text;
    char buffer[4096];
    // Reading fails once the command, the last to hold the other end, has gone.
    for (ssize_t count; (count = ::read(terminal, buffer, sizeof buffer)) > 0;)
      text.append(buffer, static_cast<size_t>(count));
    EXPECT_EQ(finish(process).signal, 0);
    ::close(null);
    ::close(terminal);
    return text;
  }
};

TEST_F(ShownProgress, counts_files_when_there_are_several) {
  write("a", "a");
  write("b", "b");
  const std::string text = seen({"convert", "-f", "utf8", "-t", "sjis", "a", "b"});
  EXPECT_NE(text.find("of 2"), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("\r\x1B[K")) << "the line is wiped at the end";
}

TEST_F(ShownProgress, is_not_shown_for_one_small_file) {
  write("a", "a");
  EXPECT_EQ(seen({"convert", "-f", "utf8", "-t", "sjis", "a"}), "");
}

TEST_F(ShownProgress, gives_way_to_diagnostics) {
  write("a", "a");
  const std::string text = seen({"convert", "-f", "utf8", "-t", "sjis", "a", "none"});
  EXPECT_NE(text.find("\r\x1B[Kksv: none: No such file or directory"), std::string::npos) << text;
}

TEST_F(ShownProgress, is_not_shown_where_standard_error_is_no_terminal) {
  write("a", "a");
  write("b", "b");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "a", "b"}).err, "");
}

}  // namespace
}  // namespace ksv_cli_tests
