// Progress shows on a terminal when there is much to do. Bound to POSIX: terminals
// are made here as pseudo terminals.

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class PosixConsole : public CommandTest {
 protected:
  ~PosixConsole() override {
    if (terminal_ >= 0) ::close(terminal_);
  }

  void SetUp() override {
    terminal_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    const bool isReady = terminal_ >= 0 && ::grantpt(terminal_) == 0 && ::unlockpt(terminal_) == 0;
    screen_ = isReady ? ::open(::ptsname(terminal_), O_RDWR | O_NOCTTY | O_CLOEXEC) : -1;
    if (screen_ < 0) GTEST_SKIP() << "this machine has no pseudo terminals";
  }

  // What a terminal that is standard error gets to see.
  std::string seen(const std::vector<std::string>& arguments) const {
    const Stream null = openNullDevice();
    const Process process = start(arguments, {null, null, screen_});
    closeStreams({screen_, null});
    std::string text;
    char buffer[4096];
    // Reading fails once the command, the last to hold the other end, has gone.
    for (ssize_t count; (count = ::read(terminal_, buffer, sizeof buffer)) > 0;)
      text.append(buffer, static_cast<size_t>(count));
    EXPECT_EQ(finishCommand(process).signal, 0);
    return text;
  }

 private:
  int terminal_ = -1;
  int screen_ = -1;  // the other end, for one command
};

TEST_F(PosixConsole, counts_files_when_there_are_several) {
  write("a", "a");
  write("b", "b");
  const std::string text = seen({"convert", "-f", "utf8", "-t", "sjis", "a", "b"});
  EXPECT_NE(text.find("of 2"), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("\r\x1B[K")) << "the line is wiped at the end";
}

TEST_F(PosixConsole, is_not_shown_for_one_small_file) {
  write("a", "a");
  EXPECT_EQ(seen({"convert", "-f", "utf8", "-t", "sjis", "a"}), "");
}

TEST_F(PosixConsole, gives_way_to_diagnostics) {
  write("a", "a");
  const std::string text = seen({"convert", "-f", "utf8", "-t", "sjis", "a", "none"});
  EXPECT_NE(text.find("\r\x1B[Kksv: none: No such file or directory"), std::string::npos) << text;
}

}  // namespace
}  // namespace ksv_cli_tests
