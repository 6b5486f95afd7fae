#include <sys/stat.h>

#include <set>

#include "ksv_path.h"
#include "tests/common/support.h"

using ksv::test::exists;
using ksv::test::ScopedVariable;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

namespace {

std::string create(const char* hint) {
  char path[780] = "";
  char* result = KSV_ASC_tmpnam1(hint, path);
  if (result == nullptr) return "null";
  EXPECT_EQ(result, path);
  EXPECT_TRUE(exists(path)) << path;
  EXPECT_TRUE(std::filesystem::is_empty(path));
  EXPECT_TRUE(std::filesystem::path(path).filename().string().starts_with("ksv"));
  return path;
}

std::string directoryOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

}  // namespace

TEST(TemporaryFile, stands_in_the_directory_of_the_hint) {
  TempDirectory directory;
  std::filesystem::create_directory("日本");
  writeFile("日本/f.txt", "");
  EXPECT_EQ(directoryOf(create("日本/f.txt")), "日本");
  EXPECT_EQ(directoryOf(create("日本/")), "日本");
  EXPECT_EQ(directoryOf(create("日本\\f.txt")), "日本");
  EXPECT_EQ(directoryOf(create((directory.path() + "/x").c_str())), directory.path());
  EXPECT_EQ(directoryOf(create("./x")), ".");
}

TEST(TemporaryFile, stands_in_the_directory_of_the_system_without_a_hint) {
  TempDirectory directory;
  ScopedVariable variable("TMPDIR", directory.path());
  EXPECT_EQ(directoryOf(create(nullptr)), directory.path());
  EXPECT_EQ(directoryOf(create("")), directory.path());
  char path[780];
  EXPECT_EQ(KSV_ASC_tmpnam(path), path);
  EXPECT_EQ(directoryOf(path), directory.path());
}

TEST(TemporaryFile, stands_in_tmp_when_nothing_is_set) {
  ScopedVariable variable("TMPDIR", std::nullopt);
  const std::string path = create(nullptr);
  EXPECT_EQ(directoryOf(path), "/tmp");
  std::filesystem::remove(path);
}

TEST(TemporaryFile, has_a_new_name_each_time_and_is_private) {
  TempDirectory directory;
  std::set<std::string> paths;
  for (int i = 0; i < 100; ++i) paths.insert(create("./"));
  EXPECT_EQ(paths.size(), 100u);
  struct stat status;
  ASSERT_EQ(stat(paths.begin()->c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 077, 0u);
}

TEST(TemporaryFile, is_refused_without_a_directory) {
  TempDirectory directory;
  EXPECT_EQ(create("file.txt"), "null");
  EXPECT_EQ(create("missing/file.txt"), "null");
  EXPECT_EQ(create("\xFF/file.txt"), "null");
  EXPECT_EQ(KSV_ASC_tmpnam1("./", nullptr), nullptr);
  EXPECT_EQ(KSV_ASC_tmpnam(nullptr), nullptr);
}

TEST(TemporaryFile, is_refused_when_its_path_does_not_fit) {
  TempDirectory directory;
  const std::string longDirectory = "." + std::string(765, '/') + "/";
  const std::string tooLong = "." + std::string(766, '/') + "/";
  EXPECT_NE(create(longDirectory.c_str()), "null");
  EXPECT_EQ(create(tooLong.c_str()), "null");
}

TEST(TemporaryFile, leaves_nothing_behind_when_the_system_directory_is_too_long) {
  TempDirectory directory;
  std::string deep = directory.path();
  while (deep.size() < 779 - 100) deep += "/" + std::string(90, 'd');
  deep += "/" + std::string(778 - deep.size() - 1, 'e');
  ASSERT_EQ(deep.size(), 778u);
  std::filesystem::create_directories(deep);
  ScopedVariable variable("TMPDIR", deep);
  EXPECT_EQ(create(nullptr), "null");
  EXPECT_TRUE(std::filesystem::is_empty(deep));
}
