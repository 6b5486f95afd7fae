#include "tests/common/temporary_file.h"

#include <set>

using ksv::test::createTemporary;
using ksv::test::directoryOf;
using ksv::test::ScopedVariable;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

TEST(TemporaryFile, stands_in_the_directory_of_the_hint) {
  TempDirectory directory;
  std::filesystem::create_directory(ksv::test::pathOf("日本"));
  writeFile("日本/f.txt", "");
  EXPECT_EQ(directoryOf(createTemporary("日本/f.txt")), "日本");
  EXPECT_EQ(directoryOf(createTemporary("日本/")), "日本");
  EXPECT_EQ(directoryOf(createTemporary("日本\\f.txt")), "日本");
  EXPECT_EQ(directoryOf(createTemporary((directory.path() + "/x").c_str())), directory.path());
  EXPECT_EQ(directoryOf(createTemporary("./x")), ".");
}

TEST(TemporaryFile, stands_in_the_directory_of_the_system_without_a_hint) {
  TempDirectory directory;
  ScopedVariable variable(ksv::test::kTemporaryVariable, directory.path());
  EXPECT_EQ(directoryOf(createTemporary(nullptr)), directory.path());
  EXPECT_EQ(directoryOf(createTemporary("")), directory.path());
  char path[780];
  EXPECT_EQ(KSV_ASC_tmpnam(path), path);
  EXPECT_EQ(directoryOf(path), directory.path());
}

TEST(TemporaryFile, may_be_named_over_its_hint) {
  TempDirectory directory;
  char path[780] = "./hint";
  EXPECT_EQ(KSV_ASC_tmpnam1(path, path), path);
  EXPECT_EQ(directoryOf(path), ".");
  EXPECT_TRUE(ksv::test::exists(path));
}

TEST(TemporaryFile, has_a_new_name_each_time) {
  TempDirectory directory;
  std::set<std::string> paths;
  for (int i = 0; i < 100; ++i) paths.insert(createTemporary("./"));
  EXPECT_EQ(paths.size(), 100u);
}

TEST(TemporaryFile, is_refused_without_a_directory) {
  TempDirectory directory;
  EXPECT_EQ(createTemporary("file.txt"), "null");
  EXPECT_EQ(createTemporary("missing/file.txt"), "null");
  EXPECT_EQ(createTemporary("\xFF/file.txt"), "null");
  EXPECT_EQ(KSV_ASC_tmpnam1("./", nullptr), nullptr);
  EXPECT_EQ(KSV_ASC_tmpnam(nullptr), nullptr);
}
