// Bound to POSIX: names with capital letters are other files' there, and settings have
// their places.

#include <filesystem>
#include <fstream>

#include "kit/charsets/charset_directory.h"
#include "command.h"
#include "tests/common/support.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

class LintOnPosix : public CommandTest {};

TEST_F(LintOnPosix, tells_files_that_are_never_opened) {
  std::filesystem::create_directory(path("d"));
  write("d/Quay.xml", "");
  EXPECT_EQ(ksv({"lint", "d"}).out,
            ".: holds no charset rule file that can be read\n"
            "Quay.xml: has capital letters in its name, and is never opened\n");
}

// In the order of the library: the variable, the settings of the user, what is installed.
TEST_F(LintOnPosix, looks_where_the_library_looks) {
  const ksv::test::ScopedVariable configuration("XDG_CONFIG_HOME", path("config"));
  const ksv::test::ScopedVariable none("Charsetpath", "");
  EXPECT_EQ(ksv_kit::charsetDirectory(), charsetDirectory());
  std::filesystem::create_directory(path("config"));
  write("config/ksv_conf.ini", "\xEF\xBB\xBFother=x\r\nCharsetpath=" + std::string(300, 'x') +
                                   "\r\nCharsetpath=/set/\r\n");
  EXPECT_EQ(ksv_kit::charsetDirectory(), "/set") << "without its separator";
  const ksv::test::ScopedVariable set("Charsetpath", "/given");
  EXPECT_EQ(ksv_kit::charsetDirectory(), "/given");
}

}  // namespace
}  // namespace ksv_cli_tests
