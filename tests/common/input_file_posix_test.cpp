// Bound to POSIX: pipes with names, devices, and what a child process inherits.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(InputFile, is_not_handed_to_child_processes) {
  TempDirectory directory;
  writeFile("f", "abc");
  const int next = open("f", O_RDONLY);  // the lowest that is free
  close(next);
  const InputFile file("f");
  EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}
