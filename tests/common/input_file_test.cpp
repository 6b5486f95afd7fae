#include <cstring>

#include "common/platform.h"
#include "tests/common/support.h"

using ksv::platform::InputFile;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

TEST(InputFile, reads_on_and_ends_with_the_file) {
  TempDirectory directory;
  constexpr char kJapanese[] = "日本語 表é.txt";
  writeFile(kJapanese, "abc\r\n\x1A\xFF");
  InputFile file(kJapanese);
  EXPECT_EQ(file.size(), 7);
  char bytes[8];
  std::memset(bytes, '-', sizeof bytes);
  EXPECT_EQ(file.read(bytes, 2), 2u);
  EXPECT_EQ(std::string(bytes, 4), "ab--");
  EXPECT_EQ(file.read(bytes, 0), 0u);
  EXPECT_EQ(file.read(bytes, sizeof bytes), 5u);
  EXPECT_EQ(std::string(bytes, 6), "c\r\n\x1A\xFF-") << "nothing is translated";
  EXPECT_EQ(file.read(bytes, sizeof bytes), 0u);
}

TEST(InputFile, keeps_the_size_that_the_file_had) {
  TempDirectory directory;
  writeFile("f", "abc");
  InputFile file("f");
  writeFile("f", "");
  EXPECT_EQ(file.size(), 3);
  char bytes[3];
  EXPECT_EQ(file.read(bytes, sizeof bytes), 0u);
}

TEST(InputFile, of_an_empty_file_has_size_0) {
  TempDirectory directory;
  writeFile("f", "");
  InputFile file("f");
  EXPECT_EQ(file.size(), 0);
  char byte;
  EXPECT_EQ(file.read(&byte, 1), 0u);
}

TEST(InputFile, has_no_size_where_there_is_nothing_to_read) {
  TempDirectory directory;
  EXPECT_EQ(InputFile("missing").size(), -1);
  EXPECT_EQ(InputFile("").size(), -1);
  EXPECT_EQ(InputFile(".").size(), -1) << "a directory";
}

TEST(InputFile, leaves_no_file_open) {
  TempDirectory directory;
  writeFile("f", "abc");
  const auto before = ksv::test::openDescriptors();
  for (const char* path : {"f", ".", "missing"}) InputFile{path};
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}
