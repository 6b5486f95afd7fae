#include <cstring>

#include "ksv_file.h"
#include "ksv_memory.h"
#include "tests/common/support.h"

using ksv::test::readFile;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

namespace {

KsvByteOrderStream* openStream(const char* path, const char* mode, int32_t nativeOrder) {
  auto* s = static_cast<KsvByteOrderStream*>(KSV_malloc(sizeof(KsvByteOrderStream)));
  s->stream = KSV_FileOpen(path, mode);
  s->nativeOrder = nativeOrder;
  return s;
}

}  // namespace

TEST(ByteOrder, exchanges_the_bytes_of_a_word) {
  const uint8_t bytes[] = {0x12, 0x34};
  EXPECT_EQ(KSV_GetW_x(bytes), 0x1234);
}

TEST(ByteOrder, reads_only_a_word_where_a_double_word_is_asked_for) {
  const uint8_t bytes[] = {0x12, 0x34, 0x56, 0x78};
  EXPECT_EQ(KSV_GetDW_x(bytes), 0x12340000u);
  // Nothing behind the word is touched, which a sanitizer would notice here.
  const auto* word = static_cast<uint8_t*>(std::memcpy(KSV_malloc(2), bytes, 2));
  EXPECT_EQ(KSV_GetDW_x(word), 0x12340000u);
  KSV_free(const_cast<uint8_t*>(word));
}

TEST(ByteOrder, stores_reversed_values_and_returns_what_it_stored) {
  uint8_t bytes[7] = {};
  EXPECT_EQ(KSV_PutW_x(bytes + 1, 0x1234), 0x3412);
  EXPECT_EQ(KSV_PutDW_x(bytes + 3, 0x12345678), 0x78563412u);
  const uint8_t wanted[] = {0, 0x12, 0x34, 0x12, 0x34, 0x56, 0x78};
  EXPECT_EQ(std::memcmp(bytes, wanted, sizeof bytes), 0);
}

TEST(ByteOrderStream, reads_values_most_significant_byte_first) {
  TempDirectory directory;
  writeFile("a", "\x12\x34\x56\x78\x9A\xBC\xDE");
  KsvByteOrderStream* s = openStream("a", "rb", 0);
  uint16_t word = 0;
  uint32_t doubleWord = 0;
  uint8_t byte = 0;
  EXPECT_EQ(KSV_X_FileGetWord(s, &word), 1);
  EXPECT_EQ(word, 0x1234);
  EXPECT_EQ(KSV_X_FileGetDWord(s, &doubleWord), 1);
  EXPECT_EQ(doubleWord, 0x56789ABCu);
  EXPECT_EQ(KSV_X_FileGetByte(s, &byte), 1);
  EXPECT_EQ(byte, 0xDE);
  EXPECT_EQ(KSV_X_FileGetByte(s, &byte), 0);
  EXPECT_EQ(KSV_X_FileClose(s), 0);
}

TEST(ByteOrderStream, passes_values_through_in_native_order) {
  TempDirectory directory;
  writeFile("a", "\x12\x34\x56\x78\x9A\xBC");
  KsvByteOrderStream* s = openStream("a", "rb", 7);
  uint16_t word = 0;
  uint32_t doubleWord = 0;
  EXPECT_EQ(KSV_X_FileGetWord(s, &word), 1);
  EXPECT_EQ(word, 0x3412);
  EXPECT_EQ(KSV_X_FileGetDWord(s, &doubleWord), 1);
  EXPECT_EQ(doubleWord, 0xBC9A7856u);
  EXPECT_EQ(KSV_X_FileClose(s), 0);
}

TEST(ByteOrderStream, reverses_the_destination_of_a_failed_read_too) {
  TempDirectory directory;
  writeFile("a", "");
  KsvByteOrderStream* s = openStream("a", "rb", 0);
  uint16_t word = 0x1234;
  uint32_t doubleWord = 0x12345678;
  EXPECT_EQ(KSV_X_FileGetWord(s, &word), 0);
  EXPECT_EQ(word, 0x3412);
  EXPECT_EQ(KSV_X_FileGetDWord(s, &doubleWord), 0);
  EXPECT_EQ(doubleWord, 0x78563412u);
  KSV_X_FileClose(s);
}

TEST(ByteOrderStream, writes_values_in_its_order) {
  TempDirectory directory;
  for (const int32_t nativeOrder : {0, 1}) {
    KsvByteOrderStream* s = openStream("a", "wb", nativeOrder);
    EXPECT_EQ(KSV_X_FilePutByte(s, 0x01), 1);
    EXPECT_EQ(KSV_X_FilePutWord(s, 0x1234), 1);
    EXPECT_EQ(KSV_X_FilePutDWord(s, 0x56789ABC), 1);
    EXPECT_EQ(KSV_X_FileClose(s), 0);
    EXPECT_EQ(readFile("a"),
              nativeOrder ? "\x01\x34\x12\xBC\x9A\x78\x56" : "\x01\x12\x34\x56\x78\x9A\xBC");
  }
}

TEST(ByteOrderStream, reads_writes_and_seeks_bytes_without_reversing_them) {
  TempDirectory directory;
  KsvByteOrderStream* s = openStream("a", "w+b", 0);
  EXPECT_EQ(KSV_X_FileWrite("\x12\x34\x56\x78line\nrest", 2, 6, s), 6);
  EXPECT_EQ(KSV_X_FileSeek(s, -12, SEEK_CUR), 0);
  char bytes[5] = {};
  EXPECT_EQ(KSV_X_FileRead(bytes, 4, 1, s), 1);
  EXPECT_STREQ(bytes, "\x12\x34\x56\x78");
  char line[16];
  EXPECT_EQ(KSV_X_FileReadLine(line, sizeof line, s), line);
  EXPECT_STREQ(line, "line\n");
  EXPECT_NE(KSV_X_FileSeek(s, -1, SEEK_SET), 0);
  EXPECT_EQ(KSV_X_FileClose(s), 0);
}

TEST(ByteOrderStream, fails_without_a_record_or_a_stream) {
  EXPECT_EQ(KSV_X_FileClose(nullptr), EOF);
  EXPECT_EQ(KSV_X_FilePutWord(nullptr, 1), 0);
  uint16_t word = 5;
  EXPECT_EQ(KSV_X_FileGetWord(nullptr, &word), 0);
  EXPECT_EQ(word, 5);
  KsvByteOrderStream* s = openStream("/nowhere/at/all", "rb", 0);
  EXPECT_EQ(KSV_X_FileGetWord(s, nullptr), 0);
  EXPECT_EQ(KSV_X_FileSeek(s, 0, SEEK_SET), -1);
  EXPECT_EQ(KSV_X_FileClose(s), EOF);
}

TEST(ByteOrderStream, fails_on_streams_of_the_other_direction) {
  TempDirectory directory;
  writeFile("a", "\x12\x34\x56\x78");
  KsvByteOrderStream* s = openStream("a", "rb", 0);
  EXPECT_EQ(KSV_X_FilePutByte(s, 1), 0);
  EXPECT_EQ(KSV_X_FilePutWord(s, 1), 0);
  EXPECT_EQ(KSV_X_FilePutDWord(s, 1), 0);
  EXPECT_EQ(KSV_X_FileWrite("a", 1, 1, s), 0);
  KSV_X_FileClose(s);  // C runtimes differ about a write that failed before
  EXPECT_EQ(readFile("a"), "\x12\x34\x56\x78");
  s = openStream("a", "ab", 0);
  uint8_t byte = 7;
  uint16_t word = 7;
  uint32_t doubleWord = 7;
  char line[4] = "abc";
  EXPECT_EQ(KSV_X_FileGetByte(s, &byte), 0);
  EXPECT_EQ(KSV_X_FileGetWord(s, &word), 0);
  EXPECT_EQ(KSV_X_FileGetDWord(s, &doubleWord), 0);
  EXPECT_EQ(KSV_X_FileRead(line, 1, 3, s), 0);
  EXPECT_EQ(KSV_X_FileReadLine(line, 4, s), nullptr);
  KSV_X_FileClose(s);
  EXPECT_EQ(byte, 7);
}
