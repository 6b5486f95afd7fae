// Bound to POSIX: named pipes, and names that are no UTF-8.

#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class DetectOnPosix : public CommandTest {
 protected:
  DetectOnPosix() { setEnvironment("LANG", "en_US.UTF-8"); }
};

TEST_F(DetectOnPosix, reads_a_named_pipe_once) {
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  std::thread writer([this] { std::ofstream(path("pipe"), std::ios::binary) << "plain\n"; });
  const Outcome outcome = ksv({"detect", "pipe"});
  writer.join();
  EXPECT_EQ(outcome.out, "pipe\tUTF-8\t-\tlf\t-\t0x68000002\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(DetectOnPosix, converts_a_named_pipe_once) {
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  std::thread writer(
      [this] { std::ofstream(path("pipe"), std::ios::binary) << "\xFF\xFE\xE5\x65"; });
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "pipe"});
  writer.join();
  EXPECT_EQ(outcome.out, "日");
}

// The name of a file that was written on another system.
TEST_F(DetectOnPosix, reads_files_whose_names_are_no_utf8) {
  const std::string name = bytes({0x93, 0xFA, 0x96, 0x7B});
  std::ofstream(path(name), std::ios::binary) << "plain\n";
  const Outcome outcome = ksv({"detect", name});
  EXPECT_EQ(outcome.out, name + "\tUTF-8\t-\tlf\t-\t0x68000002\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(ksv({"detect", "--json", name}).out.find("\xEF\xBF\xBD"), std::string::npos);
  ::unlink(path(name).c_str());
}

}  // namespace
}  // namespace ksv_cli_tests
