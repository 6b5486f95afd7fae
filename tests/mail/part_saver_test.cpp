// The names under which parts are written.

#include "cli/mail/part_saver.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/mail/mail_limits.h"

namespace ksv_cli {
namespace {

TEST(SafeFileName, keeps_usual_names) {
  for (const char* name :
       {"a.txt", "\u4f1a\u8b70 1.pdf", "a.tar.gz", "README", "con1.txt", "a-b_c"})
    EXPECT_EQ(safeFileName(name), name);
}

TEST(SafeFileName, leads_nowhere_else) {
  EXPECT_EQ(safeFileName("../../etc/passwd"), "_.._etc_passwd");
  EXPECT_EQ(safeFileName("/etc/passwd"), "_etc_passwd");
  EXPECT_EQ(safeFileName("C:\\a.txt"), "C__a.txt");
  EXPECT_EQ(safeFileName("a.txt:stream"), "a.txt_stream");
  EXPECT_EQ(safeFileName(std::string_view("a\0b\n", 4)), "a_b_");
}

TEST(SafeFileName, hides_nothing) {
  EXPECT_EQ(safeFileName(".bashrc"), "bashrc");
  EXPECT_EQ(safeFileName(" .. "), "part");
  EXPECT_EQ(safeFileName(""), "part");
  EXPECT_EQ(safeFileName("a.txt. . "), "a.txt");
}

TEST(SafeFileName, names_no_device) {
  EXPECT_EQ(safeFileName("CON"), "_CON");
  EXPECT_EQ(safeFileName("nul.txt"), "_nul.txt");
  EXPECT_EQ(safeFileName("aux .txt"), "_aux .txt");
  EXPECT_EQ(safeFileName("com1.log"), "_com1.log");
  EXPECT_EQ(safeFileName("LPT\u00b9"), "_LPT\u00b9");
}

TEST(SafeFileName, cuts_long_names_between_characters) {
  std::string name;
  while (name.size() < 400) name += "\u3042";
  const std::string safe = safeFileName(name + ".txt");
  EXPECT_LE(safe.size(), limits::kLongestSavedName);
  EXPECT_TRUE(safe.ends_with("\u3042.txt")) << safe;
}

TEST(NumberedName, stands_in_front_of_the_extension) {
  EXPECT_EQ(numberedName("a.txt", 2), "a-2.txt");
  EXPECT_EQ(numberedName("README", 10), "README-10");
}

}  // namespace
}  // namespace ksv_cli
