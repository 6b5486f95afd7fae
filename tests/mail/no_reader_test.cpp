// Where there is no mail reader, the command says so.

#include <gtest/gtest.h>

#include <filesystem>

#include "cli/mail_module/mail_module.h"
#include "cli/system/failure.h"
#include "cli/system/loadable_module.h"

namespace ksv_cli {
namespace {

TEST(LoadableModule, that_is_not_there_is_wrong_usage) {
  try {
    platform::functionOfModule("ksv_nothing", "function");
    FAIL() << "a module that is not there was loaded";
  } catch (const UsageError& error) {
    EXPECT_NE(std::string(error.what()).find("ksv_nothing"), std::string::npos) << error.what();
  }
}

}  // namespace
}  // namespace ksv_cli
