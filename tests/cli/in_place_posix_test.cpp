// Files converted where they are, and temporary files. Bound to POSIX: signals, owners,
// permissions, times in nanoseconds, extended attributes and links.

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <thread>

#include "command.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

const std::string kUtf8 = "あ";
const std::string kShiftJis = bytes({0x82, 0xA0});

class InPlaceOnPosix : public CommandTest {
 protected:
  InPlaceOnPosix() {
    // Some of the signals would leave a core file among those that are looked for.
    const rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
  }

  struct stat status(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(path(name).c_str(), &status), 0) << name;
    return status;
  }

  void setTimes(const std::string& name, const timespec& read, const timespec& written) const {
    const timespec times[2] = {read, written};
    EXPECT_EQ(::utimensat(AT_FDCWD, path(name).c_str(), times, 0), 0);
  }

  std::string attribute(const std::string& file, const std::string& name) const {
    char value[256];
    const ssize_t length = ::getxattr(path(file).c_str(), name.c_str(), value, sizeof value);
    return length < 0 ? "none" : std::string(value, static_cast<size_t>(length));
  }

  bool setAttribute(const std::string& file, const std::string& name,
                    const std::string& value) const {
    return ::setxattr(path(file).c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
  }

  Outcome toShiftJis(const std::vector<std::string>& arguments) const {
    std::vector<std::string> all = {"convert", "-f", "utf8", "-t", "sjis"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return ksv(all);
  }
};

TEST_F(InPlaceOnPosix, keeps_the_times_to_the_nanosecond) {
  for (const time_t seconds : {1'000'000'000L, -5L}) {
    write("a", kUtf8);
    setTimes("a", {seconds, 123'456'789}, {seconds + 1, 987'654'321});
    EXPECT_EQ(toShiftJis({"--in-place", "a"}).status, 0);
    const struct stat now = status("a");
    EXPECT_EQ(now.st_atim.tv_sec, seconds);
    EXPECT_EQ(now.st_atim.tv_nsec, 123'456'789);
    EXPECT_EQ(now.st_mtim.tv_sec, seconds + 1);
    EXPECT_EQ(now.st_mtim.tv_nsec, 987'654'321);
    EXPECT_EQ(read("a"), kShiftJis);
  }
}

TEST_F(InPlaceOnPosix, gives_the_present_time_when_asked_to) {
  write("a", kUtf8);
  setTimes("a", {1000, 0}, {1000, 0});
  EXPECT_EQ(toShiftJis({"--in-place", "--touch", "a"}).status, 0);
  EXPECT_GT(status("a").st_mtim.tv_sec, 1'000'000'000);
  EXPECT_EQ(toShiftJis({"--touch", "a"}).status, 2);
}

TEST_F(InPlaceOnPosix, keeps_owner_group_and_permissions) {
  write("a", kUtf8);
  const bool mayGiveAway = ::chown(path("a").c_str(), 4321, 1234) == 0;
  ::chmod(path("a").c_str(), 02751);
  EXPECT_EQ(toShiftJis({"--in-place", "a"}).status, 0);
  EXPECT_EQ(read("a"), kShiftJis);
  EXPECT_EQ(status("a").st_mode & 07777, 02751u);
  EXPECT_EQ(status("a").st_uid, mayGiveAway ? 4321 : ::getuid());
  EXPECT_EQ(status("a").st_gid, mayGiveAway ? 1234 : ::getgid());
}

TEST_F(InPlaceOnPosix, leaves_a_file_whose_owner_it_cannot_keep) {
  write("a", kUtf8);
  if (::chown(path("a").c_str(), 4321, 1234) != 0) GTEST_SKIP() << "only root has such files";
  Outcome outcome;
  std::thread([&] {
    ::prctl(PR_CAPBSET_DROP, CAP_CHOWN);
    outcome = toShiftJis({"--in-place=.bak", "a"});
  }).join();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(
      outcome.err,
      "ksv: a: cannot write a: its owner and group cannot be kept: Operation not permitted\n");
  EXPECT_EQ(read("a"), kUtf8);
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

TEST_F(InPlaceOnPosix, keeps_extended_attributes) {
  write("a", kUtf8);
  const std::string large(3000, 'x');
  if (!setAttribute("a", "user.origin", "scanner 3") || !setAttribute("a", "user.large", large))
    GTEST_SKIP() << "the volume has no extended attributes";
  EXPECT_EQ(toShiftJis({"--in-place", "a"}).status, 0);
  EXPECT_EQ(read("a"), kShiftJis);
  EXPECT_EQ(attribute("a", "user.origin"), "scanner 3");
  EXPECT_EQ(::getxattr(path("a").c_str(), "user.large", nullptr, 0), 3000);
}

// An access list as the system stores it: version 2, then tag, permissions and number of
// an entry: the owner, user 4321, the group, the mask, all others.
TEST_F(InPlaceOnPosix, keeps_the_access_list_and_takes_none_from_the_directory) {
  const std::string list =
      bytes({2, 0, 0, 0, 1, 0, 6, 0, 255, 255, 255, 255, 2, 0, 6, 0, 0xE1, 0x10, 0, 0}) +
      bytes({4, 0, 4, 0, 255, 255, 255, 255, 16, 0, 6, 0, 255, 255, 255, 255}) +
      bytes({32, 0, 0, 0, 255, 255, 255, 255});
  write("a", kUtf8);
  if (!setAttribute("a", "system.posix_acl_access", list))
    GTEST_SKIP() << "the volume has no access lists";
  EXPECT_EQ(toShiftJis({"--in-place", "a"}).status, 0);
  EXPECT_EQ(attribute("a", "system.posix_acl_access"), list);
  EXPECT_EQ(status("a").st_mode & 0777, 0660u);

  write("b", kUtf8);
  ::chmod(path("b").c_str(), 0640);
  ASSERT_TRUE(setAttribute(".", "system.posix_acl_default", list));
  EXPECT_EQ(toShiftJis({"--in-place", "b"}).status, 0);
  EXPECT_EQ(attribute("b", "system.posix_acl_access"), "none");
  EXPECT_EQ(status("b").st_mode & 0777, 0640u);
}

TEST_F(InPlaceOnPosix, leaves_a_file_that_stays_the_same_alone) {
  write("a", "plain\n");
  setTimes("a", {1000, 5}, {2000, 7});
  const struct stat before = status("a");
  const Outcome outcome = toShiftJis({"--in-place=.bak", "a"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  const struct stat after = status("a");
  EXPECT_EQ(after.st_ino, before.st_ino);
  EXPECT_EQ(after.st_mtim.tv_sec, 2000);
  EXPECT_EQ(after.st_mtim.tv_nsec, 7);
  EXPECT_EQ(after.st_ctim.tv_sec, before.st_ctim.tv_sec);
  EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

TEST_F(InPlaceOnPosix, leaves_a_file_with_several_names_as_it_is) {
  write("a", kUtf8);
  std::filesystem::create_hard_link(path("a"), path("b"));
  const Outcome outcome = toShiftJis({"--in-place=.bak", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: a: cannot write a: it has 2 names (hard links), and the others would keep the "
            "older text\n");
  EXPECT_EQ(read("a"), kUtf8);
  EXPECT_EQ(status("a").st_ino, status("b").st_ino);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(InPlaceOnPosix, follows_a_link_to_a_file_in_another_directory) {
  std::filesystem::create_directory(path("deep"));
  write("deep/real", kUtf8);
  std::filesystem::create_symlink("deep/real", path("link"));
  EXPECT_EQ(toShiftJis({"--in-place", "link"}).status, 0);
  EXPECT_EQ(std::filesystem::read_symlink(path("link")), "deep/real");
  EXPECT_EQ(read("deep/real"), kShiftJis);
  EXPECT_EQ(files("deep"), (std::vector<std::string>{"real"}));
}

// A link that stands under the name of the backup leads to somebody's file.
TEST_F(InPlaceOnPosix, takes_a_dangling_link_for_a_backup_that_exists) {
  write("a", kUtf8);
  std::filesystem::create_symlink("nowhere", path("a.bak"));
  const Outcome outcome = toShiftJis({"--in-place=.bak", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: a: cannot write a: the backup a.bak exists already\n");
  EXPECT_EQ(read("a"), kUtf8);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.bak"}));
}

// The command reads the first half of a text when the other half changes.
TEST_F(InPlaceOnPosix, does_not_overwrite_what_another_program_wrote_meanwhile) {
  write("a", std::string(60'000'000, 'a') + kUtf8);
  const Stream null = openNullDevice();
  const Stream err = openForAppending(path("err"));
  const Process process =
      start({"convert", "-f", "utf8", "-t", "sjis", "--in-place=.bak", "a"}, {null, null, err});
  EXPECT_TRUE(ksv::test::waitUntil([this] { return files().size() == 3; }));
  setTimes("a", {1000, 0}, {1000, 0});
  EXPECT_EQ(finishCommand(process).status, 1);
  closeStreams({null, err});
  EXPECT_EQ(read("err"), "ksv: a: cannot write a: another program has changed it meanwhile\n");
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "err"}));
}

TEST_F(InPlaceOnPosix, tells_a_limit_of_sizes_and_leaves_nothing_behind) {
  write("a", std::string(100'000, 'a') + kUtf8);
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small = {50'000, before.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  const Outcome outcome = toShiftJis({"--in-place", "a"});
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: a: cannot write a: File too large\n");
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

// The command waits for more of its input, with a result begun, when the signal comes.
TEST_F(InPlaceOnPosix, leaves_nothing_behind_any_signal_that_can_be_caught) {
  for (int number = 1; number <= SIGRTMAX; ++number) {
    struct sigaction action {};
    const bool ends = number != SIGKILL && number != SIGSTOP && number != SIGPIPE &&
                      number != SIGXFSZ && ::sigaction(number, nullptr, &action) == 0;
    const std::string name = ::sigabbrev_np(number) == nullptr ? "RT" : ::sigabbrev_np(number);
    if (!ends || std::string("CHLD CONT TSTP TTIN TTOU URG WINCH").find(name) != std::string::npos)
      continue;
    // Faults of the program itself, which the sanitizers catch and report.
    const bool isFault = std::string("ABRT BUS FPE ILL SEGV TRAP").find(name) != std::string::npos;
    if (KSV_UNDER_SANITIZERS && isFault) continue;
    const Pipe pipe = makePipe();
    const Stream null = openNullDevice();
    const Process process =
        start({"convert", "-f", "utf8", "-t", "sjis", "-o", "out"}, {pipe.reading, null, null});
    writeTo(pipe.writing, "abcdefgh");
    EXPECT_TRUE(ksv::test::waitUntil([this] { return files().size() == 1; }));
    ::kill(static_cast<pid_t>(process), number);
    EXPECT_EQ(finishCommand(process).signal, number) << name;
    closeStreams({pipe.reading, pipe.writing, null});
    ASSERT_EQ(files(), std::vector<std::string>()) << "signal " << number << " " << name;
  }
}

TEST_F(InPlaceOnPosix, removes_the_copy_of_standard_input_at_a_signal) {
  std::filesystem::create_directory(path("temporary"));
  setEnvironment("TMPDIR", path("temporary"));
  for (const int number : {SIGINT, SIGQUIT, SIGTERM}) {
    const Pipe pipe = makePipe();
    const Stream null = openNullDevice();
    const Process process = start({"summary"}, {pipe.reading, null, null});
    writeTo(pipe.writing, "abcdefgh");
    EXPECT_TRUE(ksv::test::waitUntil([this] { return files("temporary").size() == 1; }));
    ::kill(static_cast<pid_t>(process), number);
    EXPECT_EQ(finishCommand(process).signal, number);
    EXPECT_EQ(files("temporary"), std::vector<std::string>());
    closeStreams({pipe.reading, pipe.writing, null});
  }
}

// Many small files on several threads, so that at any instant some file is being
// created, linked, renamed or removed.
TEST_F(InPlaceOnPosix, leaves_whole_files_only_whenever_it_is_killed) {
  constexpr int kFiles = 40;
  constexpr int kKills = 40;
  std::vector<std::string> arguments = {"convert", "-f", "utf8", "-t",
                                        "sjis",    "-j", "8",    "--in-place=.bak"};
  std::vector<std::string> names;
  for (int i = 0; i < kFiles; ++i) names.push_back("f" + std::to_string(i));
  arguments.insert(arguments.end(), names.begin(), names.end());
  const Stream null = openNullDevice();
  int interrupted = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    for (const std::string& name : files()) ::unlink(path(name).c_str());
    for (const std::string& name : names) write(name, kUtf8);
    const Process process = start(arguments, {null, null, null});
    ksv::test::waitUntil([this] { return files().size() > kFiles; });
    std::this_thread::sleep_for(std::chrono::microseconds(150 * kill));
    const int number = kill % 3 == 0 ? SIGINT : kill % 3 == 1 ? SIGQUIT : SIGTERM;
    ::kill(static_cast<pid_t>(process), number);
    interrupted += finishCommand(process).signal == number;
    for (const std::string& name : files()) {
      ASSERT_NE(name.substr(0, 5), ".ksv-") << "left behind at kill " << kill;
      const std::string text = read(name);
      const bool isBackup = name.find(".bak") != std::string::npos;
      ASSERT_TRUE(text == kUtf8 || (!isBackup && text == kShiftJis)) << name;
      ASSERT_TRUE(text == kUtf8 || exists(name + ".bak")) << name;
    }
  }
  closeStreams({null});
  EXPECT_GT(interrupted, kKills / 4) << "the kills came too late to show anything";
}

}  // namespace
}  // namespace ksv_cli_tests
