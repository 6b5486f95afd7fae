#include "tests/common/settings_fixture.h"

using ksv::test::kCharsetKey;
using ksv::test::kCharsetVariable;
using ksv::test::kSeparator;
using ksv::test::pathOf;
using ksv::test::ScopedVariable;
using ksv::test::Settings;
using ksv::test::textOf;

TEST_F(Settings, come_from_the_environment_first) {
  configure("Charsetpath=/from/file\n");
  ScopedVariable value(kCharsetKey, "/from/environment");
  EXPECT_EQ(read(), "/from/environment" + kSeparator);
}

TEST_F(Settings, count_as_not_set_when_they_are_empty) {
  configure("Charsetpath=\nCharsetpath=/from/file\n");
  ScopedVariable value(kCharsetKey, "");
  EXPECT_EQ(read(), "/from/file" + kSeparator);
}

TEST_F(Settings, come_from_the_line_of_the_key) {
  configure(
      "# comment\r\n Charsetpath=/no\r\nCharsetpathX=/no\r\ncharsetpath=/no\r\n"
      "Charsetpath=/a b=c/日本\r\nCharsetpath=/second");
  EXPECT_EQ(read(), "/a b=c/日本" + kSeparator);
}

TEST_F(Settings, come_from_a_last_line_without_a_line_end) {
  configure("Charsetpath=/d");
  EXPECT_EQ(read(), "/d" + kSeparator);
}

TEST_F(Settings, come_from_lines_of_any_length) {
  configure("Other=" + std::string(5000, 'x') + "\nCharsetpath=/d\n");
  EXPECT_EQ(read(), "/d" + kSeparator);
}

TEST_F(Settings, come_from_the_beginning_of_lines_however_long_the_one_before_is) {
  // A line may be read in pieces, which are no lines.
  for (size_t length = 1; length < 1100; ++length) {
    configure("#" + std::string(length, 'x') + "Charsetpath=/no\nCharsetpath=/d\n");
    ASSERT_EQ(read(), "/d" + kSeparator) << length;
  }
}

TEST_F(Settings, keep_a_separator_that_is_there) {
  for (const char* path : {"/d/", "/d\\", "/"}) {
    ScopedVariable value(kCharsetKey, path);
    EXPECT_EQ(read(), path);
  }
}

TEST_F(Settings, fit_with_separator_and_terminator_or_leave_their_turn_to_the_next) {
  configure("Charsetpath=/from/file");
  {
    ScopedVariable value(kCharsetKey, std::string(258, 'd'));
    EXPECT_EQ(read(), std::string(258, 'd') + kSeparator);
  }
  {
    ScopedVariable value(kCharsetKey, std::string(258, 'd') + "/");
    EXPECT_EQ(read(), std::string(258, 'd') + "/");
  }
  ScopedVariable value(kCharsetKey, std::string(259, 'd'));
  EXPECT_EQ(read(), "/from/file" + kSeparator);
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

TEST_F(Settings, come_from_a_file_with_a_byte_order_mark) {
  configure(
      "\xEF\xBB\xBF"
      "Charsetpath=/d\n");
  EXPECT_EQ(read(), "/d" + kSeparator);
  configure(
      "Other=x\n\xEF\xBB\xBF"
      "Charsetpath=/d\n");
  EXPECT_NE(read(), "/d" + kSeparator);
}

TEST_F(Settings, of_the_charset_directory_come_from_KSV_CHARSETS_behind_all_that_is_configured) {
  ScopedVariable charsets(kCharsetVariable, "/from/variable");
  EXPECT_EQ(read(), "/from/variable" + kSeparator);
  configure("Charsetpath=/from/file\n");
  EXPECT_EQ(read(), "/from/file" + kSeparator);
  ScopedVariable value(kCharsetKey, "/from/environment");
  EXPECT_EQ(read(), "/from/environment" + kSeparator);
}

TEST_F(Settings, in_KSV_CHARSETS_that_are_empty_or_too_long_leave_their_turn_to_the_next) {
  const std::string next = read();
  for (const std::string& value : {std::string(), std::string(259, 'd')}) {
    ScopedVariable charsets(kCharsetVariable, value);
    EXPECT_EQ(read(), next);
  }
}

TEST_F(Settings, in_KSV_CHARSETS_answer_no_other_key) {
  ScopedVariable charsets(kCharsetVariable, "/from/variable");
  EXPECT_EQ(read("KsvTestKey"), "none");
}

TEST_F(Settings, come_from_the_charset_directory_beside_the_library_last) {
  const std::vector<std::string> places = ksv::platform::configurationDirectories();
  for (size_t i = 1; i < places.size(); ++i) {
    if (ksv::test::exists(places[i] + "/ksv_conf.ini")) GTEST_SKIP() << "set in " << places[i];
  }
  const auto library = ksv::platform::libraryDirectory();
  ASSERT_TRUE(library);
  const std::string charset = *library + kSeparator + "charset";
  const bool isThere = ksv::test::exists(charset);
  if (!isThere) std::filesystem::create_directory(pathOf(charset));
  EXPECT_EQ(read(), charset + kSeparator);
  configure("Charsetpath=/from/file");
  EXPECT_EQ(read(), "/from/file" + kSeparator);
  if (!isThere) std::filesystem::remove(pathOf(charset));
}

TEST_F(Settings, leave_no_descriptor_open) {
  configure("Charsetpath=/d");
  read();
  const auto before = ksv::test::openDescriptors();
  for (int i = 0; i < 20; ++i) read();
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST(LibraryDirectory, is_where_this_program_lies) {
  const auto directory = ksv::platform::libraryDirectory();
  ASSERT_TRUE(directory);
  EXPECT_EQ(textOf(pathOf(*directory)), textOf(pathOf(ksv::test::ownExecutable()).parent_path()));
}

TEST_F(Settings, say_where_they_were_found) {
  using Origin = ksv::platform::SettingOrigin;
  char buffer[260];
  Origin origin;
  configure("Charsetpath=/from/file\n");
  EXPECT_TRUE(ksv::platform::readSetting(kCharsetKey, buffer, sizeof buffer, &origin));
  EXPECT_EQ(origin.place, Origin::Place::kConfigurationFile);
  EXPECT_TRUE(origin.name.ends_with("ksv_conf.ini")) << origin.name;
  ScopedVariable value(kCharsetKey, "/from/environment");
  EXPECT_TRUE(ksv::platform::readSetting(kCharsetKey, buffer, sizeof buffer, &origin));
  EXPECT_EQ(origin.place, Origin::Place::kEnvironment);
  EXPECT_EQ(origin.name, kCharsetKey);
  EXPECT_FALSE(ksv::platform::readSetting("Nothing", buffer, sizeof buffer, &origin));
  EXPECT_EQ(origin.place, Origin::Place::kNowhere);
}
