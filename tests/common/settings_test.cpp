#include <cstring>

#include "common/platform.h"
#include "ksv_cconv.h"
#include "tests/common/support.h"

using ksv::test::ScopedVariable;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

namespace {

constexpr char kKey[] = "Charsetpath";

// "none" when there is no value.
std::string read(const char* key = kKey, size_t size = 260) {
  char buffer[300];
  std::memset(buffer, 'x', sizeof buffer);
  if (ksv::platform::readSetting(key, buffer, size)) return buffer;
  EXPECT_EQ(buffer[0], size == 0 ? 'x' : '\0');
  return "none";
}

class Settings : public testing::Test {
 protected:
  Settings() : configuration_("XDG_CONFIG_HOME", directory_.path()), value_(kKey, std::nullopt) {}

  static void configure(const std::string& text) { writeFile("ksv_conf.ini", text); }

  TempDirectory directory_;
  ScopedVariable configuration_;
  ScopedVariable value_;
};

}  // namespace

TEST_F(Settings, come_from_the_environment_first) {
  configure("Charsetpath=/from/file\n");
  ScopedVariable value(kKey, "/from/environment");
  EXPECT_EQ(read(), "/from/environment/");
}

TEST_F(Settings, count_as_not_set_when_they_are_empty) {
  configure("Charsetpath=\nCharsetpath=/from/file\n");
  ScopedVariable value(kKey, "");
  EXPECT_EQ(read(), "/from/file/");
}

TEST_F(Settings, come_from_the_line_of_the_key) {
  configure(
      "# comment\r\n Charsetpath=/no\r\nCharsetpathX=/no\r\ncharsetpath=/no\r\n"
      "Charsetpath=/a b=c/日本\r\nCharsetpath=/second");
  EXPECT_EQ(read(), "/a b=c/日本/");
}

TEST_F(Settings, come_from_a_last_line_without_a_line_end) {
  configure("Charsetpath=/d");
  EXPECT_EQ(read(), "/d/");
}

TEST_F(Settings, come_from_lines_of_any_length) {
  configure("Other=" + std::string(5000, 'x') + "\nCharsetpath=/d\n");
  EXPECT_EQ(read(), "/d/");
}

TEST_F(Settings, stand_below_the_home_directory_by_default) {
  std::filesystem::create_directory(".config");
  writeFile(".config/ksv_conf.ini", "Charsetpath=/from/home\n");
  ScopedVariable configuration("XDG_CONFIG_HOME", std::nullopt);
  ScopedVariable home("HOME", directory_.path());
  EXPECT_EQ(read(), "/from/home/");
}

TEST_F(Settings, keep_a_separator_that_is_there) {
  for (const char* path : {"/d/", "/d\\", "/"}) {
    ScopedVariable value(kKey, path);
    EXPECT_EQ(read(), path);
  }
}

TEST_F(Settings, fit_with_separator_and_terminator_or_leave_their_turn_to_the_next) {
  configure("Charsetpath=/from/file");
  {
    ScopedVariable value(kKey, std::string(258, 'd'));
    EXPECT_EQ(read(), std::string(258, 'd') + "/");
  }
  {
    ScopedVariable value(kKey, std::string(258, 'd') + "/");
    EXPECT_EQ(read(), std::string(258, 'd') + "/");
  }
  ScopedVariable value(kKey, std::string(259, 'd'));
  EXPECT_EQ(read(), "/from/file/");
}

TEST_F(Settings, of_other_keys_have_no_separator_and_no_installed_value) {
  EXPECT_EQ(read("KsvTestKey"), "none");
  configure("KsvTestKey=value\n");
  EXPECT_EQ(read("KsvTestKey"), "value");
  EXPECT_EQ(read("KsvTestKey", 6), "value");
  EXPECT_EQ(read("KsvTestKey", 5), "none");
  EXPECT_EQ(read("KsvTestKey", 1), "none");
  EXPECT_EQ(read("KsvTestKey", 0), "none");
}

TEST_F(Settings, are_not_looked_for_in_a_directory) {
  std::filesystem::create_directory("ksv_conf.ini");
  EXPECT_EQ(read("KsvTestKey"), "none");
}

TEST_F(Settings, come_from_the_charset_directory_beside_the_library_last) {
  if (ksv::test::exists("/etc/ksv_conf.ini")) GTEST_SKIP() << "this system has a setting";
  const auto library = ksv::platform::libraryDirectory();
  ASSERT_TRUE(library);
  const std::string charset = *library + "/charset";
  const bool isThere = std::filesystem::exists(charset);
  if (!isThere) std::filesystem::create_directory(charset);
  EXPECT_EQ(read(), charset + "/");
  configure("Charsetpath=/from/file");
  EXPECT_EQ(read(), "/from/file/");
  if (!isThere) std::filesystem::remove(charset);
}

TEST_F(Settings, leave_no_descriptor_open) {
  configure("Charsetpath=/d");
  const auto before = ksv::test::openDescriptors();
  for (int i = 0; i < 20; ++i) read();
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST(LibraryDirectory, is_where_this_program_lies) {
  EXPECT_EQ(ksv::platform::libraryDirectory(),
            std::filesystem::canonical("/proc/self/exe").parent_path().string());
}
