#include <sys/stat.h>

#include <cstring>
#include <vector>

#include "common/wildcard.h"
#include "ksv_path.h"
#include "tests/common/support.h"

using ksv::test::openDescriptors;
using ksv::test::TempDirectory;
using ksv::test::writeFile;
using Names = std::vector<std::string>;

namespace {

Names list(const std::string& pattern) {
  Names names;
  KsvDirectoryListing listing;
  std::memset(&listing, 0xEE, sizeof listing);
  if (KSV_ASC_opendir(pattern.c_str(), &listing) == 0) {
    EXPECT_EQ(KSV_ASC_closedir(&listing), -1);
    return names;
  }
  KsvDirectoryEntry entry;
  while (KSV_ASC_readdir(&listing, &entry) == 1) names.emplace_back(entry.name);
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 0);
  EXPECT_EQ(KSV_ASC_closedir(&listing), 0);
  EXPECT_EQ(KSV_ASC_closedir(&listing), -1);
  return names;
}

class Directory : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"b.xml", "a.xml", "B.XML", ".hidden", "日本.xml", "表", "a", "[x]"}) {
      writeFile(name, "12345");
    }
    std::filesystem::create_directory("sub");
    writeFile("sub/inner.txt", "");
  }
  TempDirectory directory_;
};

}  // namespace

TEST_F(Directory, lists_matches_in_ascending_byte_order) {
  EXPECT_EQ(list("*.xml"), (Names{"a.xml", "b.xml", "日本.xml"}));
  EXPECT_EQ(list(directory_.path() + "/*.xml"), (Names{"a.xml", "b.xml", "日本.xml"}));
}

TEST_F(Directory, matches_every_entry_with_a_star) {
  EXPECT_EQ(list("*"), (Names{".", "..", ".hidden", "B.XML", "[x]", "a", "a.xml", "b.xml", "sub",
                              "日本.xml", "表"}));
}

TEST_F(Directory, takes_one_utf8_character_for_a_question_mark) {
  EXPECT_EQ(list("?"), (Names{".", "a", "表"}));
  EXPECT_EQ(list("??.xml"), (Names{"日本.xml"}));
  EXPECT_EQ(list("?.xml"), (Names{"a.xml", "b.xml"}));
}

TEST_F(Directory, takes_brackets_as_they_stand) { EXPECT_EQ(list("[x*"), (Names{"[x]"})); }

TEST_F(Directory, finds_the_entry_of_a_name_without_wild_cards) {
  EXPECT_EQ(list("日本.xml"), (Names{"日本.xml"}));
  EXPECT_EQ(list("sub"), (Names{"sub"}));
  EXPECT_EQ(list("sub/inner.txt"), (Names{"inner.txt"}));
  EXPECT_EQ(list("A.xml"), Names());
}

TEST_F(Directory, takes_backslashes_for_separators) {
  EXPECT_EQ(list("sub\\*.txt"), (Names{"inner.txt"}));
  EXPECT_EQ(list(".\\sub\\inner.txt"), (Names{"inner.txt"}));
  EXPECT_EQ(list(".\\sub\\..\\*.XML"), (Names{"B.XML"}));
}

TEST_F(Directory, prefers_a_directory_whose_name_has_a_backslash) {
  std::filesystem::create_directories("x\\y");
  std::filesystem::create_directories("x/y");
  writeFile("x\\y/one", "");
  writeFile("x/y/two", "");
  EXPECT_EQ(list("x\\y/*e"), (Names{"one"}));
  EXPECT_EQ(list("x/y/t*"), (Names{"two"}));
}

TEST_F(Directory, has_wild_cards_in_the_last_component_only) {
  EXPECT_EQ(list("s*/inner.txt"), Names());
  EXPECT_EQ(list("*/inner.*"), Names());
}

TEST_F(Directory, finds_nothing_in_vain) {
  for (const char* pattern : {"", "sub/", "/", "missing/*", "*.none", "a.xml/*"}) {
    EXPECT_EQ(list(pattern), Names()) << pattern;
    EXPECT_EQ(KSV_FindFile(pattern), -1) << pattern;
  }
}

TEST_F(Directory, lists_the_root) {
  EXPECT_EQ(list("/tmp"), (Names{"tmp"}));
  EXPECT_EQ(list("\\tm*"), (Names{"tmp"}));
}

TEST_F(Directory, lists_names_of_any_bytes) {
  writeFile("\x82\xA0.sjis", "");
  EXPECT_EQ(list("??.sjis"), (Names{"\x82\xA0.sjis"}));
  EXPECT_EQ(list("\x82*"), (Names{"\x82\xA0.sjis"}));
}

TEST_F(Directory, lists_dangling_links) {
  std::filesystem::create_symlink("nowhere", "dangling");
  EXPECT_EQ(list("dang*"), (Names{"dangling"}));
  EXPECT_EQ(list("dangling"), (Names{"dangling"}));
}

TEST_F(Directory, holds_the_longest_names) {
  const std::string name(255, 'n');
  writeFile(name, "");
  EXPECT_EQ(list("nnn*"), (Names{name}));
}

TEST_F(Directory, describes_each_entry_in_the_listing) {
  struct stat wanted;
  ASSERT_EQ(stat("a.xml", &wanted), 0);
  KsvDirectoryListing listing;
  ASSERT_EQ(KSV_ASC_opendir("a.xml", &listing), 1);
  EXPECT_NE(listing.firstEntry, 0u);
  EXPECT_STREQ(listing.name, "a.xml");
  EXPECT_EQ(listing.size, 5u);
  EXPECT_EQ(listing.attrib, 0u);
  EXPECT_EQ(listing.timeWrite, wanted.st_mtime);
  EXPECT_EQ(listing.timeAccess, wanted.st_atime);
  EXPECT_EQ(listing.timeCreate, wanted.st_ctime);
  KSV_ASC_closedir(&listing);
  ASSERT_EQ(KSV_ASC_opendir("sub", &listing), 1);
  EXPECT_EQ(listing.attrib, uint32_t{KSV_ATTRIBUTE_DIRECTORY});
  KSV_ASC_closedir(&listing);
}

TEST_F(Directory, gives_the_first_name_once_and_leaves_the_rest_of_the_entry_alone) {
  KsvDirectoryListing listing;
  ASSERT_EQ(KSV_ASC_opendir("?.xml", &listing), 1);
  KsvDirectoryEntry entry = {{1, 2, 3}, "before"};
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 1);
  EXPECT_STREQ(entry.name, "a.xml");
  EXPECT_EQ(listing.firstEntry, 0u);
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 1);
  EXPECT_STREQ(entry.name, "b.xml");
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 0);
  EXPECT_STREQ(entry.name, "b.xml");
  EXPECT_EQ(entry.reserved[0] + entry.reserved[1] + entry.reserved[2], 6u);
  EXPECT_EQ(KSV_ASC_closedir(&listing), 0);
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 0);
}

TEST_F(Directory, refuses_null) {
  KsvDirectoryListing listing;
  KsvDirectoryEntry entry;
  EXPECT_EQ(KSV_ASC_opendir(nullptr, &listing), 0);
  EXPECT_EQ(KSV_ASC_opendir("*", nullptr), 0);
  EXPECT_EQ(KSV_ASC_readdir(nullptr, &entry), 0);
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 0);
  EXPECT_EQ(KSV_ASC_closedir(nullptr), -1);
  KsvDirectoryListing zeroed = {};
  EXPECT_EQ(KSV_ASC_readdir(&zeroed, &entry), 0);
  EXPECT_EQ(KSV_ASC_closedir(&zeroed), -1);
  EXPECT_EQ(KSV_FindFile(nullptr), -1);
}

TEST_F(Directory, finds_files_and_leaves_nothing_open) {
  const auto before = openDescriptors();
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(KSV_FindFile("*.xml"), 0);
    EXPECT_EQ(KSV_FindFile("日本.xml"), 0);
    EXPECT_EQ(KSV_FindFile("*.none"), -1);
    list("*");
  }
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Directory, refuses_ill_formed_and_long_patterns_when_finding_but_not_when_listing) {
  writeFile("\x82\xA0", "");
  EXPECT_EQ(KSV_FindFile("\x82\xA0"), -1);
  const std::string tooLong = "." + std::string(776, '/') + "a.*";
  ASSERT_EQ(tooLong.size(), 780u);
  EXPECT_EQ(KSV_FindFile(tooLong.c_str()), -1);
  EXPECT_EQ(KSV_FindFile(tooLong.substr(0, 1).append(tooLong, 2).c_str()), 0);
  EXPECT_EQ(list(tooLong), (Names{"a.xml"}));
}

namespace {

// Slow and obvious: every way to spend a star is tried.
bool matchesByTrial(const char* pattern, const char* name) {
  if (*pattern == '\0') return *name == '\0';
  if (*pattern == '*') {
    return matchesByTrial(pattern + 1, name) ||
           (*name != '\0' && matchesByTrial(pattern, name + 1));
  }
  return *name != '\0' && (*pattern == '?' || *pattern == *name) &&
         matchesByTrial(pattern + 1, name + 1);
}

Names allStrings(const char* alphabet, size_t longest) {
  Names strings{""};
  for (size_t begin = 0, length = 0; length < longest; ++length) {
    const size_t end = strings.size();
    for (; begin < end; ++begin) {
      for (const char* c = alphabet; *c != '\0'; ++c) strings.push_back(strings[begin] + *c);
    }
  }
  return strings;
}

}  // namespace

TEST(Wildcard, agrees_with_trying_everything) {
  const Names names = allStrings("ab", 6);
  for (const std::string& pattern : allStrings("ab*?", 5)) {
    for (const std::string& name : names) {
      ASSERT_EQ(ksv::matchesWildcard(pattern, name), matchesByTrial(pattern.c_str(), name.c_str()))
          << pattern << " " << name;
    }
  }
}

TEST(Wildcard, stays_fast_with_many_stars) {
  std::string pattern;
  for (int i = 0; i < 60; ++i) pattern += "*a";
  EXPECT_FALSE(ksv::matchesWildcard(pattern + "b", std::string(255, 'a')));
}
