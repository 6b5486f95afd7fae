// Bound to Windows: text streams, files that are in use, devices that have a name
// in every directory, and modes that the C runtime must not see.
#include "ksv_file.h"
#include "ksv_path.h"
#include "tests/common/support.h"

using ksv::test::exists;
using ksv::test::readFile;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

TEST(FileOpen, opens_text_streams_where_it_is_asked_to) {
  TempDirectory directory;
  FILE* stream = KSV_FileOpen("f", "w");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(KSV_FileWrite("a\nb", 1, 3, stream), 3);
  KSV_FileClose(stream);
  EXPECT_EQ(readFile("f"), "a\r\nb");
  char line[8];
  stream = KSV_FileOpen("f", "r");
  EXPECT_STREQ(KSV_FileReadLine(line, sizeof line, stream), "a\n");
  KSV_FileClose(stream);
}

TEST(FileOpen, takes_backslashes_and_drives) {
  TempDirectory directory;
  std::filesystem::create_directory("d");
  writeFile("d/f", "x");
  std::string path = directory.path() + "/d/f";
  std::replace(path.begin(), path.end(), '/', '\\');
  for (const std::string& name : {std::string("d\\f"), path, path.substr(0, 2) + "D\\F"}) {
    FILE* stream = KSV_FileOpen(name.c_str(), "rb");
    EXPECT_NE(stream, nullptr) << name;
    KSV_FileClose(stream);
  }
}

TEST(FileOpen, refuses_a_mode_that_is_none) {
  TempDirectory directory;
  for (const char* mode : {"b", "x", "+", "日"}) EXPECT_EQ(KSV_FileOpen("f", mode), nullptr);
  EXPECT_FALSE(exists("f"));
}

TEST(FileRemove, fails_for_a_file_that_is_open) {
  TempDirectory directory;
  writeFile("f", "");
  FILE* stream = KSV_FileOpen("f", "rb");
  EXPECT_EQ(KSV_FileRemove("f"), -1);
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("f"), 1);
  EXPECT_TRUE(exists("f"));
  KSV_FileClose(stream);
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("f"), 1);
  EXPECT_FALSE(exists("f"));
}

TEST(FileTypes, call_a_device_neither) {
  EXPECT_EQ(KSV_IsFile("NUL"), 0);
  EXPECT_EQ(KSV_IsDirectory("NUL"), 0);
  EXPECT_EQ(KSV_IsExist("NUL"), 1);
}

TEST(FileTypes, refuse_ansi_text_that_is_none) {
  // A lead byte that nothing follows, where the code page has lead bytes.
  EXPECT_EQ(KSV_IsExist("a\xFF"), 0);
  EXPECT_EQ(KSV_IsFileA("a\x81"), 0);
}

TEST(Stat, gives_each_field_as_the_c_runtime_does) {
  TempDirectory directory;
  writeFile("日本.exe", "12345");
  writeFile("f", "");
  std::filesystem::create_hard_link("f", "second");
  KsvStat status;
  ASSERT_EQ(KSV_STAT("日本.exe", &status), 0);
  const auto drive = static_cast<uint32_t>(directory.path()[0] - 'A');
  EXPECT_EQ(status.dev, drive);
  EXPECT_EQ(status.rdev, drive);
  EXPECT_EQ(status.ino, 0);
  EXPECT_EQ(status.nlink, 1);
  EXPECT_EQ(status.uid, 0);
  EXPECT_EQ(status.gid, 0);
  EXPECT_EQ(status.mode, 0100777);
  EXPECT_EQ(status.size, 5);
  ASSERT_EQ(KSV_STAT("f", &status), 0);
  EXPECT_EQ(status.mode, 0100666);
  EXPECT_EQ(status.nlink, 2);
  ASSERT_EQ(KSV_STAT(".", &status), 0);
  EXPECT_EQ(status.mode, 0040777);
}
