// Bound to POSIX: directories and files that their permissions close. Root is not
// stopped by them, so a child process gives root's rights up.
#include <grp.h>
#include <sys/stat.h>

#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_path.h"
#include "tests/common/path_operations.h"
#include "tests/common/support.h"
#include "tests/system/fork_posix.h"

using ksv::test::creatingOperations;
using ksv::test::exists;
using ksv::test::expectAllFail;
using ksv::test::lookingOperations;
using ksv::test::PathOperation;
using ksv::test::removingOperations;
using ksv::test::writeFile;

namespace {

constexpr uid_t kNobody = 65534;

bool giveRightsUp() {
  if (geteuid() != 0) return true;
  return setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
}

class Refused : public testing::Test {
 protected:
  Refused() {
    chmod(".", 0755);
    for (const char* name : {"閉", "読"}) {
      std::filesystem::create_directory(name);
      writeFile(std::string(name) + "/空.txt", "");
      writeFile(std::string(name) + "/本.txt", "12345");
    }
    std::filesystem::create_directory("読/内");
    writeFile("秘", "12345");
    chmod("閉", 0);
    chmod("読", 0555);
    chmod("秘", 0);
  }
  ~Refused() override {
    chmod("閉", 0755);
    chmod("読", 0755);
  }

  // Runs what a test expects as somebody whom permissions stop.
  template <class Body>
  void withoutRights(Body body) {
    EXPECT_EQ(ksv::test::runInChild([&] {
                if (!giveRightsUp()) return 2;
                body();
                return HasFailure() ? 1 : 0;
              }),
              0);
  }

  ksv::test::TempDirectory directory_;
};

}  // namespace

TEST_F(Refused, a_closed_directory_shows_nothing_of_what_it_holds) {
  withoutRights([] {
    expectAllFail(lookingOperations(), "閉/本.txt");
    EXPECT_EQ(KSV_FindFile("閉/*"), -1);
    KsvDirectoryListing listing;
    EXPECT_EQ(KSV_ASC_opendir("閉/*", &listing), 0);
    EXPECT_EQ(KSV_IsDirectory("閉"), 1);
  });
}

TEST_F(Refused, a_closed_directory_loses_and_gains_nothing) {
  withoutRights([] {
    expectAllFail(removingOperations(), "閉/空.txt");
    expectAllFail(creatingOperations(), "閉/新.txt");
    EXPECT_EQ(KSV_RmDir("閉"), -1);
  });
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("閉"), {}), 2);
}

TEST_F(Refused, a_directory_that_may_only_be_read_is_read) {
  withoutRights([] {
    std::FILE* stream = KSV_FileOpen("読/本.txt", "rb");
    uint8_t byte = 0;
    EXPECT_EQ(KSV_FileGetByte(stream, &byte), 1);
    EXPECT_EQ(byte, '1');
    EXPECT_EQ(KSV_FileClose(stream), 0);
    EXPECT_EQ(KSV_FindFile("読/*.txt"), 0);
    EXPECT_EQ(KSV_GetFileSizeByPath("読/本.txt"), 5);
  });
}

TEST_F(Refused, a_directory_that_may_only_be_read_is_not_changed) {
  withoutRights([] {
    expectAllFail(creatingOperations(), "読/新.txt");
    EXPECT_EQ(KSV_FileOpen("読/本.txt", "r+b"), nullptr);
    EXPECT_EQ(ksv_logfopen(KSV_LOG_ENABLED, "読/本.txt"), nullptr);
    EXPECT_EQ(KSV_FileRemove("読/本.txt"), -1);
    EXPECT_EQ(KSV_FileRemoveA("読/本.txt"), -1);
    EXPECT_EQ(KSV_ASC_remove("読/本.txt"), -1);
    EXPECT_EQ(KSV_RmDir("読/内"), -1);
    EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("読/本.txt"), 0);
    EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("読/空.txt"), 1) << "it is empty, though it stays";
  });
  EXPECT_EQ(ksv::test::readFile("読/本.txt"), "12345");
  EXPECT_TRUE(exists("読/空.txt"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("読"), {}), 3);
}

TEST_F(Refused, a_file_that_may_not_be_read_can_still_be_told) {
  withoutRights([] {
    for (const char* mode : {"rb", "r+b", "wb", "ab"}) {
      EXPECT_EQ(KSV_FileOpen("秘", mode), nullptr) << mode;
      EXPECT_EQ(KSV_FileOpenA("秘", mode), nullptr) << mode;
    }
    EXPECT_EQ(ksv_logfopen(KSV_LOG_ENABLED, "秘"), nullptr);
    EXPECT_EQ(KSV_IsFile("秘"), 1);
    EXPECT_EQ(KSV_GetFileSizeByPath("秘"), 5);
  });
  EXPECT_EQ(std::filesystem::file_size("秘"), 5u);
}
