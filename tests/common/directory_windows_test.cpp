// Bound to Windows: names are found without regard to their case, paths have
// drives, and the ANSI code page lacks characters that names may have.
#include "common/wildcard.h"
#include "tests/common/directory_listing.h"

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
  EXPECT_EQ(list(drive + "a.*"), (Names{"a.xml"}));
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
  for (const char* pattern : {"<.xml", ">.xml", "a\"xml", "a.xm>", "a<"}) {
    EXPECT_EQ(list(pattern), Names()) << pattern;
  }
}
