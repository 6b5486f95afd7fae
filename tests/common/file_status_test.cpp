#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>

#include "ksv_file.h"
#include "ksv_path.h"
#include "tests/common/support.h"

using ksv::test::exists;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

TEST(FileTypes, tell_files_directories_and_nothing_apart) {
  TempDirectory directory;
  std::filesystem::create_directory("表");
  writeFile("日本", "");
  for (auto* isFile : {KSV_IsFile, KSV_IsFileA}) {
    EXPECT_EQ(isFile("日本"), 1);
    EXPECT_EQ(isFile("表"), 0);
    EXPECT_EQ(isFile("missing"), 0);
    EXPECT_EQ(isFile(""), 0);
    EXPECT_EQ(isFile(nullptr), 0);
  }
  for (auto* isDirectory : {KSV_IsDirectory, KSV_IsDirectoryA}) {
    EXPECT_EQ(isDirectory("日本"), 0);
    EXPECT_EQ(isDirectory("表"), 1);
    EXPECT_EQ(isDirectory("表/"), 1);
    EXPECT_EQ(isDirectory("missing"), 0);
    EXPECT_EQ(isDirectory(nullptr), 0);
  }
  EXPECT_EQ(KSV_IsExist("日本"), 1);
  EXPECT_EQ(KSV_IsExist("表"), 1);
  EXPECT_EQ(KSV_IsExist("missing"), 0);
  EXPECT_EQ(KSV_IsExist(nullptr), 0);
}

TEST(FileTypes, call_a_socket_a_pipe_and_a_device_neither) {
  TempDirectory directory;
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, "socket");
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  for (const char* path : {"pipe", "socket", "/dev/null"}) {
    EXPECT_EQ(KSV_IsFile(path), 0) << path;
    EXPECT_EQ(KSV_IsDirectory(path), 0) << path;
    EXPECT_EQ(KSV_IsExist(path), 1) << path;
  }
  close(listener);
}

TEST(FileTypes, follow_links) {
  TempDirectory directory;
  writeFile("f", "");
  std::filesystem::create_symlink("f", "good");
  std::filesystem::create_symlink("missing", "dangling");
  EXPECT_EQ(KSV_IsFile("good"), 1);
  EXPECT_EQ(KSV_IsExist("dangling"), 0);
}

TEST(FileTypes, refuse_ill_formed_and_long_utf8_but_not_ansi) {
  TempDirectory directory;
  writeFile("\x82\xA0", "");
  EXPECT_EQ(KSV_IsFile("\x82\xA0"), 0);
  EXPECT_EQ(KSV_IsExist("\x82\xA0"), 0);
  EXPECT_EQ(KSV_IsFileA("\x82\xA0"), 1);
  const std::string tooLong = "." + std::string(779, '/');
  EXPECT_EQ(KSV_IsDirectory(tooLong.c_str()), 0);
  EXPECT_EQ(KSV_IsDirectoryA(tooLong.c_str()), 1);
  EXPECT_EQ(KSV_IsDirectory(tooLong.substr(1).c_str()), 1);
}

TEST(Stat, gives_each_field_of_the_system) {
  TempDirectory directory;
  writeFile("日本", "12345");
  std::filesystem::create_hard_link("日本", "second");
  struct stat wanted;
  ASSERT_EQ(stat("日本", &wanted), 0);
  KsvStat got;
  std::memset(&got, 0xEE, sizeof got);
  ASSERT_EQ(KSV_STAT("日本", &got), 0);
  EXPECT_EQ(got.dev, static_cast<uint32_t>(wanted.st_dev));
  EXPECT_EQ(got.ino, static_cast<uint16_t>(wanted.st_ino));
  EXPECT_EQ(got.mode, wanted.st_mode);
  EXPECT_EQ(got.mode & 0xF000, 0x8000);
  EXPECT_EQ(got.nlink, 2);
  EXPECT_EQ(got.uid, static_cast<int16_t>(wanted.st_uid));
  EXPECT_EQ(got.gid, static_cast<int16_t>(wanted.st_gid));
  EXPECT_EQ(got.rdev, static_cast<uint32_t>(wanted.st_rdev));
  EXPECT_EQ(got.size, 5);
  EXPECT_EQ(got.atime, wanted.st_atime);
  EXPECT_EQ(got.mtime, wanted.st_mtime);
  EXPECT_EQ(got.ctime, wanted.st_ctime);
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
