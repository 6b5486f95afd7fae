// Files converted where they are. Bound to Windows: times of creation, hard links, and what
// stands in for a rename.

#include <windows.h>

#include "command.h"
#include "tests/common/support.h"
#include "tests/system/wide_windows.h"

namespace ksv_cli_tests {
namespace {

const std::string kUtf8 = "あ";
const std::string kShiftJis = bytes({0x82, 0xA0});

class InPlaceOnWindows : public CommandTest {
 protected:
  std::wstring widePath(const std::string& name) const { return ksv::test::wide(path(name)); }

  WIN32_FILE_ATTRIBUTE_DATA facts(const std::string& name) const {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    EXPECT_TRUE(::GetFileAttributesExW(widePath(name).c_str(), GetFileExInfoStandard, &data));
    return data;
  }

  void setWriteTime(const std::string& name, const FILETIME& time) const {
    const HANDLE file =
        ::CreateFileW(widePath(name).c_str(), FILE_WRITE_ATTRIBUTES,
                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(::SetFileTime(file, nullptr, nullptr, &time));
    ::CloseHandle(file);
  }

  Outcome toShiftJis(const std::vector<std::string>& arguments) const {
    std::vector<std::string> all = {"convert", "-f", "utf8", "-t", "sjis"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return ksv(all);
  }
};

// 2001-09-09, in units of 100 ns since 1601.
constexpr FILETIME kOld = {0x6B3C1234, 0x01C13908};

TEST_F(InPlaceOnWindows, keeps_the_time_of_writing_unless_told_otherwise) {
  write("a", kUtf8);
  setWriteTime("a", kOld);
  const Outcome outcome = toShiftJis({"--in-place", "a"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(read("a"), kShiftJis);
  const FILETIME kept = facts("a").ftLastWriteTime;
  EXPECT_EQ(::CompareFileTime(&kept, &kOld), 0);
  write("b", kUtf8);
  setWriteTime("b", kOld);
  EXPECT_EQ(toShiftJis({"--in-place", "--touch", "b"}).status, 0);
  const FILETIME touched = facts("b").ftLastWriteTime;
  EXPECT_GT(::CompareFileTime(&touched, &kOld), 0);
}

TEST_F(InPlaceOnWindows, leaves_a_file_that_stays_the_same_alone) {
  write("a", "plain\n");
  setWriteTime("a", kOld);
  EXPECT_EQ(toShiftJis({"--in-place=.bak", "a"}).status, 0);
  const FILETIME kept = facts("a").ftLastWriteTime;
  EXPECT_EQ(::CompareFileTime(&kept, &kOld), 0);
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

TEST_F(InPlaceOnWindows, leaves_a_file_with_several_names_as_it_is) {
  write("a", kUtf8);
  ASSERT_TRUE(::CreateHardLinkW(widePath("b").c_str(), widePath("a").c_str(), nullptr));
  const Outcome outcome = toShiftJis({"--in-place=.bak", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: a: cannot write a: it has 2 names (hard links), and the others would keep the "
            "older text\n");
  EXPECT_EQ(read("b"), kUtf8);
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "b"}));
}

}  // namespace
}  // namespace ksv_cli_tests
