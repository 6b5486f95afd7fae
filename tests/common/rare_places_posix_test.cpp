// Places for temporary files that are almost, or altogether, too long to be told.
#include <filesystem>
#include <string>

#include "ksv_path.h"
#include "tests/common/support.h"

namespace fs = std::filesystem;
using ksv::test::ScopedVariable;
using ksv::test::TempDirectory;

namespace {

// A directory below the current one whose path has so many bytes.
std::string directoryOfLength(const TempDirectory& above, size_t length) {
  std::string path = above.path();
  while (path.size() + 1 < length) {
    const size_t left = length - path.size() - 1;
    // Of two names the second has room for a byte at least.
    path += '/' + std::string(left > 250 ? 200 : left, 'd');
  }
  fs::create_directories(path);
  return path;
}

}  // namespace

TEST(TemporaryFile, whose_path_would_not_fit_is_not_left_behind) {
  const TempDirectory above;
  for (const size_t length : {770u, 775u, 778u, 779u, 900u}) {
    const std::string directory = directoryOfLength(above, length);
    ASSERT_EQ(directory.size(), length);
    const ScopedVariable temporary("TMPDIR", directory);
    char path[KSV_PATH_SIZE] = "before";
    EXPECT_EQ(KSV_ASC_tmpnam(path), nullptr) << length;
    EXPECT_TRUE(fs::is_empty(directory)) << length;
  }
}
