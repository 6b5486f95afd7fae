// Bound to POSIX: paths of 779 and 780 units, all of them names that are there. Windows
// itself opens no such path; what it refuses stands in file_test.cpp.
#include "common/path_encoding.h"
#include "ksv_file.h"
#include "ksv_log.h"
#include "ksv_path.h"
#include "tests/common/path_operations.h"
#include "tests/common/support.h"

using ksv::test::creatingOperations;
using ksv::test::exists;
using ksv::test::lookingOperations;
using ksv::test::PathOperation;
using ksv::test::removingOperations;

namespace {

std::string repeated(const char* text, size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

// Fifteen directories of Japanese names, one inside the other, 51 units each with the
// separator; a character of each is a pair of surrogates.
class LongPath : public testing::Test {
 protected:
  LongPath() {
    const std::string component = repeated("あ", 48) + "𠮷/";
    for (int depth = 0; depth < 15; ++depth) {
      directory_ += component;
      EXPECT_EQ(KSV_MkDir(directory_.c_str()), 0) << depth;
    }
  }

  // A name in the last directory that makes a path of so many units.
  std::string pathOfUnits(size_t units) const {
    const std::string path = directory_ + repeated("い", units - 15 * 51);
    EXPECT_EQ(ksv::utf16Length(path), units);
    return path;
  }

  ksv::test::TempDirectory current_;
  std::string directory_;
};

}  // namespace

TEST_F(LongPath, of_779_units_is_a_file_as_any_other) {
  const std::string path = pathOfUnits(779);
  const char* const file = path.c_str();
  std::FILE* stream = KSV_FileOpen(file, "wb");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(KSV_FilePutWord(stream, 0x4142), 1);
  EXPECT_EQ(KSV_FileClose(stream), 0);
  EXPECT_EQ(KSV_GetFileSizeByPath(file), 2);
  KsvStat status;
  EXPECT_EQ(KSV_STAT(file, &status), 0);
  EXPECT_EQ(status.size, 2);
  EXPECT_EQ(KSV_IsFile(file), 1);
  EXPECT_EQ(KSV_IsDirectory(file), 0);
  EXPECT_EQ(KSV_IsExist(file), 1);
  EXPECT_EQ(KSV_FindFile(file), 0);
  EXPECT_EQ(KSV_FileRemoveIfSizeIsZero(file), 0);
  EXPECT_EQ(KSV_FileRemove(file), 0);
  EXPECT_FALSE(exists(path));
}

TEST_F(LongPath, of_779_units_is_a_directory_as_any_other) {
  const std::string path = pathOfUnits(779);
  EXPECT_EQ(KSV_MkDir(path.c_str()), 0);
  EXPECT_EQ(KSV_IsDirectory(path.c_str()), 1);
  EXPECT_EQ(KSV_IsFile(path.c_str()), 0);
  EXPECT_EQ(KSV_RmDir(path.c_str()), 0);
  EXPECT_FALSE(exists(path));
}

TEST_F(LongPath, of_779_units_is_a_log_and_may_have_a_wild_card) {
  const std::string path = pathOfUnits(779);
  std::FILE* log = ksv_logfopen(KSV_LOG_ENABLED, path.c_str());
  ASSERT_NE(log, nullptr);
  EXPECT_EQ(ksv_logfprintf(KSV_LOG_ENABLED, log, "%d", 1), 0);
  EXPECT_EQ(ksv_logfclose(KSV_LOG_ENABLED, log), 0);
  EXPECT_EQ(ksv::test::readFile(path), "1");
  const std::string pattern = directory_ + std::string(13, '?') + "*";
  EXPECT_EQ(ksv::utf16Length(pattern), 779u);
  EXPECT_EQ(KSV_FindFile(pattern.c_str()), 0);
  EXPECT_EQ(KSV_FindFile((pattern + "*").c_str()), -1);
}

TEST_F(LongPath, of_780_units_is_refused_by_the_operations_on_utf8_alone) {
  const std::string path = pathOfUnits(780);
  for (const auto& operations : {lookingOperations(), removingOperations()}) {
    for (const PathOperation& operation : operations) {
      ksv::test::writeFile(path, "");
      const int64_t result = operation.run(path.c_str());
      const std::string_view name = operation.name;
      EXPECT_EQ(result == operation.failure, operation.isUtf8 || name == "KSV_IsDirectoryA")
          << name;
      EXPECT_EQ(exists(path), name != "KSV_FileRemoveA") << name;
    }
  }
}

TEST_F(LongPath, of_780_units_is_not_made_by_the_operations_on_utf8) {
  const std::string path = pathOfUnits(780);
  for (const PathOperation& operation : creatingOperations()) {
    EXPECT_EQ(operation.run(path.c_str()) == operation.failure, operation.isUtf8) << operation.name;
    EXPECT_EQ(exists(path), !operation.isUtf8) << operation.name;
    std::filesystem::remove(path);
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory_)) << "no temporary file either";
}

TEST_F(LongPath, has_parts_and_logs_of_fewer_bytes_than_units) {
  const std::string path = pathOfUnits(779);
  char part[780] = "before";
  EXPECT_EQ(KSV_splitpath(path.c_str(), nullptr, part, nullptr, nullptr), 3000);
  EXPECT_STREQ(part, "");
  EXPECT_EQ(KSV_splitpath(path.c_str(), nullptr, nullptr, part, nullptr), 0);
  EXPECT_EQ(part, repeated("い", 14));
  EXPECT_EQ(GetLogFileName(path.c_str(), "x", part), -1);
  EXPECT_STREQ(part, "");
}

TEST(LogPathInBytes, has_779_of_them_at_most) {
  ksv::test::TempDirectory directory;
  for (const size_t letters : {2, 3}) {
    const std::string path = repeated("あ", 259) + std::string(letters, 'a');
    std::FILE* log = ksv_logfopen(KSV_LOG_ENABLED, "log");
    EXPECT_EQ(ksv_logfprint_path(KSV_LOG_ENABLED, log, path.c_str()), 0);
    EXPECT_EQ(ksv_logfclose(KSV_LOG_ENABLED, log), 0);
    EXPECT_EQ(ksv::test::readFile("log"), letters == 2 ? path : "");
  }
}
