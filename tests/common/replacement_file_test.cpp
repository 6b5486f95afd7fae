#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <thread>
#include <vector>

#include "tests/common/replacement.h"

using ksv::platform::ReplacementFile;
using ksv::test::Arguments;
using ksv::test::ChildBody;
using ksv::test::ChildProcess;
using ksv::test::contentOf;
using ksv::test::exists;
using ksv::test::kReplaced;
using ksv::test::kTemporary;
using ksv::test::pathOf;
using ksv::test::readFile;
using ksv::test::Shared;
using ksv::test::TempDirectory;
using ksv::test::waitUntil;
using ksv::test::writeFile;
using ksv::test::writeWhole;

namespace {

constexpr size_t kLongSize = 400000;

const ChildBody kRefused("create a replacement file", [](const Arguments&) {
  return ReplacementFile::create(kReplaced) ? 1 : 0;
});

const ChildBody kWriteOnce("write a replacement file of one letter",
                           [](const Arguments& arguments) {
                             Shared<std::atomic<bool>> begin(arguments[1]);
                             while (!*begin) std::this_thread::yield();
                             return writeWhole(std::string(150000, arguments[0][0])) ? 0 : 1;
                           });

const ChildBody kWriteAgain("write a replacement file again and again",
                            [](const Arguments& arguments) {
                              Shared<std::atomic<bool>> begun(arguments[0]);
                              const std::string content = contentOf(kLongSize);
                              for (;;) {
                                auto file = ReplacementFile::create(kReplaced);
                                *begun = true;
                                for (size_t i = 0; file && i < content.size(); i += 1000) {
                                  file->write(content.data() + i, 1000);
                                }
                                if (file) file->commit();
                                file.reset();
                                std::filesystem::remove(pathOf(kReplaced));
                              }
                              return 0;
                            });

}  // namespace

TEST(ReplacementFile, appears_with_the_commit) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kReplaced);
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->write("abc", 3));
  EXPECT_TRUE(file->write("", 0));
  EXPECT_TRUE(file->write(nullptr, 0));
  EXPECT_TRUE(file->write("\0d", 2));
  EXPECT_FALSE(exists(kReplaced));
  EXPECT_TRUE(exists(kTemporary));
  EXPECT_TRUE(file->commit());
  EXPECT_EQ(readFile(kReplaced), std::string("abc\0d", 5));
  EXPECT_FALSE(exists(kTemporary));
  EXPECT_FALSE(file->write("x", 1));
  EXPECT_FALSE(file->commit());
  file.reset();
  EXPECT_EQ(readFile(kReplaced).size(), 5u);
}

TEST(ReplacementFile, leaves_nothing_without_a_commit) {
  TempDirectory directory;
  const auto before = ksv::test::openDescriptors();
  {
    auto file = ReplacementFile::create(kReplaced);
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
    auto file = ReplacementFile::create(kReplaced);
    for (size_t i = 0; i < content.size(); i += piece) {
      ASSERT_TRUE(file->write(content.data() + i, std::min(piece, content.size() - i)));
    }
    EXPECT_TRUE(file->commit());
    EXPECT_EQ(readFile(kReplaced), content) << piece;
  }
}

TEST(ReplacementFile, is_refused_when_something_stands_in_its_place) {
  TempDirectory directory;
  writeFile(kReplaced, "old");
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
  EXPECT_EQ(readFile(kReplaced), "old");
  std::filesystem::remove(pathOf(kReplaced));
  std::filesystem::create_directory(pathOf(kReplaced));
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
  std::filesystem::remove(pathOf(kReplaced));
  EXPECT_FALSE(exists(kTemporary));
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
  EXPECT_EQ(readFile(kReplaced), "new");
  EXPECT_FALSE(exists(kTemporary));
}

TEST(ReplacementFile, does_not_write_to_a_file_that_has_another_name) {
  TempDirectory directory;
  writeFile("victim", "precious");
  std::filesystem::create_hard_link("victim", pathOf(kTemporary));
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
  EXPECT_EQ(readFile("victim"), "precious");
}

TEST(ReplacementFile, refuses_a_second_writer_in_this_process_and_in_others) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kReplaced);
  ASSERT_TRUE(file);
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
  EXPECT_EQ(ChildProcess::run("create a replacement file"), 0);
  EXPECT_TRUE(exists(kTemporary));
  EXPECT_TRUE(file->write("a", 1));
  EXPECT_TRUE(file->commit());
  EXPECT_EQ(readFile(kReplaced), "a");
}

TEST(ReplacementFile, is_written_whole_by_one_of_many_processes) {
  for (int round = 0; round < 20; ++round) {
    TempDirectory directory;
    Shared<std::atomic<bool>> begin;
    std::vector<ChildProcess> children;
    for (const char* letter : {"a", "b", "c", "d"}) {
      children.push_back(
          ChildProcess::start("write a replacement file of one letter", {letter, begin.name()}));
    }
    *begin = true;
    int writers = 0;
    for (ChildProcess& child : children) {
      const int result = child.result();
      EXPECT_TRUE(result == 0 || result == 1) << result;
      if (result == 0) ++writers;
    }
    EXPECT_EQ(writers, 1);
    const std::string content = readFile(kReplaced);
    ASSERT_EQ(content, std::string(150000, content.empty() ? '?' : content[0]));
    EXPECT_FALSE(exists(kTemporary));
  }
}

TEST(ReplacementFile, is_whole_or_not_there_after_its_writer_was_killed) {
  TempDirectory directory;
  const std::string content = contentOf(kLongSize);
  std::minstd_rand random(1);
  int partial = 0;
  for (int round = 0; round < 100; ++round) {
    std::filesystem::remove(pathOf(kReplaced));
    Shared<std::atomic<bool>> begun;
    ChildProcess child =
        ChildProcess::start("write a replacement file again and again", {begun.name()});
    ASSERT_TRUE(waitUntil([&] { return begun->load(); }));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000));
    child.kill();
    ASSERT_EQ(child.result(), -1);
    if (exists(kTemporary)) ++partial;
    if (exists(kReplaced)) {
      ASSERT_EQ(readFile(kReplaced), content);
      std::filesystem::remove(pathOf(kReplaced));
    }
    ASSERT_TRUE(writeWhole(content));
    ASSERT_EQ(readFile(kReplaced), content);
    ASSERT_FALSE(exists(kTemporary));
  }
  EXPECT_GT(partial, 0) << "no writer was killed while it wrote";
}

TEST(ReplacementFile, fails_and_leaves_nothing_when_it_cannot_be_renamed) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kReplaced);
  std::filesystem::create_directory(pathOf(kReplaced));
  EXPECT_TRUE(file->write("x", 1));
  EXPECT_FALSE(file->commit());
  EXPECT_FALSE(exists(kTemporary));
}
