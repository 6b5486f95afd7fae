#include <gtest/gtest.h>

#include "kit/profiles/profile.h"

namespace ksv_kit {
namespace {

Profile profileOf(std::string_view text) {
  ProfileError error{0, ""};
  std::optional<Profile> profile = Profile::fromText(text, error);
  EXPECT_TRUE(profile) << "line " << error.line << ": " << error.message;
  return profile.value_or(Profile());
}

TEST(ProfileText, names_charsets_and_what_becomes_of_characters) {
  const Profile profile = profileOf(
      "# ours\n"
      "name house\n"
      "\n"
      "charset shift_jis euc-jp  # both\n"
      "  as windows31j\r\n"
      "\tread FF5E U+301C\n"
      "  write 2026 2E 2E 2E\n"
      "  refuse E000-E757 00A5\n"
      "  unread e757\n"
      "charset utf-8\n"
      "  as utf-8 utf-16");
  EXPECT_EQ(profile.name(), "house");
  EXPECT_EQ(profile.charsets(), (std::vector<std::string_view>{"euc-jp", "shift_jis", "utf-8"}));
  for (const char* charset : {"shift_jis", "euc-jp"}) {
    const CharsetProfile& found = *profile.find(charset);
    ASSERT_EQ(found.afterDecoding.size(), 1U);
    EXPECT_EQ(found.afterDecoding[0].from, U"\xFF5E");
    EXPECT_EQ(found.afterDecoding[0].to, U"\x301C");
    ASSERT_EQ(found.beforeEncoding.size(), 1U);
    EXPECT_EQ(found.beforeEncoding[0].from, U"\x2026");
    EXPECT_EQ(found.beforeEncoding[0].to, U"...");
    EXPECT_TRUE(found.refusedBeforeEncoding.refuses(0xE000));
    EXPECT_TRUE(found.refusedBeforeEncoding.refuses(0xE757));
    EXPECT_TRUE(found.refusedBeforeEncoding.refuses(0xA5));
    EXPECT_FALSE(found.refusedBeforeEncoding.refuses(0xE758));
    EXPECT_TRUE(found.refusedAfterDecoding.refuses(0xE757));
    EXPECT_EQ(profile.charsetToRead(charset), "windows31j");
    EXPECT_EQ(profile.charsetToWrite(charset), "windows31j");
  }
  EXPECT_EQ(profile.charsetToRead("utf-8"), "utf-8");
  EXPECT_EQ(profile.charsetToWrite("utf-8"), "utf-16");
  EXPECT_EQ(profile.find("big5"), nullptr);
  EXPECT_EQ(profile.charsetToRead("big5"), "big5");
}

TEST(ProfileText, may_begin_with_a_mark_of_utf8) {
  EXPECT_EQ(profileOf("\xEF\xBB\xBF"
                      "name marked\r\n")
                .name(),
            "marked");
}

TEST(ProfileText, may_say_nothing_but_a_name) {
  EXPECT_TRUE(profileOf("name empty\n").charsets().empty());
}

struct Mistake {
  const char* text;
  size_t line;
  const char* message;
};

void PrintTo(const Mistake& mistake, std::ostream* out) { *out << mistake.message; }

class ProfileMistake : public testing::TestWithParam<Mistake> {};

TEST_P(ProfileMistake, is_told_with_its_line) {
  ProfileError error{0, ""};
  EXPECT_FALSE(Profile::fromText(GetParam().text, error));
  EXPECT_EQ(error.line, GetParam().line);
  EXPECT_EQ(error.message, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    EachKind, ProfileMistake,
    testing::Values(
        Mistake{"", 1, "there is no name"}, Mistake{"# only\n\n", 2, "there is no name"},
        Mistake{"charset euc-jp\n", 1, "the first line is not 'name'"},
        Mistake{"name a\nname b\n", 2, "there is a name already"},
        Mistake{"name\n", 1, "behind 'name' belongs: one name"},
        Mistake{"name a b\n", 1, "behind 'name' belongs: one name"},
        Mistake{"name a\ncharset\n", 2, "behind 'charset' belongs: names of charsets"},
        Mistake{"name a\ncharset EUC-JP\n", 2,
                "charsets are named in small letters, unlike 'EUC-JP'"},
        Mistake{"name a\ncharset x\nread 1 2\ncharset y x\n", 3,
                "'1' is not the number of a character, such as 301C or U+301C"},
        Mistake{"name a\ncharset x\ncharset y x\n", 3, "'x' is there twice"},
        Mistake{"name a\ncharset x x\n", 2, "'x' is there twice"},
        Mistake{"name a\n\nread FF5E 301C\n", 3, "'read' stands in front of any 'charset'"},
        Mistake{"name a\ncharset x\nreads FF5E 301C\n", 3, "'reads' is not known"},
        Mistake{"name a\ncharset x\nread FF5E\n", 3,
                "behind 'read' belongs: a character, and one to four others"},
        Mistake{"name a\ncharset x\nwrite 20 21 22 23 24 25\n", 3,
                "behind 'write' belongs: a character, and one to four others"},
        Mistake{"name a\ncharset x\nread FF5E 301C\nread FF5E 301D\n", 4, "'FF5E' is there twice"},
        Mistake{"name a\ncharset x\nwrite 301C FF5E\nwrite U+301C 7E\n", 4,
                "'U+301C' is there twice"},
        Mistake{"name a\ncharset x\nread FF5G 301C\n", 3,
                "'FF5G' is not the number of a character, such as 301C or U+301C"},
        Mistake{"name a\ncharset x\nread -5 301C\n", 3,
                "'-5' is not the number of a character, such as 301C or U+301C"},
        Mistake{"name a\ncharset x\nread 110000 301C\n", 3, "'110000' is no character"},
        Mistake{"name a\ncharset x\nread D800 301C\n", 3, "'D800' is no character"},
        Mistake{"name a\ncharset x\nread FFFFFFFFFF 301C\n", 3,
                "'FFFFFFFFFF' is not the number of a character, such as 301C or U+301C"},
        Mistake{"name a\ncharset x\nrefuse E757-E000\n", 3, "'E757-E000' ends before it begins"},
        Mistake{"name a\ncharset x\nunread\n", 3, "behind 'unread' belongs: characters"},
        Mistake{"name a\ncharset x\nas y\nas z\n", 4, "there is an 'as' already"},
        Mistake{"name a\ncharset x\nas y z w\n", 3, "behind 'as' belongs: one charset, or two"}));

TEST(ProfileText, is_not_read_beyond_its_bound) {
  ProfileError error{0, ""};
  const std::string text = "name a\n" + std::string(kLongestProfile, '\n');
  EXPECT_FALSE(Profile::fromText(text, error));
  EXPECT_EQ(error.message, "the text is longer than 1 MB");
}

TEST(RefusedCharacters, are_those_of_all_ranges_however_they_meet) {
  RefusedCharacters refused;
  EXPECT_TRUE(refused.isEmpty());
  refused.add(10, 20);
  refused.add(40, 50);
  refused.add(15, 42);
  refused.add(60, 60);
  refused.add(12, 13);
  EXPECT_FALSE(refused.isEmpty());
  for (uint32_t character = 0; character < 70; ++character) {
    const bool expected = (character >= 10 && character <= 50) || character == 60;
    EXPECT_EQ(refused.refuses(character), expected) << character;
  }
}

}  // namespace
}  // namespace ksv_kit
