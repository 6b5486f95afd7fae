// Bound to POSIX: names are bytes, their case counts, '\\' may be part of one, and
// links need no privilege.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/common/directory_listing.h"

using ksv::test::Directory;
using ksv::test::list;
using ksv::test::Names;
using ksv::test::writeFile;

TEST_F(Directory, takes_one_character_for_a_question_mark) {
  EXPECT_EQ(list("?"), (Names{".", "a", letter_}));
  EXPECT_EQ(list("??.xml"), (Names{word_ + ".xml"}));
  EXPECT_EQ(list("?.xml"), (Names{"a.xml", "b.xml"}));
}

TEST_F(Directory, takes_a_dot_between_stars_for_a_dot) {
  EXPECT_EQ(list("*.*"), (Names{".", "..", ".hidden", "a.xml", "b.xml", word_ + ".xml"}));
  EXPECT_EQ(list("a.*"), (Names{"a.xml"}));
  EXPECT_EQ(list("a*."), Names());
  EXPECT_EQ(KSV_FindFile("s*.*"), -1);
}

TEST_F(Directory, regards_the_case_of_names) {
  writeFile("B.XML", "");
  EXPECT_EQ(list("*.XML"), (Names{"B.XML"}));
  EXPECT_EQ(list("b.*"), (Names{"b.xml"}));
  EXPECT_EQ(list("A.xml"), Names());
}

TEST_F(Directory, prefers_a_directory_whose_name_has_a_backslash) {
  std::filesystem::create_directories("x\\y");
  std::filesystem::create_directories("x/y");
  writeFile("x\\y/one", "");
  writeFile("x/y/two", "");
  EXPECT_EQ(list("x\\y/*e"), (Names{"one"}));
  EXPECT_EQ(list("x/y/t*"), (Names{"two"}));
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

TEST_F(Directory, refuses_no_pattern_when_listing) {
  writeFile("\x82\xA0", "");
  EXPECT_EQ(list("\x82\xA0"), (Names{"\x82\xA0"}));
  const std::string tooLong = "." + std::string(776, '/') + "a.*";
  EXPECT_EQ(list(tooLong), (Names{"a.xml"}));
}

TEST_F(Directory, gives_the_times_of_the_system) {
  struct stat wanted;
  ASSERT_EQ(stat("a.xml", &wanted), 0);
  KsvDirectoryListing listing;
  ASSERT_EQ(KSV_ASC_opendir("a.xml", &listing), 1);
  EXPECT_EQ(listing.timeWrite, wanted.st_mtime);
  EXPECT_EQ(listing.timeAccess, wanted.st_atime);
  EXPECT_EQ(listing.timeCreate, wanted.st_ctime);
  KSV_ASC_closedir(&listing);
}

TEST_F(Directory, tells_the_times_of_each_entry_apart) {
  constexpr int64_t kTimes[][2] = {{1000000001, 1000000002}, {1100000003, 1100000004}};
  const char* const names[] = {"a.xml", "b.xml"};
  for (size_t i = 0; i < 2; ++i) {
    const timespec times[2] = {{kTimes[i][0], 0}, {kTimes[i][1], 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, names[i], times, 0), 0);
  }
  KsvDirectoryListing listing;
  KsvDirectoryEntry entry;
  ASSERT_EQ(KSV_ASC_opendir("?.xml", &listing), 1);
  for (size_t i = 0; i < 2; ++i) {
    ASSERT_EQ(KSV_ASC_readdir(&listing, &entry), 1);
    ASSERT_STREQ(entry.name, names[i]);
    struct stat wanted;
    ASSERT_EQ(stat(names[i], &wanted), 0);
    EXPECT_EQ(listing.timeAccess, kTimes[i][0]);
    EXPECT_EQ(listing.timeWrite, kTimes[i][1]);
    EXPECT_EQ(listing.timeCreate, wanted.st_ctime);
    EXPECT_GT(listing.timeCreate, kTimes[1][1]);
  }
  KSV_ASC_closedir(&listing);
}

TEST_F(Directory, is_made_with_the_permissions_that_the_umask_leaves) {
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{077}}) {
    const mode_t before = umask(mask);
    EXPECT_EQ(KSV_MkDir("made"), 0);
    umask(before);
    struct stat made;
    ASSERT_EQ(stat("made", &made), 0);
    EXPECT_EQ(made.st_mode & 07777, 0777 & ~mask);
    EXPECT_EQ(KSV_RmDir("made"), 0);
  }
}
