// Where the results of ksv convert go.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class ConvertOutput : public CommandTest {
 protected:
  mode_t mode(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(path(name).c_str(), &status), 0);
    return status.st_mode & 07777;
  }
};

const std::string kA = bytes({0x82, 0xA0});

TEST_F(ConvertOutput, goes_to_the_file_named) {
  write("in", "あ");
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out", "in"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(read("out"), kA);
  EXPECT_EQ(files(), (std::vector<std::string>{"in", "out"}));
}

TEST_F(ConvertOutput, goes_to_standard_output_for_a_hyphen) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "-"}, "あ").out, kA);
  EXPECT_TRUE(files().empty());
}

TEST_F(ConvertOutput, has_the_permissions_of_a_new_file) {
  const mode_t mask = ::umask(022);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, "a").status, 0);
  ::umask(mask);
  EXPECT_EQ(mode("out"), 0644u);
}

TEST_F(ConvertOutput, has_the_permissions_of_the_file_it_replaces) {
  write("out", "older");
  ::chmod(path("out").c_str(), 0751);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, "a").status, 0);
  EXPECT_EQ(mode("out"), 0751u);
  EXPECT_EQ(read("out"), "a");
}

TEST_F(ConvertOutput, writes_to_a_device_as_it_is) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "/dev/null"}, "a").status, 0);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(ConvertOutput, replaces_the_file_that_a_link_leads_to) {
  write("real", "older");
  std::filesystem::create_symlink("real", path("link"));
  std::filesystem::create_symlink("link", path("chain"));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "chain"}, "a").status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_TRUE(std::filesystem::is_symlink(path("chain")));
  EXPECT_EQ(read("real"), "a");
}

TEST_F(ConvertOutput, makes_the_file_that_a_dangling_link_names) {
  std::filesystem::create_directory(path("dir"));
  std::filesystem::create_symlink("dir/new", path("link"));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "link"}, "a").status, 0);
  EXPECT_EQ(read("dir/new"), "a");
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
}

TEST_F(ConvertOutput, goes_into_a_directory_under_the_names_of_the_inputs) {
  std::filesystem::create_directories(path("from/deep"));
  write("from/a", "あ");
  write("from/deep/b", "い");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--output-dir", "to/new", "from/a",
                 "from/deep/b"})
                .status,
            0);
  EXPECT_EQ(files("to/new"), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(read("to/new/a"), kA);
}

TEST_F(ConvertOutput, replaces_its_input_in_place) {
  write("a", "あ");
  ::chmod(path("a").c_str(), 0640);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place", "a"}).status, 0);
  EXPECT_EQ(read("a"), kA);
  EXPECT_EQ(mode("a"), 0640u);
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

TEST_F(ConvertOutput, keeps_the_original_under_the_suffix) {
  write("a", "あ");
  write("a.orig", "an older backup");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.orig", "a"}).status, 0);
  EXPECT_EQ(read("a"), kA);
  EXPECT_EQ(read("a.orig"), "あ");
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.orig"}));
}

TEST_F(ConvertOutput, in_place_does_not_take_a_file_for_the_suffix) {
  write("a", "あ");
  write("b", "あ");
  EXPECT_EQ(ksv({"convert", "--in-place", "a", "-f", "utf8", "-t", "sjis", "b"}).status, 0);
  EXPECT_EQ(read("a"), kA);
  EXPECT_EQ(read("b"), kA);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(ConvertOutput, in_place_replaces_what_a_link_leads_to) {
  write("real", "あ");
  std::filesystem::create_symlink("real", path("link"));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.bak", "link"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(read("real"), kA);
  EXPECT_EQ(read("link.bak"), "あ");
}

TEST_F(ConvertOutput, in_place_leaves_a_pipe_alone) {
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "--in-place", "pipe"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: pipe: is not a regular file\n");
}

TEST_F(ConvertOutput, refuses_to_read_what_it_writes_to) {
  write("a", "あ");
  const int in = ::open("/dev/null", O_RDONLY);
  const int out = ::open(path("a").c_str(), O_WRONLY | O_APPEND);
  const int err = ::open(path("err").c_str(), O_WRONLY | O_CREAT, 0600);
  EXPECT_EQ(finish(start({"convert", "-f", "utf8", "-t", "utf8", "a"}, in, out, err)).status, 1);
  for (const int descriptor : {in, out, err}) ::close(descriptor);
  EXPECT_EQ(read("a"), "あ");
  EXPECT_EQ(read("err"), "ksv: a: is standard output as well\n");
}

TEST_F(ConvertOutput, says_nothing_about_a_reader_that_has_gone) {
  write("a", std::string(1000000, 'a'));
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  ::close(ends[0]);
  const int in = ::open("/dev/null", O_RDONLY);
  const int err = ::open(path("err").c_str(), O_WRONLY | O_CREAT, 0600);
  const Outcome outcome = finish(
      start({"convert", "-f", "utf8", "-t", "utf8", "-j", "2", "a", "a", "a"}, in, ends[1], err));
  for (const int descriptor : {in, ends[1], err}) ::close(descriptor);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(read("err"), "");
}

// The command is waiting for more input when the signal comes.
TEST_F(ConvertOutput, leaves_nothing_behind_an_interrupt) {
  for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const int null = ::open("/dev/null", O_RDWR);
    const int process =
        start({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, ends[0], null, null);
    ASSERT_EQ(::write(ends[1], "abcdefgh", 8), 8);
    for (int tries = 0; files().empty() && tries < 1000; ++tries)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(files().size(), 1u);
    ::kill(process, signalNumber);
    EXPECT_EQ(finish(process).signal, signalNumber);
    EXPECT_TRUE(files().empty());
    for (const int descriptor : {ends[0], ends[1], null}) ::close(descriptor);
  }
}

}  // namespace
}  // namespace ksv_cli_tests
