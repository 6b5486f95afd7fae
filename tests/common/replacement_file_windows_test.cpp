// Bound to Windows: a file that is open to nobody else, read-only files, and names
// with either separator.
#include "tests/common/replacement.h"

using ksv::platform::ReplacementFile;
using ksv::test::Arguments;
using ksv::test::ChildBody;
using ksv::test::ChildProcess;
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

const ChildBody kStay("stay until told to go", [](const Arguments& arguments) {
  Shared<int> stage(arguments[0]);
  const volatile int& now = *stage;
  *stage = 1;
  return waitUntil([&] { return now == 2; }) ? 0 : 1;
});

}  // namespace

TEST(ReplacementFile, is_open_to_nobody_else_while_it_is_written) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kReplaced);
  ASSERT_TRUE(file);
  EXPECT_EQ(ksv::platform::openFile(kTemporary, "rb"), nullptr);
  EXPECT_FALSE(ksv::platform::removeFile(kTemporary));
  EXPECT_TRUE(file->commit());
}

TEST(ReplacementFile, is_not_inherited_by_programs_that_are_started) {
  TempDirectory directory;
  auto file = ReplacementFile::create(kReplaced);
  Shared<int> stage;
  const volatile int& now = *stage;
  ChildProcess child = ChildProcess::start("stay until told to go", {stage.name()});
  ASSERT_TRUE(waitUntil([&] { return now == 1; }));
  file.reset();
  EXPECT_FALSE(exists(kTemporary));
  EXPECT_TRUE(writeWhole("x"));
  EXPECT_EQ(readFile(kReplaced), "x");
  *stage = 2;
  EXPECT_EQ(child.result(), 0);
}

TEST(ReplacementFile, leaves_a_read_only_file_in_the_temporary_name_alone) {
  TempDirectory directory;
  writeFile(kTemporary, "precious");
  using std::filesystem::perms;
  std::filesystem::permissions(pathOf(kTemporary), perms::owner_read);
  EXPECT_FALSE(ReplacementFile::create(kReplaced));
  EXPECT_EQ(readFile(kTemporary), "precious");
  std::filesystem::permissions(pathOf(kTemporary), perms::owner_all);
}

TEST(ReplacementFile, stands_where_it_was_created_when_the_current_directory_changes) {
  TempDirectory directory;
  std::filesystem::create_directory("d");
  auto file = ReplacementFile::create("d\\a.cmp");
  ASSERT_TRUE(file);
  std::filesystem::current_path("d");
  EXPECT_TRUE(file->write("x", 1));
  EXPECT_TRUE(file->commit());
  EXPECT_EQ(readFile("a.cmp"), "x");
}
