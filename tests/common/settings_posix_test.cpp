// Bound to POSIX: settings stand below the home directory unless told otherwise, and
// then in /etc. A child process of root has an /etc of its own.
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/common/settings_fixture.h"
#include "tests/system/fork_posix.h"

using ksv::test::ScopedVariable;
using ksv::test::Settings;
using ksv::test::writeFile;

TEST_F(Settings, stand_below_the_home_directory_by_default) {
  std::filesystem::create_directory(".config");
  writeFile(".config/ksv_conf.ini", "Charsetpath=/from/home\n");
  ScopedVariable configuration("XDG_CONFIG_HOME", std::nullopt);
  ScopedVariable home("HOME", directory_.path());
  EXPECT_EQ(read(), "/from/home/");
}

TEST_F(Settings, stand_in_one_directory_of_the_user_and_then_in_etc) {
  using Places = std::vector<std::string>;
  ScopedVariable home("HOME", "/home/somebody");
  {
    ScopedVariable configuration("XDG_CONFIG_HOME", "/some/where");
    EXPECT_EQ(ksv::platform::configurationDirectories(), (Places{"/some/where", "/etc"}));
  }
  for (const std::optional<std::string>& none : {std::optional<std::string>(), {""}}) {
    ScopedVariable configuration("XDG_CONFIG_HOME", none);
    EXPECT_EQ(ksv::platform::configurationDirectories(),
              (Places{"/home/somebody/.config", "/etc"}));
    ScopedVariable nowhere("HOME", none);
    EXPECT_EQ(ksv::platform::configurationDirectories(), Places{"/etc"});
  }
}

namespace {

bool hasOwnEtc() {
  return unshare(CLONE_NEWNS) == 0 &&
         mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("ksv_tests", "/etc", "tmpfs", 0, "mode=755") == 0;
}

}  // namespace

TEST_F(Settings, of_the_user_come_before_those_of_etc) {
  const int result = ksv::test::runInChild([] {
    if (!hasOwnEtc()) return 77;
    writeFile("/etc/ksv_conf.ini", "Charsetpath=/from/etc\nKsvTestKey=etc\n");
    if (read() != "/from/etc/") return 1;
    configure("Charsetpath=/from/user\n");
    if (read() != "/from/user/") return 2;
    if (read("KsvTestKey") != "etc") return 3;
    configure("Charsetpath=" + std::string(259, 'd') + "\n");
    return read() == "/from/etc/" ? 0 : 4;
  });
  if (result == 77) GTEST_SKIP() << "the system gives no /etc of its own to this user";
  EXPECT_EQ(result, 0);
}

namespace {

const ksv::test::ChildBody kTellCharsetDirectory(
    "tell the charset directory", [](const ksv::test::Arguments&) {
      char buffer[260];
      if (!ksv::platform::readSetting(ksv::test::kCharsetKey, buffer, sizeof buffer)) return 1;
      return std::string(buffer) == KSV_TEST_CHARSETS_OF_BUILD "/" ? 0 : 2;
    });

// This program, started from a place that has no charset directory.
int runElsewhere(const std::string& program, const char* body) {
  return ksv::test::runInChild([&] {
    execl(program.c_str(), program.c_str(), ksv::test::kChildOption, body,
          static_cast<char*>(nullptr));
    return 3;
  });
}

}  // namespace

TEST_F(Settings, of_a_program_that_lies_elsewhere_come_from_where_the_build_is_installed) {
  namespace fs = std::filesystem;
  const std::string program = directory_.path() + "/program";
  fs::copy_file(ksv::test::ownExecutable(), program);
  const fs::path charsets = KSV_TEST_CHARSETS_OF_BUILD;
  const std::string data = charsets.parent_path().parent_path();
  const int result = ksv::test::runInChild([&] {
    if (!hasOwnEtc() || mount("ksv_tests", data.c_str(), "tmpfs", 0, "mode=755") != 0) return 77;
    if (runElsewhere(program, kTellCharsetDirectory.name) != 1) return 4;
    fs::create_directories(charsets);
    return runElsewhere(program, kTellCharsetDirectory.name);
  });
  if (result == 77) GTEST_SKIP() << "the system gives no directories of its own to this user";
  EXPECT_EQ(result, 0);
}

namespace {

// The loader knows this program by the name that it was started with, which means nothing
// any more in another directory.
const ksv::test::ChildBody kTellLibraryDirectory(
    "tell the library's directory from elsewhere", [](const ksv::test::Arguments& arguments) {
      std::filesystem::current_path("/");
      return ksv::platform::libraryDirectory() == arguments[0] ? 0 : 1;
    });

}  // namespace

TEST(LibraryDirectory, is_known_to_a_program_that_was_started_by_a_relative_name) {
  const std::filesystem::path program = ksv::test::ownExecutable();
  const std::string directory = program.parent_path();
  const std::string name = "./" + program.filename().string();
  const pid_t child = ksv::test::startForked([&] {
    std::filesystem::current_path(directory);
    execl(name.c_str(), name.c_str(), ksv::test::kChildOption, kTellLibraryDirectory.name,
          directory.c_str(), static_cast<char*>(nullptr));
    return 2;
  });
  EXPECT_EQ(ksv::test::resultOf(child), 0);
}
