// Bound to POSIX, where a variable can be set to nothing and a locale be named by one.
#include <gtest/gtest.h>

#include <clocale>

#include "detect/language.h"
#include "tests/common/support.h"

namespace ksv_detect_tests {
namespace {

using ksv::detect::Preference;
using ksv::detect::preferenceFor;
using ksv::test::ScopedVariable;

TEST(LanguageOnPosix, of_an_empty_LANG_is_none_and_leaves_the_locale_alone) {
  const ScopedVariable lang("LANG", "");
  const ScopedVariable all("LC_ALL", "C.UTF-8");
  std::setlocale(LC_CTYPE, "C");
  EXPECT_EQ(preferenceFor(nullptr), Preference::kNone);
  EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
}

TEST(LanguageOnPosix, without_LANG_sets_the_locale_of_the_process) {
  const ScopedVariable lang("LANG", std::nullopt);
  const ScopedVariable all("LC_ALL", "C.UTF-8");
  std::setlocale(LC_CTYPE, "C");
  EXPECT_EQ(preferenceFor(nullptr), Preference::kNone);
  EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
  std::setlocale(LC_CTYPE, "C");
}

TEST(LanguageOnPosix, of_a_locale_that_is_not_there_is_none) {
  const ScopedVariable lang("LANG", std::nullopt);
  const ScopedVariable all("LC_ALL", "ja_JP.no-such-charset");
  std::setlocale(LC_CTYPE, "C");
  EXPECT_EQ(preferenceFor(nullptr), Preference::kNone);
  std::setlocale(LC_CTYPE, "C");
}

}  // namespace
}  // namespace ksv_detect_tests
