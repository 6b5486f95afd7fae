// Bound to POSIX: settings stand below the home directory unless told otherwise.
#include "tests/common/settings_fixture.h"

using ksv::test::ScopedVariable;
using ksv::test::Settings;
using ksv::test::writeFile;

TEST_F(Settings, stand_below_the_home_directory_by_default) {
  std::filesystem::create_directory(".config");
  writeFile(".config/ksv_conf.ini", "Charsetpath=/from/home\n");
  ScopedVariable configuration("XDG_CONFIG_HOME", std::nullopt);
  ScopedVariable home("HOME", directory_.path());
  EXPECT_EQ(read(), "/from/home/");
}
