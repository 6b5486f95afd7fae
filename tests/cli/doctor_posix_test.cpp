// ksv doctor where the system says where settings and temporary files are.

#include <filesystem>

#include "command.h"
#include "tests/common/support.h"

namespace ksv_cli_tests {
namespace {

using DoctorOnPosix = CommandTest;

TEST_F(DoctorOnPosix, names_the_configuration_file_that_names_the_directory) {
  useCharsetDirectoryOf("iso-8859-5");
  setEnvironment("Charsetpath", "");
  setEnvironment("XDG_CONFIG_HOME", path(""));
  const std::string directory = path("iso-8859-5");
  write("ksv_conf.ini", "Charsetpath=" + directory + "\n");
  const Outcome outcome = ksv({"doctor"});
  EXPECT_NE(outcome.out.find(directory + ", named by " + path("ksv_conf.ini\n")), std::string::npos)
      << outcome.out;
}

TEST_F(DoctorOnPosix, finds_the_directory_that_is_installed_with_the_program) {
  setEnvironment("Charsetpath", "");
  setEnvironment("XDG_CONFIG_HOME", path(""));
  EXPECT_NE(ksv({"doctor"}).out.find(", named as installed with the program\n"), std::string::npos);
}

TEST_F(DoctorOnPosix, tells_that_no_temporary_file_can_be_written) {
  useCharsetDirectoryOf("iso-8859-5");
  setEnvironment("TMPDIR", path("nowhere"));
  const Outcome outcome = ksv({"doctor"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.out.find("\nwrong  temporary files      a temporary file cannot be written: "),
            std::string::npos)
      << outcome.out;
  EXPECT_NE(outcome.out.find("TMPDIR"), std::string::npos);
}

TEST_F(DoctorOnPosix, leaves_no_temporary_file) {
  useCharsetDirectoryOf("iso-8859-5");
  std::filesystem::create_directory(path("tmp"));
  setEnvironment("TMPDIR", path("tmp"));
  EXPECT_NE(ksv({"doctor"}).out.find("can be written in " + path("tmp\n")), std::string::npos);
  EXPECT_TRUE(files("tmp").empty());
}

}  // namespace
}  // namespace ksv_cli_tests
