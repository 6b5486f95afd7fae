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
  const Outcome outcome = ksv({"detect", "--classic", "pipe"});
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
  const Outcome outcome = ksv({"detect", "--classic", name});
  EXPECT_EQ(outcome.out, name + "\tUTF-8\t-\tlf\t-\t0x68000002\n");
  EXPECT_EQ(outcome.status, 0);
  const std::string json = ksv({"detect", "--json", name}).out;
  EXPECT_EQ(json.find("{\"path\":\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD{\","
                      "\"pathBytes\":\"k/qWew==\",\"charset\":\"ISO-646IRV\","),
            0u)
      << json;
  EXPECT_EQ(ksv({"detect", "--json", "--classic", name}).out.find("pathBytes"), std::string::npos);
  ::unlink(path(name).c_str());
}

TEST_F(DetectOnPosix, records_the_failure_of_a_file_whose_name_is_no_utf8) {
  EXPECT_EQ(ksv({"detect", "--json", "\xFF"}).out,
            "{\"path\":\"\xEF\xBF\xBD\",\"pathBytes\":\"/w==\",\"error\":{\"reason\":"
            "\"No such file or directory\",\"offset\":null}}\n");
}

TEST_F(DetectOnPosix, keeps_a_name_to_its_field_of_the_line) {
  const std::string name = "a\tb\nc\\d\x1B[1m\xC2\x9B";
  const std::string shown = "a\\tb\\nc\\\\d\\x1B[1m\\u009B";
  write(name, "plain\n");
  const std::string columns = "\tUTF-8\t-\tlf\t-\t0x68000002\n";
  EXPECT_EQ(ksv({"detect", name}).out.find(shown + "\tISO-646IRV\t"), 0u);
  EXPECT_EQ(ksv({"detect", "--classic", name}).out, name + columns);
  EXPECT_EQ(ksv({"check", name}).out, shown + "\tISO-646IRV\t-\t-\t-\t-\n");
  EXPECT_EQ(ksv({"ole", "list", name}).err,
            "ksv: " + shown + ": is not a compound document (offset 0)\n");
}

}  // namespace
}  // namespace ksv_cli_tests
