// Bound to POSIX: an open file that the system refuses something.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "cli/system/open_file_posix.h"

namespace ksv_cli_tests {
namespace {

using ksv_cli::platform::OpenFile;

template <typename Action>
std::string failureOf(Action action) {
  try {
    action();
  } catch (const ksv_cli::Failure& failure) {
    return failure.what();
  }
  return "";
}

TEST(OpenFile, is_closed_once) {
  OpenFile file(::open("/dev/null", O_WRONLY));
  ASSERT_TRUE(file.isOpen());
  file.closeChecked();
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(failureOf([&] { file.closeChecked(); }), "");
}

TEST(OpenFile, that_cannot_be_closed_or_used_says_why) {
  const int number = ::open("/dev/null", O_RDONLY);
  const uint8_t byte = 'a';
  uint8_t unused;
  OpenFile file(number);
  EXPECT_EQ(failureOf([&] { file.writeAll(&byte, 1); }), "Bad file descriptor");
  ::close(number);
  EXPECT_EQ(failureOf([&] { file.readSome(&unused, 1); }), "Bad file descriptor");
  EXPECT_EQ(failureOf([&] { file.closeChecked(); }), "Bad file descriptor");
  EXPECT_FALSE(file.isOpen());
}

TEST(OpenFile, takes_nothing_on_a_full_device) {
  OpenFile full(::open("/dev/full", O_WRONLY));
  if (!full.isOpen()) GTEST_SKIP() << "there is none here";
  const uint8_t byte = 'a';
  EXPECT_EQ(failureOf([&] { full.writeAll(&byte, 1); }), "No space left on device");
}

}  // namespace
}  // namespace ksv_cli_tests
