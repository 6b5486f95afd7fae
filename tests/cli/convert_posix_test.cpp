// Bound to POSIX: permission bits, symbolic links, pipes in the file system, device
// files, signals, rights of a thread, and arguments that are any bytes.

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "command.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

class ConvertOnPosix : public CommandTest {
 protected:
  mode_t mode(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(path(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }
};

TEST_F(ConvertOnPosix, has_the_permissions_of_a_new_file) {
  const mode_t mask = ::umask(022);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, "a").status, 0);
  ::umask(mask);
  EXPECT_EQ(mode("out"), 0644u);
}

TEST_F(ConvertOnPosix, has_the_permissions_of_the_file_it_replaces) {
  write("out", "older");
  ::chmod(path("out").c_str(), 0751);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, "a").status, 0);
  EXPECT_EQ(mode("out"), 0751u);
  EXPECT_EQ(read("out"), "a");
}

TEST_F(ConvertOnPosix, has_the_permissions_of_its_input_in_place) {
  write("a", "あ");
  ::chmod(path("a").c_str(), 0640);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place", "a"}).status, 0);
  EXPECT_EQ(read("a"), bytes({0x82, 0xA0}));
  EXPECT_EQ(mode("a"), 0640u);
}

TEST_F(ConvertOnPosix, writes_to_a_device_as_it_is) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "/dev/null"}, "a").status, 0);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(ConvertOnPosix, replaces_the_file_that_a_link_leads_to) {
  write("real", "older");
  std::filesystem::create_symlink("real", path("link"));
  std::filesystem::create_symlink("link", path("chain"));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "chain"}, "a").status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_TRUE(std::filesystem::is_symlink(path("chain")));
  EXPECT_EQ(read("real"), "a");
}

TEST_F(ConvertOnPosix, makes_the_file_that_a_dangling_link_names) {
  std::filesystem::create_directory(path("dir"));
  std::filesystem::create_symlink("dir/new", path("link"));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "link"}, "a").status, 0);
  EXPECT_EQ(read("dir/new"), "a");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
}

TEST_F(ConvertOnPosix, in_place_replaces_what_a_link_leads_to) {
  write("real", "あ");
  std::filesystem::create_symlink("real", path("link"));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.bak", "link"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(read("real"), bytes({0x82, 0xA0}));
  EXPECT_EQ(read("link.bak"), "あ");
}

TEST_F(ConvertOnPosix, in_place_leaves_a_pipe_alone) {
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place", "pipe"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: pipe: is not a regular file\n");
}

// The command is waiting for more input when the signal comes.
TEST_F(ConvertOnPosix, leaves_nothing_behind_an_interrupt) {
  for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
    const Pipe pipe = makePipe();
    const Stream null = openNullDevice();
    const Process process =
        start({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, {pipe.reading, null, null});
    writeTo(pipe.writing, "abcdefgh");
    EXPECT_TRUE(ksv::test::waitUntil([this] { return files().size() == 1; }));
    ::kill(static_cast<pid_t>(process), signalNumber);
    EXPECT_EQ(finishCommand(process).signal, signalNumber);
    EXPECT_TRUE(files().empty());
    closeStreams({pipe.reading, pipe.writing, null});
  }
}

TEST_F(ConvertOnPosix, report_a_file_that_may_not_be_read) {
  write("secret", "a");
  ::chmod(path("secret").c_str(), 0);
  Outcome outcome;
  std::thread([&] {
    // What root starts from a thread without these rights may not read everything.
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "secret"});
  }).join();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: secret: Permission denied\n");
}

TEST_F(ConvertOnPosix, report_an_error_while_reading) {
  if (!std::filesystem::exists("/proc/self/mem")) GTEST_SKIP() << "no file that cannot be read";
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "x", "/proc/self/mem"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: /proc/self/mem: Input/output error\n");
  EXPECT_TRUE(files().empty());
}

TEST_F(ConvertOnPosix, report_a_full_disk_once) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  write("a", "a");
  const Outcome file = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "/dev/full", "a"});
  EXPECT_EQ(file.status, 1);
  EXPECT_EQ(file.err, "ksv: a: cannot write /dev/full: No space left on device\n");
}

TEST_F(ConvertOnPosix, finds_files_whose_names_are_no_utf8) {
  const std::string name = bytes({0x93, 0xFA, 0x96, 0x7B});
  write(name, bytes({0x93, 0xFA}));
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8", name}).out, "日");
}

TEST_F(ConvertOnPosix, takes_no_replacement_that_is_no_utf8) {
  for (const std::string text : {"\xFF", "\xED\xA0\x80"}) {
    const Outcome outcome =
        ksv({"convert", "-f", "utf8", "-t", "utf8", "--replacement", text}, "a");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err.find("ksv: convert: --replacement takes one character"), 0u)
        << outcome.err;
  }
}

}  // namespace
}  // namespace ksv_cli_tests
