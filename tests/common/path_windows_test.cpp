// Bound to Windows: drive letters, and an ANSI code page that is not UTF-8.
#include <cstring>

#include "ksv_file.h"
#include "tests/common/path_parts.h"

using ksv::test::ansiWord;
using ksv::test::toAnsi;

TEST(SplitPath, takes_a_letter_and_a_colon_for_the_drive) {
  char drive[3], directory[768], base[768], extension[768];
  EXPECT_EQ(KSV_splitpath("C:\\a/日本.c", drive, directory, base, extension), 0);
  EXPECT_STREQ(drive, "C:");
  EXPECT_STREQ(directory, "\\a/");
  EXPECT_STREQ(base, "日本");
  EXPECT_STREQ(extension, ".c");
  KSV_splitpathA("z:b", drive, directory, base, extension);
  EXPECT_STREQ(drive, "z:");
  EXPECT_STREQ(directory, "");
  EXPECT_STREQ(base, "b");
  for (const char* path : {"1:b", "CC:b", ":b", "[:b", "\\\\server\\share\\b"}) {
    EXPECT_EQ(KSV_splitpath(path, drive, nullptr, base, nullptr), 0);
    EXPECT_STREQ(drive, "") << path;
  }
  EXPECT_STREQ(base, "b");
}

TEST(MakePath, undoes_what_splitting_a_drive_off_did) {
  for (const char* path : {"C:\\a\\b.c", "d:b", "C:", "C:/"}) {
    char drive[3], directory[768], base[768], extension[768], joined[780];
    EXPECT_EQ(KSV_splitpath(path, drive, directory, base, extension), 0);
    EXPECT_EQ(KSV_makepath(joined, drive, directory, base, extension), 0);
    EXPECT_STREQ(joined, path);
  }
}

TEST(PathEncoding, converts_between_utf8_and_the_code_page) {
  char dest[16] = "before";
  EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(dest, ansiWord().c_str(), sizeof dest), 0);
  EXPECT_EQ(dest, *toAnsi(ansiWord()));
  EXPECT_NE(dest, ansiWord()) << "this code page is UTF-8";
  char back[16] = "before";
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(back, dest, sizeof back), 0);
  EXPECT_EQ(back, ansiWord());
}

TEST(PathEncoding, refuses_what_the_code_page_lacks_and_takes_nothing_for_similar) {
  char dest[16];
  for (const char* text : {"한ไא", "a\xE2\x81\xB4"}) {
    std::strcpy(dest, "before");
    EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(dest, text, sizeof dest), 3000) << text;
    EXPECT_STREQ(dest, "");
  }
}
