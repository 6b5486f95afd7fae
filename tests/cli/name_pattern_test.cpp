// Patterns of --include and --exclude.
#include "cli/jobs/name_pattern.h"

#include <gtest/gtest.h>

#include "cli/system/paths.h"

namespace ksv_cli_tests {
namespace {

bool matches(const char* pattern, std::string_view path, bool isDirectory = false) {
  return ksv_cli::NamePattern(pattern).matches(path, isDirectory);
}

TEST(NamePattern, without_a_separator_stands_for_the_last_component) {
  EXPECT_TRUE(matches("*.txt", "a.txt"));
  EXPECT_TRUE(matches("*.txt", "deep/er/a.txt"));
  EXPECT_TRUE(matches("*.txt", ".txt")) << "hidden files are no exception";
  EXPECT_FALSE(matches("*.txt", "a.txt.bak"));
  EXPECT_FALSE(matches("deep*", "deep/er"));
  EXPECT_TRUE(matches("a?c", "abc"));
  EXPECT_FALSE(matches("a?c", "ac"));
  EXPECT_TRUE(matches("", ""));
  EXPECT_FALSE(matches("", "a"));
}

TEST(NamePattern, with_a_separator_stands_for_the_path_below_the_directory) {
  EXPECT_TRUE(matches("src/*.c", "src/a.c"));
  EXPECT_FALSE(matches("src/*.c", "a/src/a.c"));
  EXPECT_FALSE(matches("src/*.c", "src/a/b.c")) << "a star stays in its component";
  EXPECT_FALSE(matches("src?a.c", "src/a.c"));
  EXPECT_FALSE(matches("src/[!a]b", "src//b"));
  EXPECT_TRUE(matches("/a", "a"));
  EXPECT_FALSE(matches("/a", "b/a"));
}

TEST(NamePattern, of_two_stars_goes_across_separators) {
  EXPECT_TRUE(matches("**/a.c", "a.c"));
  EXPECT_TRUE(matches("**/a.c", "x/y/a.c"));
  EXPECT_FALSE(matches("**/a.c", "ba.c"));
  EXPECT_TRUE(matches("x/**/a", "x/a"));
  EXPECT_TRUE(matches("x/**/a", "x/y/z/a"));
  EXPECT_FALSE(matches("x/**/a", "xy/a"));
  EXPECT_TRUE(matches("x/**", "x/y/z"));
  EXPECT_FALSE(matches("x/**", "x"));
  EXPECT_TRUE(matches("x/a**z", "x/ab/cz"));
  EXPECT_FALSE(matches("x/a*z", "x/ab/cz"));
}

TEST(NamePattern, in_brackets_lists_characters) {
  EXPECT_TRUE(matches("[abc]1", "b1"));
  EXPECT_FALSE(matches("[abc]1", "d1"));
  EXPECT_TRUE(matches("[a-c]", "c"));
  EXPECT_TRUE(matches("[!a-c]", "d"));
  EXPECT_TRUE(matches("[^a-c]", "-"));
  EXPECT_TRUE(matches("[a-]", "-"));
  EXPECT_TRUE(matches("[]x]", "]"));
  EXPECT_TRUE(matches("[!]x]", "a"));
  EXPECT_FALSE(matches("[!]x]", "]"));
  EXPECT_FALSE(matches("[c-a]", "b")) << "nothing is between them";
  EXPECT_TRUE(matches("[ab", "[ab")) << "it is not closed";
  EXPECT_TRUE(matches("[", "["));
}

TEST(NamePattern, takes_a_character_of_UTF_8_for_one_and_a_lone_byte_too) {
  EXPECT_TRUE(matches("?.txt", "\xE3\x81\x82.txt"));
  EXPECT_TRUE(matches("[\xE3\x81\x81-\xE3\x82\x93]", "\xE3\x81\x82"));
  EXPECT_FALSE(matches("[\xE3\x81\x81-\xE3\x82\x93]", "\xE3\x82\xA2"));
  EXPECT_TRUE(matches("?", "\xFF"));
  EXPECT_FALSE(matches("?", "\xFF\xFE"));
  EXPECT_TRUE(matches("\x93\xFA*", "\x93\xFA\x96\x7B.txt")) << "names of any bytes";
  EXPECT_FALSE(matches("[\x01-\x7E]", "\xFF"));
}

TEST(NamePattern, with_a_separator_at_its_end_stands_for_directories_only) {
  EXPECT_TRUE(matches("build/", "x/build", true));
  EXPECT_FALSE(matches("build/", "x/build", false));
  EXPECT_TRUE(matches("a/b/", "a/b", true));
  EXPECT_FALSE(matches("a/b/", "x/a/b", true));
}

TEST(NamePattern, takes_what_follows_a_backslash_as_it_is_where_that_is_no_separator) {
  if (ksv_cli::platform::backslashSeparates()) {
    EXPECT_TRUE(matches("a\\b", "a/b"));
    EXPECT_TRUE(matches("*.TXT", "a.txt")) << "names have no case";
    EXPECT_TRUE(matches("[a-c]", "B"));
    return;
  }
  EXPECT_TRUE(matches("a\\*", "a*"));
  EXPECT_FALSE(matches("a\\*", "ab"));
  EXPECT_TRUE(matches("[\\]]", "]"));
  EXPECT_TRUE(matches("\\", "\\"));
  EXPECT_FALSE(matches("*.TXT", "a.txt"));
}

TEST(NamePattern, costs_no_more_for_many_stars) {
  std::string pattern;
  for (int i = 0; i < 40; ++i) pattern += "*a";
  EXPECT_FALSE(matches((pattern + "b").c_str(), std::string(4000, 'a')));
  EXPECT_TRUE(matches(pattern.c_str(), std::string(4000, 'a')));
}

}  // namespace
}  // namespace ksv_cli_tests
