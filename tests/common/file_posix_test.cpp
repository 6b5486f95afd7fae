// Bound to POSIX: names of any bytes, links without a privilege, streams over
// descriptors, and the empty files of /proc that nobody can remove.
#include <unistd.h>

#include "ksv_file.h"
#include "ksv_log.h"
#include "tests/common/support.h"

using ksv::test::exists;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

TEST(FileOpen, takes_any_ansi_bytes) {
  TempDirectory directory;
  const char name[] = "\x82\xA0";
  FILE* stream = KSV_FileOpenA(name, "wb");
  ASSERT_NE(stream, nullptr);
  KSV_FileClose(stream);
  EXPECT_EQ(KSV_FileRemoveA(name), 0);
}

TEST(FileTellSize, fails_on_a_pipe) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FILE* stream = fdopen(ends[0], "rb");
  EXPECT_EQ(KSV_FileTell(stream), -1);
  EXPECT_EQ(KSV_FileTellSize(stream), -1);
  KSV_FileClose(stream);
  close(ends[1]);
}

TEST(FileGetAndPut, fail_when_the_descriptor_below_is_closed) {
  TempDirectory directory;
  writeFile("f", "123");
  FILE* stream = KSV_FileOpen("f", "rb");
  close(fileno(stream));
  uint8_t byte;
  EXPECT_EQ(KSV_FileGetByte(stream, &byte), 0);
  EXPECT_NE(KSV_FileSeek(stream, 0, SEEK_END), 0);
  EXPECT_EQ(KSV_FileTell(stream), -1);
  EXPECT_EQ(KSV_FileTellSize(stream), -1);
  EXPECT_EQ(KSV_FileClose(stream), EOF);
}

TEST(FileGetAndPut, fail_to_write_when_the_descriptor_below_is_closed) {
  TempDirectory directory;
  const auto before = ksv::test::openDescriptors();
  FILE* stream = KSV_FileOpen("f", "wb");
  EXPECT_EQ(KSV_FilePutByte(stream, 1), 1) << "the buffer takes it";
  close(fileno(stream));
  EXPECT_NE(KSV_FileSeek(stream, 0, SEEK_SET), 0);
  EXPECT_EQ(ksv_logfprintf(KSV_LOG_ENABLED, stream, "%d", 1), 0);
  EXPECT_EQ(ksv_logfclose(KSV_LOG_ENABLED, stream), EOF);
  stream = KSV_FileOpen("f", "wb");
  setvbuf(stream, nullptr, _IONBF, 0);
  close(fileno(stream));
  EXPECT_EQ(KSV_FilePutByte(stream, 1), 0);
  EXPECT_EQ(KSV_FilePutWord(stream, 1), 0);
  EXPECT_EQ(KSV_FilePutDWord(stream, 1), 0);
  EXPECT_EQ(KSV_FileWrite("abc", 1, 3, stream), 0);
  EXPECT_EQ(KSV_FileClose(stream), EOF);
  EXPECT_EQ(ksv::test::readFile("f"), "");
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST(FileRemoveIfSizeIsZero, returns_1_when_the_empty_thing_cannot_be_removed) {
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("/proc/self/status"), 1);
}

TEST(FileRemove, removes_links_and_not_what_they_lead_to) {
  TempDirectory directory;
  std::filesystem::create_directory("d");
  std::filesystem::create_symlink("d", "link");
  EXPECT_EQ(KSV_FileRemove("link"), 0);
  EXPECT_TRUE(exists("d"));
}

TEST(FileOpen, hands_a_mode_of_any_length_on_for_ansi_paths) {
  TempDirectory directory;
  FILE* stream = KSV_FileOpenA("f", ("wb" + std::string(100, 'b')).c_str());
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(KSV_FileClose(stream), 0);
}
