#include <cstring>
#include <vector>

#include "ksv_file.h"
#include "ksv_log.h"
#include "tests/common/support.h"

using ksv::test::exists;
using ksv::test::readFile;
using ksv::test::TempDirectory;
using ksv::test::writeFile;

namespace {

constexpr uint32_t kOn = 0x10000;

std::string loggedPath(const char* path) {
  std::FILE* log = ksv_logfopen(kOn, "log");
  EXPECT_EQ(ksv_logfprint_path(kOn, log, path), 0);
  EXPECT_EQ(ksv_logfclose(kOn, log), 0);
  return readFile("log");
}

// The name that is made, or "none".
std::string logFileName(const char* inputPath, const char* suffix) {
  std::vector<char> dest(780, 'x');
  const int result = GetLogFileName(inputPath, suffix, dest.data());
  if (result == 0) return dest.data();
  EXPECT_EQ(result, -1);
  EXPECT_STREQ(dest.data(), "");
  return "none";
}

}  // namespace

TEST(Log, does_nothing_unless_it_is_switched_on) {
  TempDirectory directory;
  writeFile("log", "before");
  for (const uint32_t flags : {0u, 1u, 0xFFFEFFFFu, 0x20000u, 0x8000u}) {
    EXPECT_EQ(ksv_logfopen(flags, "log"), nullptr);
    EXPECT_EQ(ksv_logfopen(flags, "new"), nullptr);
    std::FILE* stream = KSV_FileOpen("other", "wb");
    EXPECT_EQ(ksv_logfprintf(flags, stream, "text", 0), 0);
    EXPECT_EQ(ksv_logfprint_path(flags, stream, "path"), 0);
    EXPECT_EQ(ksv_logfclose(flags, stream), 0);
    EXPECT_EQ(KSV_FileTell(stream), 0) << "it is still open and empty";
    KSV_FileClose(stream);
  }
  EXPECT_EQ(readFile("log"), "before");
  EXPECT_FALSE(exists("new"));
  EXPECT_EQ(readFile("other"), "");
}

TEST(Log, is_switched_on_by_its_flag_among_others) {
  TempDirectory directory;
  for (const uint32_t flags : {kOn, 0xFFFFFFFFu, kOn | 1u}) {
    std::FILE* log = ksv_logfopen(flags, "log");
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(ksv_logfprintf(flags, log, "n=%d\n", 5), 0);
    EXPECT_EQ(ksv_logfclose(flags, log), 0);
    EXPECT_EQ(readFile("log"), "n=5\n");
  }
}

TEST(Log, empties_a_file_that_is_there_and_can_be_read_back) {
  TempDirectory directory;
  writeFile("日本.log", "a long line that was there before");
  std::FILE* log = ksv_logfopen(kOn, "日本.log");
  ksv_logfprintf(kOn, log, "x%c", 'y');
  EXPECT_EQ(KSV_FileSeek(log, 0, SEEK_SET), 0);
  char text[8] = "";
  EXPECT_EQ(KSV_FileRead(text, 1, 7, log), 2);
  EXPECT_STREQ(text, "xy");
  ksv_logfclose(kOn, log);
  EXPECT_EQ(readFile("日本.log"), "xy");
}

TEST(Log, gives_null_for_a_path_that_cannot_be_opened) {
  TempDirectory directory;
  std::filesystem::create_directory("d");
  const auto before = ksv::test::openDescriptors();
  for (const char* path : {"", "missing/log", "\xFF", "d", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(ksv_logfopen(kOn, path), nullptr);
  }
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST(Log, takes_null_for_nothing) {
  TempDirectory directory;
  EXPECT_EQ(ksv_logfclose(kOn, nullptr), 0);
  EXPECT_EQ(ksv_logfprintf(kOn, nullptr, "text", 1), 0);
  EXPECT_EQ(ksv_logfprint_path(kOn, nullptr, "path"), 0);
  std::FILE* log = ksv_logfopen(kOn, "log");
  EXPECT_EQ(ksv_logfprintf(kOn, log, nullptr, 1), 0);
  EXPECT_EQ(ksv_logfprint_path(kOn, log, nullptr), 0);
  EXPECT_EQ(ksv_logfprint_path(kOn, log, ""), 0);
  ksv_logfclose(kOn, log);
  EXPECT_EQ(readFile("log"), "");
}

TEST(Log, returns_0_when_nothing_can_be_written) {
  TempDirectory directory;
  writeFile("f", "before");
  std::FILE* stream = KSV_FileOpen("f", "rb");
  EXPECT_EQ(ksv_logfprintf(kOn, stream, "n=%d", 5), 0);
  EXPECT_EQ(ksv_logfprint_path(kOn, stream, "path"), 0);
  ksv_logfclose(kOn, stream);  // C runtimes differ about a write that failed before
  EXPECT_EQ(readFile("f"), "before");
}

TEST(LogPath, is_written_in_the_code_page_without_a_line_end) {
  TempDirectory directory;
  const std::string path = ksv::test::ansiWord() + "/" + ksv::test::ansiLetter() + ".txt";
  EXPECT_EQ(loggedPath(path.c_str()), *ksv::test::toAnsi(path));
}

TEST(LogPath, is_a_format_with_the_argument_0) {
  TempDirectory directory;
  EXPECT_EQ(loggedPath("100%d.txt"), "1000.txt");
  EXPECT_EQ(loggedPath("100%%.txt"), "100%.txt");
  EXPECT_EQ(loggedPath("a%20x"), "a" + std::string(19, ' ') + "0");
  EXPECT_EQ(loggedPath("%c"), std::string(1, '\0'));
}

TEST(LogPath, can_do_no_harm) {
  TempDirectory directory;
  for (const char* path :
       {"%s%s%s%s%s", "%n%n%n", "%999999999d", "a/%1$n", "%*s", "%", "50%", "%ls", "%hhn.txt"}) {
    EXPECT_EQ(loggedPath(path), path);
  }
}

TEST(LogPath, of_779_units_is_written_and_one_of_780_is_not) {
  TempDirectory directory;
  EXPECT_EQ(loggedPath(std::string(779, 'p').c_str()), std::string(779, 'p'));
  EXPECT_EQ(loggedPath(std::string(780, 'p').c_str()), "");
  EXPECT_EQ(loggedPath("a\xFF"), "") << "not well-formed";
}

TEST(LogFileName, has_the_suffix_and_its_extension_in_place_of_the_old) {
  EXPECT_EQ(logFileName("/data/report.doc", "_err"), "/data/report_err.log");
  EXPECT_EQ(logFileName("C:\\data\\report.doc", "_err"), "C:\\data\\report_err.log");
  EXPECT_EQ(logFileName("日本/表.txt", "_誤り"), "日本/表_誤り.log");
  EXPECT_EQ(logFileName("report", ""), "report.log");
  EXPECT_EQ(logFileName("a.tar.gz", "_x"), "a.tar_x.log");
  EXPECT_EQ(logFileName("a.b/c", "-1"), "a.b/c-1.log");
}

TEST(LogFileName, takes_null_and_empty_for_nothing) {
  EXPECT_EQ(logFileName("a.txt", nullptr), "a.log");
  EXPECT_EQ(logFileName(nullptr, "x"), "x.log");
  EXPECT_EQ(logFileName("", ""), ".log");
  EXPECT_EQ(logFileName("d/", "x"), "d/x.log");
  EXPECT_EQ(GetLogFileName("a.txt", "x", nullptr), -1);
}

TEST(LogFileName, takes_a_suffix_as_it_stands) {
  EXPECT_EQ(logFileName("a.txt", ".b"), "a.b.log");
  EXPECT_EQ(logFileName("a.txt", "/b"), "a/b.log");
  EXPECT_EQ(logFileName("a.txt", "%s%n"), "a%s%n.log");
}

TEST(LogFileName, needs_well_formed_text) {
  EXPECT_EQ(logFileName("\x82\xA0.txt", "x"), "none");
  EXPECT_EQ(logFileName("a.txt", "\xE3\x81"), "none");
  EXPECT_EQ(logFileName("a.\xFF", "x"), "none");
}

TEST(LogFileName, leaves_base_name_and_suffix_767_bytes) {
  const std::string base(700, 'b');
  EXPECT_EQ(logFileName((base + ".doc").c_str(), std::string(67, 's').c_str()),
            base + std::string(67, 's') + ".log");
  EXPECT_EQ(logFileName((base + ".doc").c_str(), std::string(68, 's').c_str()), "none");
  EXPECT_EQ(logFileName(std::string(767, 'b').c_str(), ""), std::string(767, 'b') + ".log");
  EXPECT_EQ(logFileName(std::string(768, 'b').c_str(), ""), "none");
  EXPECT_EQ(logFileName("b", std::string(100000, 's').c_str()), "none");
  // 255 characters and two letters are 767 bytes.
  std::string japanese;
  for (int i = 0; i < 255; ++i) japanese += "あ";
  EXPECT_EQ(logFileName(japanese.c_str(), "xx"), japanese + "xx.log");
  EXPECT_EQ(logFileName(japanese.c_str(), "xxx"), "none");
}

TEST(LogFileName, has_779_bytes_at_most) {
  const std::string directory(600, 'd');
  const std::string fits = directory + "/" + std::string(174, 'b');
  EXPECT_EQ(logFileName(fits.c_str(), ""), fits + ".log");
  EXPECT_EQ(logFileName(fits.c_str(), "s"), "none");
  EXPECT_EQ(logFileName((std::string(767, 'd') + "/b").c_str(), ""), "none") << "its directory";
}

TEST(LogFileName, does_not_mind_the_length_of_the_old_extension) {
  EXPECT_EQ(logFileName(("a." + std::string(770, 'e')).c_str(), "x"), "ax.log");
  EXPECT_EQ(logFileName(("a." + std::string(778, 'e')).c_str(), "x"), "none") << "780 units";
}

TEST(LogFileName, may_be_written_over_the_path_it_is_made_from) {
  char path[780] = "dir/input.txt";
  EXPECT_EQ(GetLogFileName(path, "_x", path), 0);
  EXPECT_STREQ(path, "dir/input_x.log");
}

TEST(LogFileName, may_be_written_over_its_suffix_and_over_both) {
  char text[780] = "_x";
  EXPECT_EQ(GetLogFileName("dir/input.txt", text, text), 0);
  EXPECT_STREQ(text, "dir/input_x.log");
  char both[780] = "a";
  EXPECT_EQ(GetLogFileName(both, both, both), 0);
  EXPECT_STREQ(both, "aa.log");
  char behind[780] = "dir/input.txt\0_x";
  EXPECT_EQ(GetLogFileName(behind, behind + 14, behind), 0);
  EXPECT_STREQ(behind, "dir/input_x.log");
}

// Slow: from the end, character by character.
TEST(LogFileName, agrees_with_a_walk_from_the_end_for_all_short_paths) {
  std::vector<std::string> paths{""};
  for (size_t begin = 0, length = 0; length < 5; ++length) {
    const size_t end = paths.size();
    for (; begin < end; ++begin) {
      for (const char* piece : {"a", "あ", ".", "/", "\\"}) paths.push_back(paths[begin] + piece);
    }
  }
  for (const std::string& path : paths) {
    std::string stem = path;
    bool dotSeen = false;
    for (size_t at = path.size(); at > 0 && path[at - 1] != '/' && path[at - 1] != '\\'; --at) {
      if (!dotSeen && path[at - 1] == '.') stem.resize(at - 1);
      dotSeen = dotSeen || path[at - 1] == '.';
    }
    ASSERT_EQ(logFileName(path.c_str(), "_s"), stem + "_s.log") << path;
  }
}

TEST(Resource, is_a_charset_name_by_its_index) {
  const std::vector<std::string> wanted = {"org", "ISO-2022-JP", "ISO-10646-UCS-2", "WINDOWS31J",
                                           "EUC-JP"};
  for (size_t i = 0; i < wanted.size(); ++i) {
    char text[33] = "before";
    EXPECT_EQ(KSV_GetResouceString(static_cast<int32_t>(i), text, sizeof text), 1);
    EXPECT_EQ(text, wanted[i]);
  }
}

TEST(Resource, fills_the_rest_of_the_capacity_with_zeroes) {
  char text[20];
  std::memset(text, 'x', sizeof text);
  EXPECT_EQ(KSV_GetResouceString(3, text, 16), 1);
  EXPECT_EQ(std::string(text, 20), std::string("WINDOWS31J\0\0\0\0\0\0xxxx", 20));
}

TEST(Resource, has_no_terminator_when_it_fills_the_capacity) {
  char text[12] = "xxxxxxxxxxx";
  EXPECT_EQ(KSV_GetResouceString(3, text, 10), 1);
  EXPECT_STREQ(text, "WINDOWS31Jx");
  EXPECT_EQ(KSV_GetResouceString(0, text, 2), 1);
  EXPECT_STREQ(text, "orNDOWS31Jx");
}

TEST(Resource, stores_nothing_where_there_is_no_room) {
  char text[8] = "before";
  for (const int32_t capacity : {0, -1, INT32_MIN}) {
    EXPECT_EQ(KSV_GetResouceString(3, text, capacity), 1);
  }
  EXPECT_STREQ(text, "before");
  EXPECT_EQ(KSV_GetResouceString(3, nullptr, 33), 1);
  EXPECT_EQ(KSV_GetResouceInteger(0, nullptr), 1);
}

TEST(Resource, takes_any_index) {
  for (const int32_t index : {-1, 5, 6, INT32_MAX, INT32_MIN}) {
    char text[8] = "before";
    int32_t number = 99;
    EXPECT_EQ(KSV_GetResouceString(index, text, sizeof text), 1);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(KSV_GetResouceInteger(index, &number), 1);
    EXPECT_EQ(number, 0);
  }
}

TEST(Resource, has_two_integers_of_0) {
  for (const int32_t index : {0, 1}) {
    int32_t number = 99;
    EXPECT_EQ(KSV_GetResouceInteger(index, &number), 1);
    EXPECT_EQ(number, 0);
  }
}
