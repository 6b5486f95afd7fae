// Every function that may need memory fails cleanly at each allocation it makes.
#include "common/platform.h"
#include "ksv_file.h"
#include "ksv_memory.h"
#include "ksv_path.h"
#include "tests/common/named_mutex_fixture.h"
#include "tests/faults/memory_faults.h"

using ksv::test::FailingMemory;
using ksv::test::Refused;

namespace {

// Calls function with 0, 1, 2 ... allocations until it succeeds, and returns how
// often it failed.
template <class Function>
int failuresBeforeSuccess(Function function) {
  for (int count = 0; count < 1000; ++count) {
    FailingMemory memory(static_cast<uint64_t>(count), Refused::kAllFromThere);
    const bool done = function();
    memory.stop();
    if (done) return count;
  }
  return -1;
}

}  // namespace

class NoMemory : public testing::Test {
 protected:
  NoMemory() {
    std::filesystem::create_directory(kLong);
    ksv::test::writeFile(kFile, "");
  }
  // Long enough to need memory as a std::string.
  static constexpr char kLong[] = "a_directory_with_a_long_name";
  static constexpr char kFile[] = "a_directory_with_a_long_name/a_file_with_a_long_name";
  static constexpr char kPattern[] = "a_directory_with_a_long_name/*_with_a_long_name";
  ksv::test::TempDirectory directory_;
};

TEST_F(NoMemory, fails_listing_and_finding) {
  EXPECT_GT(failuresBeforeSuccess([] {
              KsvDirectoryListing listing;
              if (KSV_ASC_opendir(kPattern, &listing) == 0) return false;
              KSV_ASC_closedir(&listing);
              return true;
            }),
            0);
  EXPECT_GT(failuresBeforeSuccess([] { return KSV_FindFile(kPattern) == 0; }), 0);
}

TEST_F(NoMemory, fails_ansi_paths) {
  EXPECT_GT(failuresBeforeSuccess([] { return KSV_IsFileA(kFile) == 1; }), 0);
  EXPECT_GT(failuresBeforeSuccess([] { return KSV_IsDirectoryA(kLong) == 1; }), 0);
  EXPECT_GT(failuresBeforeSuccess([] {
              FILE* stream = KSV_FileOpenA(kFile, "rb");
              return stream != nullptr && KSV_FileClose(stream) == 0;
            }),
            0);
  char path[780];
  EXPECT_GT(failuresBeforeSuccess(
                [&] { return KSV_FilePathTransAnsiToUTF8(path, kFile, sizeof path) == 0; }),
            0);
  EXPECT_GT(failuresBeforeSuccess(
                [&] { return KSV_FilePathTransUTF8ToAnsi(path, kFile, sizeof path) == 0; }),
            0);
  EXPECT_GT(failuresBeforeSuccess([] {
              const int result = KSV_FileRemoveA(kFile);
              EXPECT_TRUE(result == 0 || result == -1) << result;
              return result == 0;
            }),
            0);
}

TEST_F(NoMemory, empties_joined_and_split_paths) {
  char path[780], directory[780], base[780];
  EXPECT_GT(failuresBeforeSuccess([&] {
              return KSV_makepath(path, nullptr, kLong, "file_with_a_long_name", nullptr) == 0;
            }),
            0);
  EXPECT_GT(failuresBeforeSuccess([&] {
              KSV_makepathA(path, nullptr, kLong, "file_with_a_long_name", nullptr);
              return path[0] != '\0';
            }),
            0);
  EXPECT_GT(failuresBeforeSuccess([&] {
              KSV_splitpathA(kFile, nullptr, directory, base, nullptr);
              EXPECT_EQ(directory[0] == '\0', base[0] == '\0');
              return base[0] != '\0';
            }),
            0);
}

TEST_F(NoMemory, creates_no_temporary_file) {
  char path[780];
  EXPECT_GT(failuresBeforeSuccess([&] { return KSV_ASC_tmpnam1(kFile, path) == path; }), 0);
  const auto files = std::distance(std::filesystem::directory_iterator(kLong), {});
  EXPECT_EQ(files, 2) << "the first file and the one that was created";
}

TEST_F(NoMemory, leaves_tracking_off_or_the_block_untracked) {
  KSV_start_mem_dbg("title");
  void* block = nullptr;
  FailingMemory none(0, Refused::kAllFromThere);
  block = KSV_malloc_dbg(3, "a label that is longer than a short string", 1);
  none.stop();
  ASSERT_NE(block, nullptr);
  KSV_end_mem_dbg();
  EXPECT_EQ(ksv::test::readText("memdbg_log.txt"), "title\n");
  {
    const FailingMemory still(0, Refused::kAllFromThere);
    KSV_start_mem_dbg("second");
  }
  KSV_free_dbg(block);
  EXPECT_EQ(ksv::test::readText("memdbg_log.txt"), "title\n");
}

TEST_F(NoMemory, fails_settings_locks_and_replacement_files) {
  ksv::test::ScopedVariable value("Charsetpath", "/a/directory/with/a/long/name");
  char buffer[260];
  EXPECT_GT(failuresBeforeSuccess(
                [&] { return ksv::platform::readSetting("Charsetpath", buffer, sizeof buffer); }),
            0);
  EXPECT_GT(failuresBeforeSuccess([] {
              auto file = ksv::platform::ReplacementFile::create(
                  "a_directory_with_a_long_name/replacement_file");
              return file != nullptr;
            }),
            0);
  EXPECT_GT(
      failuresBeforeSuccess([] { return ksv::platform::NamedMutex::open("NoMemory") != nullptr; }),
      0);
  ksv::test::forgetLock("NoMemory");
}
