#include "kit/profiles/profile_change.h"

#include <gtest/gtest.h>

#include "tests/kit/unicode/pieces.h"

namespace ksv_kit {
namespace {

std::string afterDecoding(const char* profile, const char* charset, std::string_view text) {
  const auto change = changeAfterDecoding(*Profile::named(profile), charset);
  return change == nullptr ? std::string(text) : changedAtEveryCut(*change, text).text;
}

std::string beforeEncoding(const char* profile, const char* charset, std::string_view text) {
  const auto change = changeBeforeEncoding(*Profile::named(profile), charset);
  return change == nullptr ? std::string(text) : changedAtEveryCut(*change, text).text;
}

TEST(Profile, of_the_four_names_is_built_in) {
  EXPECT_EQ(Profile::names(),
            (std::vector<std::string_view>{"windows", "jis", "web", "iconv-glibc"}));
  EXPECT_EQ(Profile::named("Windows"), nullptr);
  EXPECT_EQ(Profile::named("jis")->name(), "jis");
}

// The wave dash family as the directory reads it: 8160 8161 817C 8191 8192 81CA of Shift_JIS.
constexpr const char* kAsWindows = "\uFF5E\u2225\uFF0D\uFFE0\uFFE1\uFFE2";
constexpr const char* kAsStandard = "\u301C\u2016\u2212\u00A2\u00A3\u00AC";

TEST(Profile, says_how_the_wave_dash_and_its_kin_are_read) {
  EXPECT_EQ(afterDecoding("windows", "shift_jis", kAsWindows), kAsWindows);
  EXPECT_EQ(afterDecoding("web", "shift_jis", kAsWindows), kAsWindows);
  EXPECT_EQ(afterDecoding("jis", "shift_jis", kAsWindows), kAsStandard);
  EXPECT_EQ(afterDecoding("jis", "euc-jp", kAsWindows), kAsStandard);
  EXPECT_EQ(afterDecoding("iconv-glibc", "iso-2022-jp", kAsWindows), kAsStandard);
  EXPECT_EQ(afterDecoding("iconv-glibc", "windows31j", kAsWindows), kAsWindows);
}

TEST(Profile, says_whether_5C_and_7E_are_yen_and_overline) {
  EXPECT_EQ(afterDecoding("jis", "shift_jis", "\\~"), "\\~");
  EXPECT_EQ(afterDecoding("iconv-glibc", "shift_jis", "C:\\~"), "C:\u00A5\u203E");
  EXPECT_EQ(afterDecoding("iconv-glibc", "euc-jp", "\\~"), "\\~");
  EXPECT_EQ(beforeEncoding("web", "euc-jp", "\u00A5\u203E"), "\\~");
}

TEST(Profile, exchanges_two_characters_for_each_other) {
  // 5C is the yen sign, and 815F the backslash.
  EXPECT_EQ(afterDecoding("jis", "shift_jis-2004", "\\\uFF3C"), "\u00A5\\");
  EXPECT_EQ(beforeEncoding("jis", "shift_jis-2004", "\\\u00A5"), "\uFF3C\u00A5");
}

TEST(Profile, refuses_to_write_what_its_convention_does_not_have) {
  const auto refuses = [](const char* profile, const char* charset, uint32_t character) {
    return refusedBeforeEncoding(*Profile::named(profile), charset).refuses(character);
  };
  EXPECT_TRUE(refuses("windows", "windows31j", 0x301C));
  EXPECT_FALSE(refuses("windows", "windows31j", 0xFF5E));
  EXPECT_TRUE(refuses("jis", "shift_jis", 0xFF5E));
  EXPECT_FALSE(refuses("jis", "shift_jis", 0x301C));
  EXPECT_TRUE(refuses("web", "shift_jis", 0xE000));
  EXPECT_FALSE(refuses("web", "shift_jis", 0x2212));
  EXPECT_TRUE(refuses("web", "iso-2022-jp", 0x1B));
  EXPECT_FALSE(refuses("iconv-glibc", "koi8-r", 0x301C));
  EXPECT_TRUE(refusedBeforeEncoding(*Profile::named("web"), "koi8-r").isEmpty());
}

TEST(Profile, refuses_to_read_what_would_designate_another_set) {
  const RefusedCharacters refused = refusedAfterDecoding(*Profile::named("web"), "iso-2022-jp");
  EXPECT_TRUE(refused.refuses(0x0E));
  EXPECT_FALSE(refused.refuses(0x0D));
}

TEST(Profile, of_browsers_reads_shift_jis_with_the_vendors_rows) {
  EXPECT_EQ(Profile::named("web")->charsetToRead("shift_jis"), "windows31j");
  EXPECT_EQ(Profile::named("jis")->charsetToRead("shift_jis"), "shift_jis");
  EXPECT_EQ(Profile::named("web")->charsetToWrite("iso-2022-jp"), "cp50220");
}

TEST(Profile, has_no_change_where_there_is_nothing_to_do) {
  EXPECT_EQ(changeAfterDecoding(*Profile::named("web"), "shift_jis"), nullptr);
  EXPECT_EQ(changeAfterDecoding(*Profile::named("jis"), "utf-8"), nullptr);
  EXPECT_EQ(changeBeforeEncoding(*Profile::named("windows"), "windows31j"), nullptr);
}

TEST(Profile, of_a_user_changes_characters_to_several) {
  ProfileError error{0, ""};
  const auto profile = Profile::fromText("name u\ncharset x\nwrite 2026 2E 2E 2E\n", error);
  ASSERT_TRUE(profile);
  const auto change = changeBeforeEncoding(*profile, "x");
  const Changed changed = changedAtEveryCut(*change, "a\u2026b\u2025");
  EXPECT_EQ(changed.text, "a...b\u2025");
  EXPECT_EQ(changed.origins, (std::vector<uint64_t>{0, 1, 2, 3, 4, 5, 6, 7}));
}

}  // namespace
}  // namespace ksv_kit
