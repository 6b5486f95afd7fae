// What the tests of settings have in common.
#pragma once

#include <cstring>
#include <string>

#include "common/platform.h"
#include "tests/common/support.h"

namespace ksv::test {

inline constexpr char kCharsetKey[] = "Charsetpath";
inline constexpr char kCharsetVariable[] = "KSV_CHARSETS";

// A user whose settings stand in the current directory, and nowhere else at first.
class Settings : public testing::Test {
 protected:
  Settings()
      : configuration_(kConfigurationVariable, directory_.path()),
        value_(kCharsetKey, std::nullopt),
        charsets_(kCharsetVariable, std::nullopt) {}

  static void configure(const std::string& text) { writeFile("ksv_conf.ini", text); }

  // "none" when there is no value.
  static std::string read(const char* key = kCharsetKey, size_t size = 260) {
    char buffer[300];
    std::memset(buffer, 'x', sizeof buffer);
    if (platform::readSetting(key, buffer, size)) return buffer;
    EXPECT_EQ(buffer[0], size == 0 ? 'x' : '\0');
    return "none";
  }

  TempDirectory directory_;
  ScopedVariable configuration_;
  ScopedVariable value_;
  ScopedVariable charsets_;
};

}  // namespace ksv::test
