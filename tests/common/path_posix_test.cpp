// Bound to POSIX: there are no drive letters, and ANSI text is any bytes.
#include <vector>

#include "ksv_file.h"
#include "tests/common/path_parts.h"

using ksv::test::Parts;
using ksv::test::split;

TEST(SplitPath, knows_no_drive_letters) {
  EXPECT_EQ(split("C:\\a\\b.c"), (Parts{"C:\\a\\", "b", ".c"}));
  EXPECT_EQ(split("C:b"), (Parts{"", "C:b", ""}));
}

TEST(PathPartsA, are_any_bytes) {
  const std::string part = "\xFF\x80";
  std::vector<char> directory(99), base(99), extension(99), path(99);
  char drive[3];
  const std::string whole = part + "/" + part + "." + part;
  KSV_splitpathA(whole.c_str(), drive, directory.data(), base.data(), extension.data());
  EXPECT_EQ(directory.data(), part + "/");
  EXPECT_EQ(base.data(), part);
  EXPECT_EQ(extension.data(), "." + part);
  KSV_makepathA(path.data(), drive, directory.data(), base.data(), extension.data());
  EXPECT_EQ(path.data(), whole);
}

TEST(PathEncoding, takes_ansi_text_for_utf8) {
  char dest[16] = "before";
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(dest, "日本", sizeof dest), 0);
  EXPECT_STREQ(dest, "日本");
  EXPECT_EQ(KSV_FilePathTransUTF8ToAnsi(dest, "한ไא", sizeof dest), 0);
  EXPECT_STREQ(dest, "한ไא");
  EXPECT_EQ(KSV_FilePathTransAnsiToUTF8(dest, "\x82\xA0", sizeof dest), 3000);
  EXPECT_STREQ(dest, "");
}
