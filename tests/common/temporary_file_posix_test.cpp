// Bound to POSIX: TMPDIR and /tmp, modes, and paths whose length only this library
// limits.
#include <sys/stat.h>

#include "tests/common/temporary_file.h"
#include "tests/system/fork_posix.h"

using ksv::test::createTemporary;
using ksv::test::directoryOf;
using ksv::test::ScopedVariable;
using ksv::test::TempDirectory;

TEST(TemporaryFile, is_private) {
  TempDirectory directory;
  struct stat status;
  ASSERT_EQ(stat(createTemporary("./").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 077, 0u);
}

TEST(TemporaryFile, stands_in_tmp_when_nothing_is_set) {
  ScopedVariable variable("TMPDIR", std::nullopt);
  const std::string path = createTemporary(nullptr);
  EXPECT_EQ(directoryOf(path), "/tmp");
  std::filesystem::remove(path);
}

TEST(TemporaryFile, is_refused_when_its_path_does_not_fit) {
  TempDirectory directory;
  const std::string longDirectory = "." + std::string(765, '/') + "/";
  const std::string tooLong = "." + std::string(766, '/') + "/";
  EXPECT_NE(createTemporary(longDirectory.c_str()), "null");
  EXPECT_EQ(createTemporary(tooLong.c_str()), "null");
}

TEST(TemporaryFile, leaves_nothing_behind_when_the_system_directory_is_too_long) {
  TempDirectory directory;
  std::string deep = directory.path();
  while (deep.size() < 779 - 100) deep += "/" + std::string(90, 'd');
  deep += "/" + std::string(778 - deep.size() - 1, 'e');
  ASSERT_EQ(deep.size(), 778u);
  std::filesystem::create_directories(deep);
  ScopedVariable variable("TMPDIR", deep);
  EXPECT_EQ(createTemporary(nullptr), "null");
  EXPECT_TRUE(std::filesystem::is_empty(deep));
}

TEST(TemporaryFile, is_made_where_standard_input_is_closed) {
  TempDirectory directory;
  EXPECT_EQ(ksv::test::runInChild([] {
              close(0);
              char path[780];
              return KSV_ASC_tmpnam1("./", path) == path && ksv::test::exists(path) ? 0 : 1;
            }),
            0);
}
