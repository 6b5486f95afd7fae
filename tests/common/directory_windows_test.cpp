// Bound to Windows: names are found without regard to their case, paths have
// drives, and the ANSI code page lacks characters that names may have.
#include <algorithm>

#include "common/directory.h"
#include "common/wildcard.h"
#include "tests/common/directory_listing.h"
#include "tests/system/wide_windows.h"

using ksv::matchesWildcard;
using ksv::test::Directory;
using ksv::test::list;
using ksv::test::Names;
using ksv::test::writeFile;

TEST_F(Directory, disregards_the_case_of_names_and_gives_them_as_they_stand) {
  EXPECT_EQ(list("*.XML"), (Names{"a.xml", "b.xml", word_ + ".xml"}));
  EXPECT_EQ(list("?.Xml"), (Names{"a.xml", "b.xml"}));
  EXPECT_EQ(list("A.XML"), (Names{"a.xml"}));
  EXPECT_EQ(list("SUB\\INNER.txt"), (Names{"inner.txt"}));
  EXPECT_EQ(KSV_FindFile("B.XML"), 0);
}

namespace {

// The names that the system finds, in ascending byte order.
Names foundBySystem(const std::string& pattern) {
  Names names;
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(ksv::test::wide(pattern).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    names.push_back(ksv::test::narrow(found.cFileName));
  } while (FindNextFileW(search, &found) != 0);
  FindClose(search);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

TEST_F(Directory, takes_the_wild_cards_of_the_system) {
  EXPECT_EQ(list("*.*"), list("*"));
  EXPECT_EQ(list("a.*"), (Names{"a", "a.xml"}));
  EXPECT_EQ(list("SUB*.*"), (Names{"sub"}));
  EXPECT_EQ(KSV_FindFile("sub.*"), 0);
  EXPECT_EQ(KSV_FindFile("su?.*"), 0);
  EXPECT_EQ(KSV_FindFile("c.*"), -1);
}

TEST_F(Directory, lists_what_the_system_finds_for_every_short_pattern) {
  const std::string alphabet = "a.*?x";
  std::vector<std::string> patterns = {""};
  for (size_t i = 0; patterns[i].size() < 3; ++i)
    for (const char c : alphabet) patterns.push_back(patterns[i] + c);
  for (const std::string& pattern : patterns) {
    if (pattern.find_first_of("*?") == pattern.npos) continue;
    const Names found = foundBySystem(pattern);
    ASSERT_EQ(list(pattern), found) << pattern;
    ASSERT_EQ(KSV_FindFile(pattern.c_str()), found.empty() ? -1 : 0) << pattern;
  }
}

TEST_F(Directory, is_read_by_the_library_itself_with_wild_cards_of_its_own) {
  EXPECT_EQ(ksv::matchingNames("*.*"),
            (Names{".", "..", ".hidden", "a.xml", "b.xml", word_ + ".xml"}));
  EXPECT_EQ(ksv::matchingNames("A.*"), (Names{"a.xml"}));
}

TEST(Wildcard, disregards_the_case_of_all_letters_of_the_first_plane) {
  EXPECT_TRUE(matchesWildcard("ÄÉ*.XML", "äé-1.xml"));
  EXPECT_TRUE(matchesWildcard("Ωﾎ*", "ωﾎ"));
  EXPECT_TRUE(matchesWildcard("Ａ?", "ａ１"));
  EXPECT_FALSE(matchesWildcard("ss", "ß"));
  EXPECT_FALSE(matchesWildcard("か", "カ"));
  EXPECT_FALSE(matchesWildcard("i", "ı"));
}

TEST_F(Directory, is_found_on_its_drive) {
  ASSERT_EQ(directory_.path().substr(1, 2), ":/");
  const std::string drive = directory_.path().substr(0, 2);
  EXPECT_EQ(list(drive + "a.x*"), (Names{"a.xml"}));
  EXPECT_EQ(list(drive + "sub\\*"), (Names{".", "..", "inner.txt"}));
  EXPECT_EQ(KSV_FindFile((drive + "\\*").c_str()), 0);
  EXPECT_EQ(list(drive), Names());
  EXPECT_EQ(list(drive + "\\"), Names());
}

TEST_F(Directory, leaves_out_what_has_no_ansi_name) {
  // No code page has Hangul, Thai and Hebrew.
  writeFile("한ไא.xml", "");
  EXPECT_EQ(list("*.xml"), (Names{"a.xml", "b.xml", word_ + ".xml"}));
  EXPECT_EQ(KSV_FindFile("한ไא.xml"), 0);
}

TEST_F(Directory, knows_no_wild_cards_but_two) {
  for (const char* pattern : {"<.xml", ">.xml", "a\"xml", "a.xm>", "a<", "<*", "*>", "a\"*"}) {
    EXPECT_EQ(list(pattern), Names()) << pattern;
  }
}
