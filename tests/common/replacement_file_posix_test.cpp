// Bound to POSIX: modes and users, fifos and links, a limit for the size of files,
// and descriptors that programs would inherit.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "tests/common/replacement.h"
#include "tests/system/fork_posix.h"

using ksv::platform::ReplacementFile;
using ksv::test::contentOf;
using ksv::test::exists;
using ksv::test::kReplaced;
using ksv::test::kTemporary;
using ksv::test::readFile;
using ksv::test::runInChild;
using ksv::test::TempDirectory;
using ksv::test::writeFile;
using ksv::test::writeWhole;

namespace {

constexpr unsigned kNobody = 65534;

}  // namespace

TEST(ReplacementFile, is_refused_when_a_link_stands_in_its_place) {
  TempDirectory directory;
  std::filesystem::create_symlink("nowhere", kReplaced);
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
  EXPECT_FALSE(exists(kTemporary));
  EXPECT_FALSE(exists("nowhere"));
}

TEST(ReplacementFile, does_not_write_through_links_or_fifos_in_the_temporary_name) {
  TempDirectory directory;
  writeFile("victim", "precious");
  std::filesystem::create_symlink("victim", kTemporary);
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
  EXPECT_EQ(readFile("victim"), "precious");
  std::filesystem::remove(kTemporary);
  ASSERT_EQ(mkfifo(kTemporary, 0600), 0);
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
}

TEST(ReplacementFile, closes_no_descriptor_but_its_own_when_it_cannot_be_put_in_place) {
  TempDirectory directory;
  // The one that a forgotten number would be taken for.
  const int input = open("/dev/null", O_RDONLY);
  ASSERT_EQ(dup2(input, STDIN_FILENO), STDIN_FILENO);
  if (input != STDIN_FILENO) close(input);
  const auto before = ksv::test::openDescriptors();
  auto file = ReplacementFile::create(kReplaced);
  ASSERT_TRUE(file);
  std::filesystem::create_directory(kReplaced);
  EXPECT_FALSE(file->commit());
  EXPECT_EQ(ksv::test::openDescriptors(), before);
  file.reset();
  EXPECT_EQ(ksv::test::openDescriptors(), before);
  EXPECT_FALSE(exists(kTemporary));
}

TEST(ReplacementFile, has_the_permissions_of_any_new_file) {
  TempDirectory directory;
  const mode_t before = umask(027);
  EXPECT_TRUE(writeWhole("x"));
  umask(before);
  struct stat status;
  ASSERT_EQ(stat(kReplaced, &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST(ReplacementFile, leaves_nothing_when_the_disk_is_full) {
  TempDirectory directory;
  const int result = runInChild([] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {100000, 100000};
    setrlimit(RLIMIT_FSIZE, &limit);
    const std::string content = contentOf(300000);
    auto file = ReplacementFile::create(kReplaced);
    if (!file || file->write(content.data(), content.size())) return 1;
    if (file->write("x", 1) || file->commit()) return 2;
    file.reset();
    // What is still buffered fails in the commit.
    file = ReplacementFile::create(kReplaced);
    for (size_t i = 0; i < 120000; i += 1000) {
      if (!file->write(content.data() + i, 1000)) return 3;
    }
    return file->commit() ? 4 : exists(kTemporary) ? 5 : 0;
  });
  EXPECT_EQ(result, 0);
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(ReplacementFile, is_refused_in_a_directory_that_cannot_be_written) {
  TempDirectory directory;
  std::filesystem::permissions(".", std::filesystem::perms(0555));
  const bool root = geteuid() == 0;
  const auto createAsUser = [&] {
    if (root && seteuid(kNobody) != 0) return 2;
    return ReplacementFile::create(kReplaced) ? 1 : 0;
  };
  EXPECT_EQ(runInChild(createAsUser), 0);
  std::filesystem::permissions(".", std::filesystem::perms(0755));
  if (!root) return;
  // Nor is a temporary file of one's own of any use there.
  writeFile(kTemporary, "");
  ASSERT_EQ(chmod(kTemporary, 0666), 0);
  EXPECT_EQ(runInChild(createAsUser), 0);
}

TEST(ReplacementFile, is_not_inherited_by_programs_that_are_started) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kReplaced);
  EXPECT_EQ(runInChild([] {
              execl("/bin/sh", "sh", "-c",
                    "for f in /proc/self/fd/*; do readlink $f; done | "
                    "grep -q cmp.tmp && exit 1; exit 0",
                    nullptr);
              return 2;
            }),
            0);
}
