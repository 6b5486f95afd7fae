// Bound to POSIX: pipes with names, devices, and what a child process inherits.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "common/platform.h"
#include "tests/common/support.h"

using ksv::platform::InputFile;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

TEST(InputFile, has_no_size_of_a_pipe_and_takes_nothing_from_it) {
  TempDirectory directory;
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const int ends = open("pipe", O_RDWR);  // so that nobody waits for the other end
  ASSERT_EQ(write(ends, "a", 1), 1);
  EXPECT_EQ(InputFile("pipe").size(), -1);
  char byte = 0;
  EXPECT_EQ(read(ends, &byte, 1), 1);
  EXPECT_EQ(byte, 'a');
  close(ends);
}

TEST(InputFile, of_a_device_without_an_end_has_size_0) {
  EXPECT_EQ(InputFile("/dev/null").size(), 0);
  EXPECT_EQ(InputFile("/dev/zero").size(), 0);
}

TEST(InputFile, of_the_regular_kind_opens_nothing_else_and_waits_for_nobody) {
  TempDirectory directory;
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  for (const char* path : {"pipe", "/dev/null", "."}) {
    const InputFile file(path, InputFile::Takes::kRegularFile);
    EXPECT_EQ(file.size(), -1) << path;
    EXPECT_EQ(file.error(), 0) << path;
  }
  writeFile("f", "abc");
  EXPECT_EQ(InputFile("f", InputFile::Takes::kRegularFile).size(), 3);
}

TEST(InputFile, tells_what_the_system_refuses_and_nothing_of_what_is_absent) {
  TempDirectory directory;
  writeFile("f", "abc");
  EXPECT_EQ(InputFile("missing").error(), 0);
  EXPECT_EQ(InputFile("f/missing").error(), 0);
  EXPECT_EQ(InputFile(std::string(5000, 'n').c_str()).error(), 0);
  ASSERT_EQ(symlink("loop", "loop"), 0);
  EXPECT_EQ(InputFile("loop").error(), ELOOP);
  char byte;
  InputFile whole("f");
  EXPECT_EQ(whole.read(&byte, 1), 1u);
  EXPECT_EQ(whole.error(), 0);
  InputFile unreadable(".");
  EXPECT_EQ(unreadable.read(&byte, 1), 0u);
  EXPECT_EQ(unreadable.error(), EISDIR);
}

TEST(InputFile, is_not_handed_to_child_processes) {
  TempDirectory directory;
  writeFile("f", "abc");
  const int next = open("f", O_RDONLY);  // the lowest that is free
  close(next);
  const InputFile file("f");
  EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}
