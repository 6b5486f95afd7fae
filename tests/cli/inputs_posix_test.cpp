// Which files are found below a directory. Bound to POSIX: links, sockets, rights, and names of any
// bytes.

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class FoundInputs : public CommandTest {
 protected:
  void SetUp() override { std::filesystem::create_directory(path("d")); }

  static std::string lineOf(const std::string& name) { return name + kRest; }

  // What check says of a text of ASCII.
  static constexpr char kRest[] = "\tISO-646IRV\t-\t-\t-\t-\n";
};

TEST_F(FoundInputs, are_files_that_links_lead_to_and_no_directories) {
  std::filesystem::create_directories(path("elsewhere"));
  write("elsewhere/x", "abc");
  write("d/file", "abc");
  std::filesystem::create_symlink("../elsewhere/x", path("d/link"));
  std::filesystem::create_symlink("../elsewhere", path("d/directory"));
  std::filesystem::create_symlink("..", path("d/cycle"));
  std::filesystem::create_symlink("nowhere", path("d/dangling"));
  std::filesystem::create_symlink("itself", path("d/itself"));
  std::filesystem::create_symlink("d", path("named"));
  const Outcome outcome = ksv({"check", "-r", "d"});
  EXPECT_EQ(outcome.out, lineOf("d/file") + lineOf("d/link"));
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(ksv({"check", "-r", "named"}).out, lineOf("named/file") + lineOf("named/link"))
      << "a link that is named itself is followed";
}

TEST_F(FoundInputs, are_no_pipes_sockets_and_devices) {
  write("d/file", "abc");
  ASSERT_EQ(::mkfifo(path("d/pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/null", path("d/null"));
  std::filesystem::create_symlink("pipe", path("d/to-pipe"));
  const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path("d/socket").c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const Outcome outcome = ksv({"check", "-r", "d"});
  ::close(listening);
  EXPECT_EQ(outcome.out, lineOf("d/file"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST_F(FoundInputs, may_have_names_of_any_bytes) {
  const std::string name = "d/" + bytes({0x93, 0xFA, 0x5C, 0x96, 0x7B, 0x0A, '.', 'x'});
  write(name, "abc");
  const std::string shown = "d/" + bytes({0x93, 0xFA}) + "\\\\" + bytes({0x96, 0x7B}) + "\\n.x";
  EXPECT_EQ(ksv({"check", "-r", "d", "--include", "*.x"}).out, lineOf(shown));
}

TEST_F(FoundInputs, stay_known_where_a_directory_cannot_be_read) {
  std::filesystem::create_directory(path("d/closed"));
  write("d/a", "abc");
  write("d/z", "abc");
  ::chmod(path("d/closed").c_str(), 0);
  const bool isRefused = ::open(path("d/closed").c_str(), O_RDONLY | O_DIRECTORY) < 0;
  const Outcome outcome = ksv({"check", "--json", "-r", "d"});
  ::chmod(path("d/closed").c_str(), 0700);
  if (!isRefused) GTEST_SKIP() << "rights do not hold for this user";
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: d/closed: Permission denied\n");
  const size_t closed = outcome.out.find(
      "{\"path\":\"d/closed\",\"error\":{\"reason\":\"Permission denied\",\"offset\":null}}\n");
  EXPECT_NE(closed, std::string::npos) << outcome.out;
  EXPECT_LT(outcome.out.find("\"d/a\""), closed);
  EXPECT_GT(outcome.out.find("\"d/z\""), closed);
}

TEST_F(FoundInputs, may_be_deeper_than_a_descriptor_for_each_directory_would_let_them) {
  std::string name = "d";
  for (int depth = 0; depth < 200; ++depth) {
    name += "/" + std::to_string(depth);
    std::filesystem::create_directory(path(name));
  }
  write(name + "/file", "abc");
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few = {30, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &few);
  const Outcome outcome = ksv({"check", "-r", "d"});
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(outcome.out, lineOf(name + "/file")) << outcome.err;
}

// Of a directory whose path is longer than the system takes.
TEST_F(FoundInputs, are_told_that_stand_too_deep) {
  write("d/z", "abc");
  const int before = ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(::chdir(path("d").c_str()), 0);
  const std::string name(250, 'n');
  for (int depth = 0; depth < 20; ++depth) {
    ASSERT_EQ(::mkdir(name.c_str(), 0700), 0);
    ASSERT_EQ(::chdir(name.c_str()), 0);
  }
  ASSERT_EQ(::fchdir(before), 0);
  const Outcome outcome = ksv({"check", "-r", "d"});
  ASSERT_EQ(::chdir(path("d").c_str()), 0);  // what removes the tree has to reach it
  for (int depth = 0; depth < 20; ++depth) ASSERT_EQ(::chdir(name.c_str()), 0);
  for (int depth = 0; depth < 20; ++depth) {
    ASSERT_EQ(::chdir(".."), 0);
    ASSERT_EQ(::rmdir(name.c_str()), 0);
  }
  ASSERT_EQ(::fchdir(before), 0);
  ::close(before);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, lineOf("d/z"));
  EXPECT_NE(outcome.err.find(": File name too long\n"), std::string::npos) << outcome.err;
}

TEST_F(FoundInputs, that_have_gone_meanwhile_are_told_and_the_others_done) {
  write("d/a", "abc");
  write("d/b", "abc");
  const Pipe pipe = makePipe();
  const StandardStreams streams = {pipe.reading, openForAppending(path("out")),
                                   openForAppending(path("err"))};
  // The first input is read to its end before the others are opened, and the list is made by then.
  const Process process = start({"check", "-r", "-", "d"}, streams);
  writeTo(pipe.writing, "abc");
  for (int waiting = 1; waiting != 0;) {
    ::usleep(1000);
    ASSERT_EQ(::ioctl(static_cast<int>(pipe.reading), FIONREAD, &waiting), 0);
  }
  std::filesystem::remove(path("d/a"));
  closeStreams({pipe.writing});
  EXPECT_EQ(finishCommand(process).status, 1);
  closeStreams({streams.in, streams.out, streams.err});
  EXPECT_EQ(read("err"), "ksv: d/a: No such file or directory\n");
  EXPECT_EQ(read("out"), lineOf("-") + lineOf("d/b"));
}

}  // namespace
}  // namespace ksv_cli_tests
