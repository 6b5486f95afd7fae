#include <cstddef>

#include "ksv_cut.h"
#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_path.h"
#include "ksv_sjis.h"
#include "ksv_ucs2.h"
#include "tests/common/support.h"

static_assert(sizeof(KsvByteOrderStream) == 16 && offsetof(KsvByteOrderStream, stream) == 0 &&
              offsetof(KsvByteOrderStream, nativeOrder) == 8);
static_assert(sizeof(KsvDirectoryListing) == 312 && offsetof(KsvDirectoryListing, handle) == 0 &&
              offsetof(KsvDirectoryListing, attrib) == 8 &&
              offsetof(KsvDirectoryListing, timeCreate) == 16 &&
              offsetof(KsvDirectoryListing, timeAccess) == 24 &&
              offsetof(KsvDirectoryListing, timeWrite) == 32 &&
              offsetof(KsvDirectoryListing, size) == 40 &&
              offsetof(KsvDirectoryListing, name) == 44 &&
              offsetof(KsvDirectoryListing, firstEntry) == 304);
static_assert(sizeof(KsvDirectoryListing::name) == 260 && sizeof(KsvDirectoryEntry::name) == 260);
static_assert(sizeof(KsvDirectoryEntry) == 272 && offsetof(KsvDirectoryEntry, reserved) == 0 &&
              offsetof(KsvDirectoryEntry, name) == 12);
static_assert(sizeof(KsvStat) == 48 && offsetof(KsvStat, dev) == 0 && offsetof(KsvStat, ino) == 4 &&
              offsetof(KsvStat, mode) == 6 && offsetof(KsvStat, nlink) == 8 &&
              offsetof(KsvStat, uid) == 10 && offsetof(KsvStat, gid) == 12 &&
              offsetof(KsvStat, rdev) == 16 && offsetof(KsvStat, size) == 20 &&
              offsetof(KsvStat, atime) == 24 && offsetof(KsvStat, mtime) == 32 &&
              offsetof(KsvStat, ctime) == 40);

extern "C" {
extern void* (*const ksvMemoryHeaderIsC)(int32_t size);
extern int (*const ksvFileHeaderIsC)(KsvByteOrderStream* s);
extern int (*const ksvPathHeaderIsC)(const char* path, KsvStat* out);
extern int32_t (*const ksvUcs2HeaderIsC)(const uint16_t* s);
extern int (*const ksvSjisHeaderIsC)(char* dest, const uint16_t* src);
extern int (*const ksvLogHeaderIsC)(uint32_t flags, FILE* stream, const char* path);
extern uint32_t (*const ksvCutHeaderIsC)(const void* buffer, int32_t length, int32_t limit,
                                         const char* charsetName);
int KSV_setCharsetPath(const char* ignored);
}

TEST(Headers, name_the_same_functions_in_c_and_in_cpp) {
  EXPECT_NE(ksvMemoryHeaderIsC, nullptr);
  EXPECT_EQ(ksvFileHeaderIsC, KSV_X_FileClose);
  EXPECT_EQ(ksvPathHeaderIsC, KSV_STAT);
  EXPECT_EQ(ksvUcs2HeaderIsC, KSV_ucs2strlen);
  EXPECT_EQ(ksvSjisHeaderIsC, KSV_ucs2sjisstr);
  EXPECT_EQ(ksvLogHeaderIsC, ksv_logfprint_path);
  EXPECT_EQ(ksvCutHeaderIsC, CutStr);
}

TEST(SystemQueries, return_1_and_ignore_what_they_are_given) {
  EXPECT_EQ(KSV_Is_NT(), 1);
  EXPECT_EQ(KSV_Is64bitOS(), 1);
  EXPECT_EQ(KSV_Is64bitFS(), 1);
  EXPECT_EQ(KSV_setCharsetPath("x"), 1);
  EXPECT_EQ(KSV_setCharsetPath(nullptr), 1);
}

TEST(SystemQueries, are_one_entry_point_under_three_names) {
  // Compilers may take it for granted that functions of two names stand at two places.
  const volatile uintptr_t addresses[] = {reinterpret_cast<uintptr_t>(&KSV_Is64bitOS),
                                          reinterpret_cast<uintptr_t>(&KSV_Is64bitFS),
                                          reinterpret_cast<uintptr_t>(&KSV_setCharsetPath)};
  EXPECT_EQ(addresses[1], addresses[0]);
  EXPECT_EQ(addresses[2], addresses[0]);
}
