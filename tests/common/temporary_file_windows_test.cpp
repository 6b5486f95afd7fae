// Bound to Windows: the form of the names that the system gives, and the length of
// directories that it takes.
#include <algorithm>

#include "tests/common/temporary_file.h"

using ksv::test::createTemporary;
using ksv::test::TempDirectory;

TEST(TemporaryFile, has_a_hexadecimal_number_for_a_name) {
  TempDirectory directory;
  const std::string path = createTemporary("./");
  ASSERT_EQ(path.substr(0, 5), ".\\ksv");
  ASSERT_TRUE(path.ends_with(".tmp"));
  const std::string number = path.substr(5, path.size() - 5 - 4);
  EXPECT_FALSE(number.empty());
  EXPECT_EQ(number.find_first_not_of("0123456789abcdefABCDEF"), number.npos) << path;
}

TEST(TemporaryFile, stands_on_the_drive_of_the_hint) {
  TempDirectory directory;
  std::string hint = directory.path() + "/x";
  std::replace(hint.begin(), hint.end(), '/', '\\');
  const std::string path = createTemporary(hint.c_str());
  EXPECT_EQ(ksv::test::directoryOf(path), directory.path());
  // A drive alone is the directory that the drive stands in.
  EXPECT_EQ(createTemporary(hint.substr(0, 2).c_str()).substr(0, 5), hint.substr(0, 2) + ".\\k");
}

TEST(TemporaryFile, is_refused_in_a_directory_too_long_for_the_system) {
  TempDirectory directory;
  std::filesystem::create_directory(std::string(100, 'd'));
  std::string hint = directory.path() + "/" + std::string(100, 'd') + "/";
  while (hint.size() < 260) hint += "./";
  EXPECT_EQ(createTemporary(hint.c_str()), "null");
  EXPECT_TRUE(std::filesystem::is_empty(std::string(100, 'd')));
}
