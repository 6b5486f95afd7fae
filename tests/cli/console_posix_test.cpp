// Progress shows on a terminal when there is much to do. Bound to POSIX: terminals
// are made here as pseudo terminals.

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "cli/system/name_characters.h"
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

  void setColumns(unsigned short columns) const {
    winsize size{};
    size.ws_row = 25;
    size.ws_col = columns;
    ASSERT_EQ(::ioctl(terminal_, TIOCSWINSZ, &size), 0);
  }

  // What a terminal that is standard error gets to see, and standard output where it is both.
  enum class Shown { kErrors, kAll };
  std::string seen(const std::vector<std::string>& arguments, Shown shown = Shown::kErrors) const {
    const Stream null = openNullDevice();
    const Process process =
        start(arguments, {null, shown == Shown::kAll ? screen_ : null, screen_});
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
  EXPECT_NE(text.find("0/2 files, 0.0 of 0.0 MB"), std::string::npos) << text;
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

TEST_F(PosixConsole, is_left_out_where_it_is_quiet) {
  write("a", "a");
  write("b", "b");
  EXPECT_EQ(seen({"convert", "--quiet", "-f", "utf8", "-t", "sjis", "a", "b"}), "");
}

TEST_F(PosixConsole, makes_way_for_what_is_written_to_the_same_terminal) {
  write("a", "first\n");
  write("b", "second\n");
  const std::string text = seen({"convert", "-f", "utf8", "-t", "sjis", "a", "b"}, Shown::kAll);
  EXPECT_NE(text.find("\r\x1B[Kfirst\r\n"), std::string::npos) << text;
}

TEST_F(PosixConsole, fits_into_the_columns_of_the_terminal) {
  setColumns(40);
  const std::string name = "ファイルの名前がたいへんに長いものです";
  write(name, std::string(200'000, 'a'));
  write("b", "b");
  const std::string text = seen({"convert", "-f", "utf8", "-t", "sjis", name, "b"});
  size_t lines = 0;
  for (size_t at = text.find('\r'); at != std::string::npos; ++lines) {
    const size_t end = text.find('\r', at + 1);
    std::string line = text.substr(at + 1, end - at - 1);
    line.resize(std::min(line.size(), line.find('\x1B')));
    EXPECT_LT(ksv_cli::columnsOf(line), 40u) << line;
    at = end;
  }
  EXPECT_GE(lines, 2u);
  EXPECT_NE(text.find("..."), std::string::npos) << text;
}

// Work that takes a while is not told more often than somebody can read.
TEST_F(PosixConsole, changes_at_most_ten_times_a_second) {
  std::vector<std::string> call = {"convert", "-f", "utf8", "-t", "sjis", "--block-size", "16"};
  for (int i = 0; i < 40; ++i) {
    const std::string name = "file" + std::to_string(i);
    write(name, std::string(20'000, 'a'));
    call.push_back(name);
  }
  const auto begin = std::chrono::steady_clock::now();
  const std::string text = seen(call);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  int lines = 0;  // those that are shown, and not what wipes them
  for (size_t at = text.find('\r'); at != std::string::npos; at = text.find('\r', at + 1))
    lines += !text.substr(at).starts_with("\r\x1B[K");
  EXPECT_GE(lines, 1) << text;
  EXPECT_LE(lines, 10 * time.count() + 1) << "the first one comes at once";
}

}  // namespace
}  // namespace ksv_cli_tests
