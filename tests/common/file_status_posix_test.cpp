// Bound to POSIX: fifos, sockets and links, names of any bytes, and a status that
// the system itself gives.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "ksv_file.h"
#include "ksv_path.h"
#include "tests/common/support.h"

using ksv::test::TempDirectory;
using ksv::test::writeFile;

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

TEST(FileTypes, take_any_ansi_bytes) {
  TempDirectory directory;
  writeFile("\x82\xA0", "");
  EXPECT_EQ(KSV_IsFileA("\x82\xA0"), 1);
  const std::string tooLong = "." + std::string(779, '/');
  EXPECT_EQ(KSV_IsDirectoryA(tooLong.c_str()), 1);
}

TEST(FileTypes, of_names_that_are_no_utf8_are_none) {
  TempDirectory directory;
  std::filesystem::create_directory("\xFF");
  EXPECT_EQ(KSV_IsDirectoryA("\xFF"), 1);
  EXPECT_EQ(KSV_IsDirectory("\xFF"), 0);
  EXPECT_EQ(KSV_IsExist("\xFF"), 0);
  EXPECT_EQ(KSV_RmDir("\xFF"), -1);
  EXPECT_EQ(KSV_MkDir("\xFE"), -1);
  EXPECT_TRUE(std::filesystem::exists("\xFF"));
  EXPECT_FALSE(std::filesystem::exists("\xFE"));
  writeFile("\xFF/f", "");
  EXPECT_EQ(KSV_FileRemove("\xFF/f"), -1);
  EXPECT_EQ(KSV_GetFileSizeByPath("\xFF/f"), -1);
  EXPECT_EQ(KSV_FileOpen("\xFF/f", "rb"), nullptr);
  EXPECT_EQ(KSV_FindFile("\xFF/f"), -1);
  EXPECT_TRUE(std::filesystem::exists("\xFF/f"));
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

// Values that differ from each other, so that no field can stand for another one.
TEST(Stat, tells_times_owner_and_permissions_apart) {
  TempDirectory directory;
  writeFile("f", "123");
  ASSERT_EQ(chmod("f", 07641), 0);
  const timespec times[2] = {{1000000001, 0}, {1000000002, 999999999}};
  ASSERT_EQ(utimensat(AT_FDCWD, "f", times, 0), 0);
  struct stat wanted;
  ASSERT_EQ(stat("f", &wanted), 0);
  KsvStat got;
  ASSERT_EQ(KSV_STAT("f", &got), 0);
  EXPECT_EQ(got.mode, 0x8000 | 07641);
  EXPECT_EQ(got.atime, 1000000001);
  EXPECT_EQ(got.mtime, 1000000002);
  EXPECT_EQ(got.ctime, wanted.st_ctime);
  EXPECT_GT(got.ctime, 1000000002);
}

TEST(Stat, tells_user_and_group_apart_and_keeps_their_low_bits) {
  if (geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  TempDirectory directory;
  writeFile("f", "");
  KsvStat got;
  ASSERT_EQ(chown("f", 1234, 4321), 0);
  ASSERT_EQ(KSV_STAT("f", &got), 0);
  EXPECT_EQ(got.uid, 1234);
  EXPECT_EQ(got.gid, 4321);
  ASSERT_EQ(chown("f", 0x18001, 0x2FFFE), 0);
  ASSERT_EQ(KSV_STAT("f", &got), 0);
  EXPECT_EQ(got.uid, int16_t{-0x7FFF});
  EXPECT_EQ(got.gid, int16_t{-2});
}

TEST(Stat, tells_the_device_that_a_file_is_from_the_one_that_it_is_on) {
  struct stat wanted;
  ASSERT_EQ(stat("/dev/zero", &wanted), 0);
  ASSERT_NE(wanted.st_rdev, wanted.st_dev);
  ASSERT_NE(wanted.st_rdev, 0u);
  KsvStat got;
  ASSERT_EQ(KSV_STAT("/dev/zero", &got), 0);
  EXPECT_EQ(got.dev, static_cast<uint32_t>(wanted.st_dev));
  EXPECT_EQ(got.rdev, static_cast<uint32_t>(wanted.st_rdev));
  EXPECT_EQ(got.mode & 0xF000, 0x2000);
}
