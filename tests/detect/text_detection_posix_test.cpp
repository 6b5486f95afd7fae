// Bound to POSIX: what can be opened there and is no text.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ksv_detect.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

TEST(TextDetectionOfSpecialFiles, fails_on_devices) {
  EXPECT_EQ(dtctText("/dev/null", "Japanese"), KSV_TEXT_FAILURE);
  EXPECT_EQ(dtctText("/dev/zero", "Japanese"), KSV_TEXT_FAILURE);
}

TEST(TextDetectionOfSpecialFiles, fails_on_a_pipe_and_takes_nothing_from_it) {
  const TextFile file;
  const std::string path = file.path() + ".pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int ends = open(path.c_str(), O_RDWR);  // so that nobody waits for the other end
  ASSERT_EQ(write(ends, "a", 1), 1);
  EXPECT_EQ(dtctText(path.c_str(), "Japanese"), KSV_TEXT_FAILURE);
  char byte = 0;
  EXPECT_EQ(read(ends, &byte, 1), 1);
  close(ends);
  unlink(path.c_str());
}

TEST(TextDetectionOfSpecialFiles, fails_on_a_file_that_tells_no_size) {
  EXPECT_EQ(dtctText("/proc/self/status", "Japanese"), KSV_TEXT_FAILURE);
}

TEST(TextDetectionOfSpecialFiles, fails_on_a_path_that_is_not_utf8) {
  const TextFile file;
  const std::string path = file.path() + "\x82\xA0";
  const int ends = open(path.c_str(), O_CREAT | O_WRONLY, 0600);
  ASSERT_EQ(write(ends, "a", 1), 1);
  close(ends);
  EXPECT_EQ(dtctText(path.c_str(), "Japanese"), KSV_TEXT_FAILURE);
  unlink(path.c_str());
}

}  // namespace
}  // namespace ksv_detect_tests
