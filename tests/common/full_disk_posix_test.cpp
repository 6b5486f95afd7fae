// Bound to POSIX: /dev/full, which takes nothing, and a small file system that fills up,
// which Linux lets root mount where nobody else sees it.
#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_memory.h"
#include "ksv_path.h"
#include "tests/common/path_operations.h"
#include "tests/common/print_to.h"
#include "tests/common/support.h"
#include "tests/system/small_disk_posix.h"

using ksv::test::openDescriptors;
using ksv::test::printTo;
using ksv::test::TempDirectory;

namespace {

constexpr char kFull[] = "/dev/full";
constexpr int32_t kMuch = 1 << 20;

class FullDevice : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kFull)) GTEST_SKIP() << "no /dev/full";
    before_ = openDescriptors();
    stream_ = KSV_FileOpen(kFull, "wb");
    ASSERT_NE(stream_, nullptr);
  }
  void TearDown() override { EXPECT_EQ(openDescriptors(), before_); }

  ptrdiff_t before_ = 0;
  std::FILE* stream_ = nullptr;
};

// Runs a test's body beside a file system of 64 KB and ten names, mounted at "満".
template <class Body>
void onSmallDisk(Body body) {
  TempDirectory directory;
  std::filesystem::create_directory("満");
  ksv::test::onSmallDisk("満", "size=64k,nr_inodes=10", body);
}

}  // namespace

TEST_F(FullDevice, takes_bytes_until_they_leave_the_buffer) {
  EXPECT_EQ(KSV_FilePutByte(stream_, 1), 1);
  EXPECT_EQ(KSV_FilePutDWord(stream_, 1), 1);
  EXPECT_EQ(KSV_FileClose(stream_), EOF);
}

TEST_F(FullDevice, counts_what_it_did_not_take) {
  const std::string much(kMuch, 'x');
  EXPECT_LT(KSV_FileWrite(much.data(), 1, kMuch, stream_), kMuch);
  EXPECT_LT(KSV_FileWrite(much.data(), kMuch, 1, stream_), 1);
  KSV_FileClose(stream_);
}

TEST_F(FullDevice, fails_at_once_without_a_buffer) {
  setvbuf(stream_, nullptr, _IONBF, 0);
  EXPECT_EQ(KSV_FilePutByte(stream_, 1), 0);
  EXPECT_EQ(KSV_FilePutWord(stream_, 1), 0);
  EXPECT_EQ(KSV_FilePutDWord(stream_, 1), 0);
  EXPECT_EQ(KSV_FileWrite("abc", 1, 3, stream_), 0);
  EXPECT_LT(printTo(stream_, "%d", 5), 0);
  KSV_FileClose(stream_);
}

TEST_F(FullDevice, fails_to_move_when_bytes_are_left_in_the_buffer) {
  EXPECT_EQ(KSV_FilePutByte(stream_, 1), 1);
  EXPECT_NE(KSV_FileSeek(stream_, 0, SEEK_SET), 0);
  KSV_FileClose(stream_);
}

TEST_F(FullDevice, fails_byte_order_streams_and_their_record_goes) {
  auto* s = static_cast<KsvByteOrderStream*>(KSV_malloc(sizeof(KsvByteOrderStream)));
  *s = {stream_, 0};
  EXPECT_EQ(KSV_X_FilePutWord(s, 1), 1);
  EXPECT_EQ(KSV_X_FileClose(s), EOF);
}

TEST_F(FullDevice, costs_a_log_its_lines_and_the_caller_nothing) {
  KSV_FileClose(stream_);
  std::FILE* log = ksv_logfopen(KSV_LOG_ENABLED, kFull);
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(ksv_logfprintf(KSV_LOG_ENABLED, log, "line %d\n", i), 0);
    ASSERT_EQ(ksv_logfprint_path(KSV_LOG_ENABLED, log, "日本.txt"), 0);
  }
  EXPECT_EQ(ksv_logfclose(KSV_LOG_ENABLED, log), EOF);
}

TEST(FullDisk, keeps_what_it_took_and_counts_it) {
  onSmallDisk([] {
    const std::string much(kMuch, 'x');
    std::FILE* stream = KSV_FileOpen("満/大.txt", "wb");
    setvbuf(stream, nullptr, _IONBF, 0);
    const int32_t taken = KSV_FileWrite(much.data(), 1, kMuch, stream);
    EXPECT_GT(taken, 0);
    EXPECT_LT(taken, kMuch);
    EXPECT_EQ(KSV_FilePutByte(stream, 1), 0);
    EXPECT_EQ(KSV_FileTellSize(stream), taken);
    EXPECT_EQ(KSV_FileClose(stream), 0);
    EXPECT_EQ(KSV_GetFileSizeByPath("満/大.txt"), taken);
  });
}

TEST(FullDisk, lets_names_in_without_room_for_their_bytes) {
  onSmallDisk([] {
    std::FILE* filler = KSV_FileOpen("満/大.txt", "wb");
    const std::string much(kMuch, 'x');
    KSV_FileWrite(much.data(), 1, kMuch, filler);
    KSV_FileClose(filler);
    std::FILE* log = ksv_logfopen(KSV_LOG_ENABLED, "満/記.log");
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(ksv_logfprintf(KSV_LOG_ENABLED, log, "text", 0), 0);
    EXPECT_EQ(ksv_logfclose(KSV_LOG_ENABLED, log), EOF);
    EXPECT_EQ(KSV_FileRemoveIfSizeIsZero("満/記.log"), 1);
    EXPECT_EQ(KSV_IsExist("満/記.log"), 0);
  });
}

TEST(FullDisk, takes_no_new_names_when_it_has_no_more) {
  onSmallDisk([] {
    int made = 0;
    while (made < 20 && KSV_MkDir(("満/" + std::to_string(made)).c_str()) == 0) ++made;
    EXPECT_GT(made, 0);
    ASSERT_LT(made, 20);
    ksv::test::expectAllFail(ksv::test::creatingOperations(), "満/新.txt");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("満"), {}), made);
    EXPECT_EQ(KSV_FindFile("満/*"), 0);
    EXPECT_EQ(KSV_RmDir("満/0"), 0);
    EXPECT_EQ(KSV_MkDir("満/新"), 0);
  });
}
