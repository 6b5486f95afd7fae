// Which language dtctText takes from where.
#include "detect/language.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "tests/common/support.h"

namespace ksv_detect_tests {
namespace {

using ksv::detect::Preference;
using ksv::detect::preferenceFor;
using ksv::test::ScopedVariable;

Preference withLang(const std::string& lang) {
  const ScopedVariable variable("LANG", lang);
  return preferenceFor(nullptr);
}

TEST(Language, given_is_one_of_four_without_regard_to_case) {
  const ScopedVariable variable("LANG", "ja_JP.UTF-8");
  EXPECT_EQ(preferenceFor("Japanese"), Preference::kJapanese);
  EXPECT_EQ(preferenceFor("jApAnEsE"), Preference::kJapanese);
  EXPECT_EQ(preferenceFor("Simplified Chinese"), Preference::kSimplifiedChinese);
  EXPECT_EQ(preferenceFor("TRADITIONAL CHINESE"), Preference::kTraditionalChinese);
  EXPECT_EQ(preferenceFor("korean"), Preference::kKorean);
  for (const char* other : {"English", "ja", "ja_JP", "Japanese ", "Chinese", "x", " "})
    EXPECT_EQ(preferenceFor(other), Preference::kNone) << other;
}

TEST(Language, that_is_null_or_empty_is_that_of_the_environment) {
  const ScopedVariable variable("LANG", "ja_JP.UTF-8");
  EXPECT_EQ(preferenceFor(nullptr), Preference::kJapanese);
  EXPECT_EQ(preferenceFor(""), Preference::kJapanese);
}

TEST(Language, of_the_environment_is_the_first_part_that_is_found) {
  EXPECT_EQ(withLang("ja_JP.eucJP"), Preference::kJapanese);
  EXPECT_EQ(withLang("JA_jp"), Preference::kJapanese);
  EXPECT_EQ(withLang("Japanese_Japan.932"), Preference::kJapanese);
  EXPECT_EQ(withLang("x-jpn-x"), Preference::kJapanese);
  EXPECT_EQ(withLang("en_US.UTF-8"), Preference::kNone);
  EXPECT_EQ(withLang("English_Korea"), Preference::kNone) << "English comes first";
  EXPECT_EQ(withLang("Korean_ja_"), Preference::kJapanese) << "not what stands first in the name";
  EXPECT_EQ(withLang("zh_CN.GB18030"), Preference::kSimplifiedChinese);
  EXPECT_EQ(withLang("Chinese-Simplified"), Preference::kSimplifiedChinese);
  EXPECT_EQ(withLang("CHS"), Preference::kSimplifiedChinese);
  EXPECT_EQ(withLang("zh_TW"), Preference::kTraditionalChinese);
  EXPECT_EQ(withLang("chinese-traditional"), Preference::kTraditionalChinese);
  EXPECT_EQ(withLang("cht"), Preference::kTraditionalChinese);
  EXPECT_EQ(withLang("ko_KR"), Preference::kKorean);
  EXPECT_EQ(withLang("Korean_Korea.949"), Preference::kKorean);
  EXPECT_EQ(withLang("kor"), Preference::kKorean);
}

TEST(Language, of_the_environment_may_be_two_letters) {
  EXPECT_EQ(withLang("ja"), Preference::kJapanese);
  EXPECT_EQ(withLang("JA"), Preference::kJapanese);
  EXPECT_EQ(withLang("en"), Preference::kNone);
  EXPECT_EQ(withLang("zh"), Preference::kSimplifiedChinese);
  EXPECT_EQ(withLang("ko"), Preference::kKorean);
  for (const char* other : {"jaa", "j", "zh_HK", "de_DE.UTF-8", "C", "POSIX", "ja.UTF-8"})
    EXPECT_EQ(withLang(other), Preference::kNone) << other;
}

TEST(Language, of_an_environment_of_any_length_is_read) {
  EXPECT_EQ(withLang(std::string(20000, 'x') + "ja_"), Preference::kJapanese);
}

TEST(Language, without_LANG_is_that_of_the_locale_which_is_set) {
  const std::string before = std::setlocale(LC_CTYPE, nullptr);
  {
    const ScopedVariable lang("LANG", std::nullopt);
    const ScopedVariable all("LC_ALL", "C");
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(preferenceFor("English"), Preference::kNone);
    preferenceFor(nullptr);
    const std::string own = std::setlocale(LC_CTYPE, nullptr);
    EXPECT_EQ(own, std::setlocale(LC_CTYPE, "")) << "the user's";
  }
  std::setlocale(LC_CTYPE, before.c_str());
}

}  // namespace
}  // namespace ksv_detect_tests
