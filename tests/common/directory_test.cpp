#include "common/directory.h"

#include <chrono>
#include <cstring>

#include "common/wildcard.h"
#include "tests/common/directory_listing.h"

using ksv::test::Directory;
using ksv::test::list;
using ksv::test::Names;
using ksv::test::openDescriptors;
using ksv::test::writeFile;

TEST_F(Directory, lists_matches_in_ascending_byte_order) {
  EXPECT_EQ(list("*.xml"), (Names{"a.xml", "b.xml", word_ + ".xml"}));
  EXPECT_EQ(list(directory_.path() + "/*.xml"), (Names{"a.xml", "b.xml", word_ + ".xml"}));
}

TEST_F(Directory, matches_every_entry_with_a_star) {
  EXPECT_EQ(list("*"), (Names{".", "..", ".hidden", "[x]", "a", "a.xml", "b.xml", "sub",
                              word_ + ".xml", letter_}));
}

TEST_F(Directory, takes_brackets_as_they_stand) { EXPECT_EQ(list("[x*"), (Names{"[x]"})); }

TEST_F(Directory, finds_the_entry_of_a_name_without_wild_cards) {
  EXPECT_EQ(list(word_ + ".xml"), (Names{word_ + ".xml"}));
  EXPECT_EQ(list("sub"), (Names{"sub"}));
  EXPECT_EQ(list("sub/inner.txt"), (Names{"inner.txt"}));
}

TEST_F(Directory, takes_backslashes_for_separators) {
  EXPECT_EQ(list("sub\\*.txt"), (Names{"inner.txt"}));
  EXPECT_EQ(list(".\\sub\\inner.txt"), (Names{"inner.txt"}));
  EXPECT_EQ(list(".\\sub\\..\\a.x*"), (Names{"a.xml"}));
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

TEST_F(Directory, describes_each_entry_in_the_listing) {
  const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  KsvDirectoryListing listing;
  ASSERT_EQ(KSV_ASC_opendir("a.xml", &listing), 1);
  EXPECT_NE(listing.firstEntry, 0u);
  EXPECT_STREQ(listing.name, "a.xml");
  EXPECT_EQ(listing.size, 5u);
  EXPECT_EQ(listing.attrib, 0u);
  for (const int64_t time : {listing.timeWrite, listing.timeAccess, listing.timeCreate}) {
    EXPECT_LE(time, now + 1);
    EXPECT_GE(time, now - 60);
  }
  KSV_ASC_closedir(&listing);
  ASSERT_EQ(KSV_ASC_opendir("sub", &listing), 1);
  EXPECT_EQ(listing.attrib, uint32_t{KSV_ATTRIBUTE_DIRECTORY});
  KSV_ASC_closedir(&listing);
}

TEST_F(Directory, tells_what_nobody_may_write) {
  using std::filesystem::perms;
  constexpr perms kWrite = perms::owner_write | perms::group_write | perms::others_write;
  std::filesystem::permissions("a.xml", kWrite, std::filesystem::perm_options::remove);
  KsvDirectoryListing listing;
  ASSERT_EQ(KSV_ASC_opendir("a.xml", &listing), 1);
  EXPECT_EQ(listing.attrib, uint32_t{KSV_ATTRIBUTE_READ_ONLY});
  KSV_ASC_closedir(&listing);
  std::filesystem::permissions("a.xml", kWrite, std::filesystem::perm_options::add);
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

TEST_F(Directory, describes_each_entry_when_it_comes_to_it) {
  writeFile("m1", "1");
  std::filesystem::create_directory("m2");
  writeFile("m3", "333");
  using std::filesystem::perms;
  constexpr perms kWrite = perms::owner_write | perms::group_write | perms::others_write;
  std::filesystem::permissions("m3", kWrite, std::filesystem::perm_options::remove);
  struct Described {
    const char* name;
    uint32_t attrib;
    uint32_t size;
  };
  const Described expected[] = {
      {"m1", 0, 1}, {"m2", KSV_ATTRIBUTE_DIRECTORY, 0}, {"m3", KSV_ATTRIBUTE_READ_ONLY, 3}};
  KsvDirectoryListing listing;
  KsvDirectoryEntry entry;
  ASSERT_EQ(KSV_ASC_opendir("m?", &listing), 1);
  for (const Described& described : expected) {
    ASSERT_EQ(KSV_ASC_readdir(&listing, &entry), 1);
    EXPECT_STREQ(entry.name, described.name);
    EXPECT_STREQ(listing.name, described.name);
    EXPECT_EQ(listing.attrib, described.attrib) << described.name;
    if (described.attrib != KSV_ATTRIBUTE_DIRECTORY) {
      EXPECT_EQ(listing.size, described.size) << described.name;
    }
  }
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 0);
  EXPECT_EQ(KSV_ASC_closedir(&listing), 0);
  std::filesystem::permissions("m3", kWrite, std::filesystem::perm_options::add);
}

TEST_F(Directory, takes_no_step_for_a_null_entry) {
  KsvDirectoryListing listing;
  KsvDirectoryEntry entry;
  ASSERT_EQ(KSV_ASC_opendir("?.xml", &listing), 1);
  EXPECT_EQ(KSV_ASC_readdir(&listing, nullptr), 0);
  EXPECT_EQ(listing.firstEntry, 1u);
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 1);
  EXPECT_STREQ(entry.name, "a.xml");
  EXPECT_EQ(KSV_ASC_readdir(&listing, nullptr), 0);
  EXPECT_EQ(KSV_ASC_readdir(&listing, &entry), 1);
  EXPECT_STREQ(entry.name, "b.xml");
  EXPECT_EQ(KSV_ASC_closedir(&listing), 0);
}

TEST_F(Directory, has_the_handle_of_none_before_and_behind) {
  KsvDirectoryListing listing;
  listing.handle = 5;
  EXPECT_EQ(KSV_ASC_opendir("*.none", &listing), 0);
  EXPECT_EQ(listing.handle, -1);
  ASSERT_EQ(KSV_ASC_opendir("*.xml", &listing), 1);
  EXPECT_NE(listing.handle, -1);
  EXPECT_EQ(KSV_ASC_closedir(&listing), 0);
  EXPECT_EQ(listing.handle, -1);
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
    EXPECT_EQ(KSV_FindFile((word_ + ".xml").c_str()), 0);
    EXPECT_EQ(KSV_FindFile("*.none"), -1);
    list("*");
  }
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Directory, refuses_ill_formed_and_long_patterns_when_finding) {
  EXPECT_EQ(KSV_FindFile("\x82\xA0"), -1);
  EXPECT_EQ(KSV_FindFile("*\xFF"), -1);
  const std::string tooLong = "." + std::string(776, '/') + "a.*";
  ASSERT_EQ(tooLong.size(), 780u);
  EXPECT_EQ(KSV_FindFile(tooLong.c_str()), -1);
  EXPECT_EQ(KSV_FindFile(tooLong.substr(0, 1).append(tooLong, 2).c_str()), 0);
}

TEST_F(Directory, is_read_by_the_library_itself_in_utf8) {
  writeFile("草枕é.xml", "");
  std::filesystem::create_directory(ksv::test::pathOf("坊っちゃん"));
  writeFile("坊っちゃん/í.xml", "");
  EXPECT_EQ(ksv::matchingNames("草*.xml"), (Names{"草枕é.xml"}));
  EXPECT_EQ(ksv::matchingNames("草枕é.xml"), (Names{"草枕é.xml"}));
  EXPECT_EQ(ksv::matchingNames("坊っちゃん/*.xml"), (Names{"í.xml"}));
  EXPECT_EQ(KSV_FindFile("坊っちゃん\\?.xml"), 0);
  EXPECT_EQ(KSV_FindFile("坊っちゃん\\??.xml"), -1);
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
