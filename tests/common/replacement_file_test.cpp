#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <chrono>
#include <random>
#include <thread>

#include "common/platform.h"
#include "tests/common/support.h"

using ksv::platform::ReplacementFile;
using ksv::test::exists;
using ksv::test::readFile;
using ksv::test::runInChild;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

namespace {

constexpr char kPath[] = "日本.cmp";
constexpr char kTemporary[] = "日本.cmp.tmp";
constexpr unsigned kNobody = 65534;

std::string contentOf(size_t size) {
  std::string content(size, '\0');
  for (size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * 7 + i / 251);
  return content;
}

bool writeWhole(const std::string& content) {
  auto file = ReplacementFile::create(kPath);
  return file && file->write(content.data(), content.size()) && file->commit();
}

}  // namespace

TEST(ReplacementFile, appears_with_the_commit) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kPath);
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->write("abc", 3));
  EXPECT_TRUE(file->write("", 0));
  EXPECT_TRUE(file->write(nullptr, 0));
  EXPECT_TRUE(file->write("\0d", 2));
  EXPECT_FALSE(exists(kPath));
  EXPECT_TRUE(exists(kTemporary));
  EXPECT_TRUE(file->commit());
  EXPECT_EQ(readFile(kPath), std::string("abc\0d", 5));
  EXPECT_FALSE(exists(kTemporary));
  EXPECT_FALSE(file->write("x", 1));
  EXPECT_FALSE(file->commit());
  file.reset();
  EXPECT_EQ(readFile(kPath).size(), 5u);
}

TEST(ReplacementFile, leaves_nothing_without_a_commit) {
  TempDirectory directory;
  const auto before = ksv::test::openDescriptors();
  {
    auto file = ReplacementFile::create(kPath);
    const std::string content = contentOf(200000);
    EXPECT_TRUE(file->write(content.data(), content.size()));
  }
  EXPECT_TRUE(std::filesystem::is_empty("."));
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST(ReplacementFile, keeps_every_byte_whatever_the_pieces_are) {
  for (const size_t piece : {1u, 7u, 65535u, 65536u, 65537u, 200000u}) {
    TempDirectory directory;
    const std::string content = contentOf(300001);
    auto file = ReplacementFile::create(kPath);
    for (size_t i = 0; i < content.size(); i += piece) {
      ASSERT_TRUE(file->write(content.data() + i, std::min(piece, content.size() - i)));
    }
    EXPECT_TRUE(file->commit());
    EXPECT_EQ(readFile(kPath), content) << piece;
  }
}

TEST(ReplacementFile, has_the_permissions_of_any_new_file) {
  TempDirectory directory;
  const mode_t before = umask(027);
  EXPECT_TRUE(writeWhole("x"));
  umask(before);
  struct stat status;
  ASSERT_EQ(stat(kPath, &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST(ReplacementFile, is_refused_when_something_stands_in_its_place) {
  TempDirectory directory;
  writeFile(kPath, "old");
  EXPECT_FALSE(ReplacementFile::create(kPath));
  EXPECT_EQ(readFile(kPath), "old");
  std::filesystem::remove(kPath);
  std::filesystem::create_directory(kPath);
  EXPECT_FALSE(ReplacementFile::create(kPath));
  std::filesystem::remove(kPath);
  std::filesystem::create_symlink("nowhere", kPath);
  EXPECT_FALSE(ReplacementFile::create(kPath));
  EXPECT_FALSE(exists(kTemporary));
  EXPECT_FALSE(exists("nowhere"));
}

TEST(ReplacementFile, is_refused_where_there_is_no_directory) {
  TempDirectory directory;
  EXPECT_FALSE(ReplacementFile::create("missing/a.cmp"));
  EXPECT_FALSE(ReplacementFile::create("missing/"));
  EXPECT_FALSE(ReplacementFile::create(""));
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(ReplacementFile, takes_up_a_stale_temporary_file) {
  TempDirectory directory;
  writeFile(kTemporary, contentOf(5000));
  EXPECT_TRUE(writeWhole("new"));
  EXPECT_EQ(readFile(kPath), "new");
  EXPECT_FALSE(exists(kTemporary));
}

TEST(ReplacementFile, does_not_write_through_links_in_the_temporary_name) {
  TempDirectory directory;
  writeFile("victim", "precious");
  std::filesystem::create_symlink("victim", kTemporary);
  EXPECT_FALSE(ReplacementFile::create(kPath));
  std::filesystem::remove(kTemporary);
  std::filesystem::create_hard_link("victim", kTemporary);
  EXPECT_FALSE(ReplacementFile::create(kPath));
  EXPECT_EQ(readFile("victim"), "precious");
  std::filesystem::remove(kTemporary);
  ASSERT_EQ(mkfifo(kTemporary, 0600), 0);
  EXPECT_FALSE(ReplacementFile::create(kPath));
}

TEST(ReplacementFile, refuses_a_second_writer_in_this_process_and_in_others) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kPath);
  ASSERT_TRUE(file);
  EXPECT_FALSE(ReplacementFile::create(kPath));
  EXPECT_EQ(runInChild([] { return ReplacementFile::create(kPath) ? 1 : 0; }), 0);
  EXPECT_TRUE(exists(kTemporary));
  EXPECT_TRUE(file->write("a", 1));
  EXPECT_TRUE(file->commit());
  EXPECT_EQ(readFile(kPath), "a");
}

TEST(ReplacementFile, is_written_whole_by_one_of_many_processes) {
  for (int round = 0; round < 20; ++round) {
    TempDirectory directory;
    std::vector<pid_t> children;
    for (int c = 0; c < 4; ++c) {
      children.push_back(fork());
      if (children.back() == 0) {
        _exit(writeWhole(std::string(150000, static_cast<char>('a' + c))) ? 0 : 1);
      }
    }
    int writers = 0;
    for (const pid_t child : children) {
      int status = 0;
      waitpid(child, &status, 0);
      if (status == 0) ++writers;
    }
    EXPECT_EQ(writers, 1);
    const std::string content = readFile(kPath);
    ASSERT_EQ(content, std::string(150000, content.empty() ? '?' : content[0]));
    EXPECT_FALSE(exists(kTemporary));
  }
}

TEST(ReplacementFile, is_whole_or_not_there_after_its_writer_was_killed) {
  TempDirectory directory;
  const std::string content = contentOf(400000);
  std::minstd_rand random(1);
  int partial = 0;
  for (int round = 0; round < 100; ++round) {
    std::filesystem::remove(kPath);
    const pid_t child = fork();
    if (child == 0) {
      for (;;) {
        auto file = ReplacementFile::create(kPath);
        for (size_t i = 0; file && i < content.size(); i += 1000) {
          file->write(content.data() + i, 1000);
        }
        if (file) file->commit();
        std::filesystem::remove(kPath);
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (exists(kTemporary)) ++partial;
    if (exists(kPath)) {
      ASSERT_EQ(readFile(kPath), content);
      std::filesystem::remove(kPath);
    }
    ASSERT_TRUE(writeWhole(content));
    ASSERT_EQ(readFile(kPath), content);
    ASSERT_FALSE(exists(kTemporary));
  }
  EXPECT_GT(partial, 0) << "no writer was killed while it wrote";
}

TEST(ReplacementFile, leaves_nothing_when_the_disk_is_full) {
  TempDirectory directory;
  const int result = runInChild([] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {100000, 100000};
    setrlimit(RLIMIT_FSIZE, &limit);
    const std::string content = contentOf(300000);
    auto file = ReplacementFile::create(kPath);
    if (!file || file->write(content.data(), content.size())) return 1;
    if (file->write("x", 1) || file->commit()) return 2;
    file.reset();
    // What is still buffered fails in the commit.
    file = ReplacementFile::create(kPath);
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
    return ReplacementFile::create(kPath) ? 1 : 0;
  };
  EXPECT_EQ(runInChild(createAsUser), 0);
  std::filesystem::permissions(".", std::filesystem::perms(0755));
  if (!root) return;
  // Nor is a temporary file of one's own of any use there.
  writeFile(kTemporary, "");
  ASSERT_EQ(chmod(kTemporary, 0666), 0);
  EXPECT_EQ(runInChild(createAsUser), 0);
}

TEST(ReplacementFile, fails_and_leaves_nothing_when_it_cannot_be_renamed) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kPath);
  std::filesystem::create_directory(kPath);
  EXPECT_TRUE(file->write("x", 1));
  EXPECT_FALSE(file->commit());
  EXPECT_FALSE(exists(kTemporary));
}

TEST(ReplacementFile, is_not_inherited_by_programs_that_are_started) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kPath);
  EXPECT_EQ(runInChild([] {
              execl("/bin/sh", "sh", "-c",
                    "for f in /proc/self/fd/*; do readlink $f; done | "
                    "grep -q cmp.tmp && exit 1; exit 0",
                    nullptr);
              return 2;
            }),
            0);
}
