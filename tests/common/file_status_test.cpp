#include <cstring>

#include "ksv_file.h"
#include "ksv_path.h"
#include "tests/common/support.h"

using ksv::test::exists;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

TEST(FileTypes, tell_files_directories_and_nothing_apart) {
  TempDirectory directory;
  std::filesystem::create_directory(ksv::test::pathOf("表"));
  writeFile("日本", "");
  EXPECT_EQ(KSV_IsFile("日本"), 1);
  EXPECT_EQ(KSV_IsFile("表"), 0);
  EXPECT_EQ(KSV_IsDirectory("日本"), 0);
  EXPECT_EQ(KSV_IsDirectory("表"), 1);
  EXPECT_EQ(KSV_IsDirectory("表/"), 1);
  EXPECT_EQ(KSV_IsExist("日本"), 1);
  EXPECT_EQ(KSV_IsExist("表"), 1);
  for (auto* is : {KSV_IsFile, KSV_IsFileA, KSV_IsDirectory, KSV_IsDirectoryA, KSV_IsExist}) {
    EXPECT_EQ(is("missing"), 0);
    EXPECT_EQ(is(""), 0);
    EXPECT_EQ(is(nullptr), 0);
  }
}

TEST(FileTypes, know_names_of_the_ansi_code_page) {
  TempDirectory directory;
  const std::string word = *ksv::test::toAnsi(ksv::test::ansiWord());
  const std::string letter = *ksv::test::toAnsi(ksv::test::ansiLetter());
  std::filesystem::create_directory(ksv::test::pathOf(ksv::test::ansiLetter()));
  writeFile(ksv::test::ansiWord(), "");
  EXPECT_EQ(KSV_IsFileA(word.c_str()), 1);
  EXPECT_EQ(KSV_IsFileA(letter.c_str()), 0);
  EXPECT_EQ(KSV_IsDirectoryA(word.c_str()), 0);
  EXPECT_EQ(KSV_IsDirectoryA(letter.c_str()), 1);
}

TEST(FileTypes, refuse_ill_formed_and_long_utf8) {
  EXPECT_EQ(KSV_IsFile("\x82\xA0"), 0);
  EXPECT_EQ(KSV_IsExist("\x82\xA0"), 0);
  const std::string tooLong = "." + std::string(779, '/');
  EXPECT_EQ(KSV_IsDirectory(tooLong.c_str()), 0);
  EXPECT_EQ(KSV_IsDirectory(tooLong.substr(0, 779).c_str()), 1);
}

TEST(Stat, keeps_the_low_bits_of_a_large_size) {
  TempDirectory directory;
  writeFile("f", "");
  std::filesystem::resize_file("f", (uintmax_t{1} << 32) + 7);
  KsvStat status;
  ASSERT_EQ(KSV_STAT("f", &status), 0);
  EXPECT_EQ(status.size, 7);
  std::filesystem::resize_file("f", uintmax_t{1} << 31);
  ASSERT_EQ(KSV_STAT("f", &status), 0);
  EXPECT_EQ(status.size, INT32_MIN);
}

TEST(Stat, fails_and_writes_nothing_when_there_is_nothing) {
  KsvStat status;
  std::memset(&status, 0xEE, sizeof status);
  EXPECT_EQ(KSV_STAT("/nowhere/at/all", &status), -1);
  EXPECT_EQ(KSV_STAT("", &status), -1);
  EXPECT_EQ(KSV_STAT(nullptr, &status), -1);
  EXPECT_EQ(KSV_STAT("\xFF", &status), -1);
  EXPECT_EQ(status.dev, 0xEEEEEEEE);
  EXPECT_EQ(KSV_STAT("/", nullptr), -1);
}

TEST(Directories, are_made_and_removed) {
  TempDirectory directory;
  EXPECT_EQ(KSV_MkDir("日本"), 0);
  EXPECT_EQ(KSV_MkDir("日本"), -1);
  EXPECT_EQ(KSV_MkDir("missing/inner"), -1);
  EXPECT_EQ(KSV_IsDirectory("日本"), 1);
  writeFile("日本/f", "");
  EXPECT_EQ(KSV_RmDir("日本"), -1);
  EXPECT_EQ(KSV_RmDir("日本/f"), -1);
  EXPECT_EQ(KSV_ASC_remove("日本"), -1);
  EXPECT_EQ(KSV_ASC_remove("日本/f"), 0);
  EXPECT_EQ(KSV_RmDir("日本"), 0);
  EXPECT_FALSE(exists("日本"));
  for (const char* path : {"", "\xFF", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(KSV_MkDir(path), -1);
    EXPECT_EQ(KSV_RmDir(path), -1);
    EXPECT_EQ(KSV_ASC_remove(path), -1);
  }
}
