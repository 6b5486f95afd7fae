#include <cstring>

#include "ksv_file.h"
#include "tests/common/print_to.h"
#include "tests/common/support.h"

using ksv::test::exists;
using ksv::test::printTo;
using ksv::test::readFile;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

namespace {

// A path of so many units that names the file "f" in the current directory.
std::string pathOfUnits(size_t units) {
  std::string path(units, '/');
  path.front() = '.';
  path.back() = 'f';
  return path;
}

}  // namespace

TEST(FileOpen, opens_japanese_names) {
  TempDirectory directory;
  constexpr char kJapanese[] = "日本語 表é.txt";
  FILE* stream = KSV_FileOpen(kJapanese, "wb");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(KSV_FileWrite("abc", 1, 3, stream), 3);
  EXPECT_EQ(KSV_FileClose(stream), 0);
  EXPECT_EQ(readFile(kJapanese), "abc");
  EXPECT_EQ(KSV_GetFileSizeByPath(kJapanese), 3);
  EXPECT_EQ(KSV_FileRemove(kJapanese), 0);
  EXPECT_FALSE(exists(kJapanese));
}

TEST(FileOpen, opens_names_of_the_ansi_code_page) {
  TempDirectory directory;
  const std::string name = ksv::test::ansiWord() + " " + ksv::test::ansiLetter() + ".txt";
  const std::string ansi = *ksv::test::toAnsi(name);
  FILE* stream = KSV_FileOpenA(ansi.c_str(), "wb");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(KSV_FileWrite("abc", 1, 3, stream), 3);
  EXPECT_EQ(KSV_FileClose(stream), 0);
  EXPECT_EQ(readFile(name), "abc");
  EXPECT_EQ(KSV_FileRemoveA(ansi.c_str()), 0);
  EXPECT_FALSE(exists(name));
}

TEST(FileOpen, refuses_ill_formed_names) {
  TempDirectory directory;
  EXPECT_EQ(KSV_FileOpen("\x82\xA0", "wb"), nullptr);
  EXPECT_EQ(KSV_GetFileSizeByPath("\x82\xA0"), -1);
  EXPECT_EQ(KSV_FileRemove("\x82\xA0"), -1);
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(FileOpen, gives_null_for_what_is_missing_empty_or_null) {
  TempDirectory directory;
  for (auto* open : {KSV_FileOpen, KSV_FileOpenA}) {
    EXPECT_EQ(open("missing", "rb"), nullptr);
    EXPECT_EQ(open("", "rb"), nullptr);
    EXPECT_EQ(open("", "wb"), nullptr);
    EXPECT_EQ(open(nullptr, "rb"), nullptr);
    EXPECT_EQ(open("f", nullptr), nullptr);
    EXPECT_EQ(open("f", ""), nullptr);
  }
}

TEST(FileOpen, gives_null_for_a_directory_and_leaves_no_descriptor_open) {
  TempDirectory directory;
  const auto before = ksv::test::openDescriptors();
  for (auto* open : {KSV_FileOpen, KSV_FileOpenA}) {
    for (const char* mode : {"r", "rb", "r+b", "wb", "ab"}) {
      EXPECT_EQ(open(".", mode), nullptr) << mode;
    }
  }
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST(FileOpen, takes_paths_of_779_units_and_not_of_780) {
  TempDirectory directory;
  writeFile("f", "");
  const std::string fits = pathOfUnits(779);
  const std::string tooLong = pathOfUnits(780);
  ASSERT_EQ(fits.size(), 779u);
  FILE* stream = KSV_FileOpen(fits.c_str(), "rb");
  EXPECT_NE(stream, nullptr);
  KSV_FileClose(stream);
  EXPECT_EQ(KSV_FileOpen(tooLong.c_str(), "rb"), nullptr);
  stream = KSV_FileOpenA(tooLong.c_str(), "rb");
  EXPECT_NE(stream, nullptr);
  KSV_FileClose(stream);
  EXPECT_EQ(KSV_GetFileSizeByPath(fits.c_str()), 0);
  EXPECT_EQ(KSV_GetFileSizeByPath(tooLong.c_str()), -1);
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero(tooLong.c_str()), -1);
  EXPECT_EQ(KSV_FileRemove(tooLong.c_str()), -1);
  EXPECT_TRUE(exists("f"));
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero(fits.c_str()), 1);
  EXPECT_FALSE(exists("f"));
}

TEST(FileOpen, takes_modes_of_31_units_and_not_of_32) {
  TempDirectory directory;
  writeFile("f", "");
  FILE* stream = KSV_FileOpen("f", ("rb" + std::string(29, ' ')).c_str());
  EXPECT_NE(stream, nullptr);
  KSV_FileClose(stream);
  EXPECT_EQ(KSV_FileOpen("f", ("rb" + std::string(30, ' ')).c_str()), nullptr);
  EXPECT_EQ(KSV_FileOpen("f", "r\xFF"), nullptr);
}

TEST(FileRead, counts_whole_elements) {
  TempDirectory directory;
  writeFile("f", "1234567");
  FILE* stream = KSV_FileOpen("f", "rb");
  char buffer[16] = {};
  EXPECT_EQ(KSV_FileRead(buffer, 3, 5, stream), 2);
  EXPECT_STREQ(buffer, "1234567");
  EXPECT_EQ(KSV_FileRead(buffer, 1, 1, stream), 0);
  KSV_FileClose(stream);
}

TEST(FileRead, reads_and_writes_nothing_for_zero_negative_and_null) {
  TempDirectory directory;
  writeFile("f", "1234567");
  FILE* stream = KSV_FileOpen("f", "r+b");
  char buffer[16] = {};
  EXPECT_EQ(KSV_FileRead(buffer, 0, 5, stream), 0);
  EXPECT_EQ(KSV_FileRead(buffer, 5, 0, stream), 0);
  EXPECT_EQ(KSV_FileRead(buffer, -1, 1, stream), 0);
  EXPECT_EQ(KSV_FileRead(buffer, 1, -1, stream), 0);
  EXPECT_EQ(KSV_FileRead(buffer, -1, -1, stream), 0);
  EXPECT_EQ(KSV_FileRead(nullptr, 1, 1, stream), 0);
  EXPECT_EQ(KSV_FileRead(buffer, 1, 1, nullptr), 0);
  EXPECT_EQ(KSV_FileWrite(buffer, -1, -1, stream), 0);
  EXPECT_EQ(KSV_FileWrite(nullptr, 1, 1, stream), 0);
  EXPECT_EQ(KSV_FileWrite(buffer, 1, 1, nullptr), 0);
  EXPECT_EQ(KSV_FileTell(stream), 0);
  KSV_FileClose(stream);
  EXPECT_EQ(readFile("f"), "1234567");
  EXPECT_EQ(KSV_FileClose(nullptr), EOF);
}

TEST(FileReadLine, keeps_the_newline_and_stops_at_the_capacity) {
  TempDirectory directory;
  writeFile("f", "ab\nlonger\r\nlast");
  FILE* stream = KSV_FileOpen("f", "rb");
  char line[16];
  EXPECT_EQ(KSV_FileReadLine(line, 0, stream), nullptr);
  EXPECT_EQ(KSV_FileReadLine(line, -5, stream), nullptr);
  EXPECT_EQ(KSV_FileReadLine(line, 16, stream), line);
  EXPECT_STREQ(line, "ab\n");
  EXPECT_EQ(KSV_FileReadLine(line, 5, stream), line);
  EXPECT_STREQ(line, "long");
  EXPECT_EQ(KSV_FileReadLine(line, 16, stream), line);
  EXPECT_STREQ(line, "er\r\n");
  EXPECT_EQ(KSV_FileReadLine(line, 1, stream), line);
  EXPECT_STREQ(line, "");
  EXPECT_EQ(KSV_FileReadLine(line, 16, stream), line);
  EXPECT_STREQ(line, "last");
  EXPECT_EQ(KSV_FileReadLine(line, 16, stream), nullptr);
  EXPECT_EQ(KSV_FileReadLine(line, 1, stream), line) << "nothing is read, so no end is seen";
  EXPECT_STREQ(line, "");
  EXPECT_EQ(KSV_FileReadLine(line, 16, nullptr), nullptr);
  KSV_FileClose(stream);
}

TEST(FileSeek, reaches_beyond_4_gigabytes) {
  TempDirectory directory;
  constexpr int64_t kFar = int64_t{5} << 30;
  FILE* stream = KSV_FileOpen("f", "w+b");
  EXPECT_EQ(KSV_FileSeek(stream, kFar, SEEK_SET), 0);
  EXPECT_EQ(KSV_FilePutByte(stream, 'x'), 1);
  EXPECT_EQ(KSV_FileTell(stream), kFar + 1);
  EXPECT_EQ(KSV_FileTellSize(stream), kFar + 1);
  EXPECT_EQ(KSV_FileSeek(stream, -kFar, SEEK_CUR), 0);
  EXPECT_EQ(KSV_FileTell(stream), 1);
  KSV_FileClose(stream);
  EXPECT_EQ(KSV_GetFileSizeByPath("f"), kFar + 1);
}

TEST(FileSeek, fails_before_the_start_and_for_an_unknown_origin) {
  TempDirectory directory;
  writeFile("f", "123");
  FILE* stream = KSV_FileOpen("f", "rb");
  EXPECT_NE(KSV_FileSeek(stream, -1, SEEK_SET), 0);
  EXPECT_NE(KSV_FileSeek(stream, 0, 99), 0);
  EXPECT_NE(KSV_FileSeek(nullptr, 0, SEEK_SET), 0);
  EXPECT_EQ(KSV_FileSeek(stream, -2, SEEK_END), 0);
  EXPECT_EQ(KSV_FileTell(stream), 1);
  EXPECT_EQ(KSV_FileTell(nullptr), -1);
  EXPECT_EQ(KSV_FileTellSize(nullptr), -1);
  KSV_FileClose(stream);
}

TEST(FileTellSize, is_the_same_at_any_position_and_keeps_it) {
  TempDirectory directory;
  writeFile("f", "12345");
  FILE* stream = KSV_FileOpen("f", "rb");
  for (const int64_t position : {0, 1, 5, 9}) {
    KSV_FileSeek(stream, position, SEEK_SET);
    EXPECT_EQ(KSV_FileTellSize(stream), 5);
    EXPECT_EQ(KSV_FileTell(stream), position);
  }
  KSV_FileClose(stream);
}

TEST(FileGetAndPut, use_host_order) {
  TempDirectory directory;
  FILE* stream = KSV_FileOpen("f", "w+b");
  EXPECT_EQ(KSV_FilePutByte(stream, 0x01), 1);
  EXPECT_EQ(KSV_FilePutWord(stream, 0x0302), 1);
  EXPECT_EQ(KSV_FilePutDWord(stream, 0x07060504), 1);
  KSV_FileSeek(stream, 0, SEEK_SET);
  uint8_t byte = 0;
  uint16_t word = 0;
  uint32_t doubleWord = 0;
  EXPECT_EQ(KSV_FileGetByte(stream, &byte), 1);
  EXPECT_EQ(KSV_FileGetWord(stream, &word), 1);
  EXPECT_EQ(KSV_FileGetDWord(stream, &doubleWord), 1);
  EXPECT_EQ(byte, 1);
  EXPECT_EQ(word, 0x0302);
  EXPECT_EQ(doubleWord, 0x07060504u);
  EXPECT_EQ(KSV_FileGetByte(stream, &byte), 0);
  KSV_FileClose(stream);
  EXPECT_EQ(readFile("f"), "\x01\x02\x03\x04\x05\x06\x07");
}

TEST(FileGetAndPut, return_0_for_a_value_that_the_end_cuts) {
  TempDirectory directory;
  writeFile("f", "123");
  FILE* stream = KSV_FileOpen("f", "rb");
  uint32_t doubleWord = 0;
  EXPECT_EQ(KSV_FileGetDWord(stream, &doubleWord), 0);
  uint16_t word = 0;
  EXPECT_EQ(KSV_FileGetWord(stream, &word), 0);
  KSV_FileClose(stream);
}

TEST(FileGetAndPut, fail_on_streams_of_the_other_direction) {
  TempDirectory directory;
  writeFile("f", "123");
  FILE* stream = KSV_FileOpen("f", "rb");
  EXPECT_EQ(KSV_FilePutByte(stream, 1), 0);
  EXPECT_EQ(KSV_FileWrite("a", 1, 1, stream), 0);
  EXPECT_LT(printTo(stream, "%d", 1), 0);
  KSV_FileClose(stream);
  stream = KSV_FileOpen("f", "wb");
  uint8_t byte;
  char line[4];
  EXPECT_EQ(KSV_FileGetByte(stream, &byte), 0);
  EXPECT_EQ(KSV_FileReadLine(line, 4, stream), nullptr);
  KSV_FileClose(stream);
}

TEST(VfPrintf, writes_and_counts_bytes) {
  TempDirectory directory;
  FILE* stream = KSV_FileOpen("f", "wb");
  EXPECT_EQ(printTo(stream, "%d-%s", 12, "あ"), 6);
  EXPECT_LT(printTo(nullptr, "x"), 0);
  EXPECT_LT(printTo(stream, nullptr), 0);
  KSV_FileClose(stream);
  EXPECT_EQ(readFile("f"), "12-あ");
}

TEST(FileRemove, removes_no_directories) {
  TempDirectory directory;
  std::filesystem::create_directory("d");
  for (auto* remove : {KSV_FileRemove, KSV_FileRemoveA}) {
    EXPECT_EQ(remove("d"), -1);
    EXPECT_EQ(remove("missing"), -1);
    EXPECT_EQ(remove(""), -1);
    EXPECT_EQ(remove(nullptr), -1);
  }
  EXPECT_TRUE(exists("d"));
}

TEST(FileRemoveIfSizeIsZero, removes_empty_files_only) {
  TempDirectory directory;
  writeFile("empty", "");
  writeFile("full", "x");
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("full"), 0);
  EXPECT_TRUE(exists("full"));
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("empty"), 1);
  EXPECT_FALSE(exists("empty"));
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("empty"), -1);
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero(nullptr), -1);
}
