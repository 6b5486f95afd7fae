// ksv detect --classic: what the library's dtctText answers, a line a file; and how the job goes
// through its inputs.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "command.h"

namespace ksv_cli_tests {
namespace {

// Japanese in Shift_JIS, with a line end.
const std::string kShiftJis = bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA, '\r', '\n'});
const std::string kUtf16 = bytes({0xFF, 0xFE, 0xE5, 0x65, 0x2C, 0x67, '\n', 0});

class ClassicDetect : public CommandTest {
 protected:
  ClassicDetect() { setEnvironment("LANG", "en_US.UTF-8"); }
};

TEST_F(ClassicDetect, writes_path_charsets_byte_order_line_end_mark_and_result) {
  write("ascii", "plain\n");
  write("sjis", kShiftJis);
  write("utf16", kUtf16);
  const Outcome outcome =
      ksv({"detect", "--classic", "--language", "Japanese", "ascii", "sjis", "utf16"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "ascii\tShift_JIS\t-\tlf\t-\t0x68000100\n"
            "sjis\tShift_JIS\t-\tcrlf\t-\t0x64000100\n"
            "utf16\tUTF-16\tlittle\tlf\tbom\t0xC8000004\n");
}

TEST_F(ClassicDetect, writes_one_json_object_a_line) {
  write("utf16", kUtf16 + bytes({0x28, 0x20, 0x29, 0x20}));
  const Outcome outcome = ksv({"detect", "--classic", "--json", "utf16"});
  EXPECT_EQ(outcome.out.find('\n'), outcome.out.size() - 1);
  const auto line = nlohmann::json::parse(outcome.out);
  EXPECT_EQ(line.at("path"), "utf16");
  EXPECT_EQ(line.at("encodings"), nlohmann::json::array({"UTF-16"}));
  EXPECT_EQ(line.at("byteOrder"), "little");
  EXPECT_EQ(line.at("lineEnd"), "lf");
  EXPECT_EQ(line.at("separators"), nlohmann::json::array({"U+2028", "U+2029"}));
  EXPECT_EQ(line.at("byteOrderMark"), true);
  EXPECT_EQ(line.at("result"), "0xCB000004");
}

TEST_F(ClassicDetect, tells_ties_and_texts_that_fit_nothing) {
  write("tie", bytes({0xB0, 0xA1, 0xC4, 0xE3, 0xD0, 0xD0, ' '}));
  write("none", bytes({0x7F, 0xFF, 0x05, 0x06}));
  const Outcome outcome = ksv({"detect", "--classic", "tie", "none"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "tie\tEUC-JP,Shift_JIS,ChineseGBK,ChineseBIG5,KoreanKSC\t-\t-\t-\t0x60001D40\n"
            "none\tundetermined\t-\t-\t-\t0x60000001\n");
  const std::string json = ksv({"detect", "--classic", "--json", "none"}).out;
  EXPECT_EQ(nlohmann::json::parse(json).at("encodings"), nlohmann::json::array());
  EXPECT_EQ(nlohmann::json::parse(json).at("lineEnd"), nullptr);
}

TEST_F(ClassicDetect, takes_the_language_of_the_environment) {
  write("ascii", "plain");
  EXPECT_EQ(ksv({"detect", "--classic", "ascii"}).out, "ascii\tUTF-8\t-\t-\t-\t0x60000002\n");
  setEnvironment("LANG", "ko_KR.UTF-8");
  EXPECT_EQ(ksv({"detect", "--classic", "ascii"}).out, "ascii\tKoreanKSC\t-\t-\t-\t0x60001000\n");
}

TEST_F(ClassicDetect, reads_standard_input) {
  const std::string expected = "-\tUTF-16\tlittle\tlf\tbom\t0xC8000004\n";
  EXPECT_EQ(ksv({"detect", "--classic"}, kUtf16).out, expected);
  EXPECT_EQ(ksv({"detect", "--classic", "-"}, kUtf16).out, expected);
}

TEST_F(ClassicDetect, goes_on_behind_a_file_that_fails) {
  write("a", "plain\n");
  write("empty", "");
  write("z", "plain\n");
  const Outcome outcome = ksv({"detect", "--classic", "a", "missing", "empty", ".", "z"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "a\tUTF-8\t-\tlf\t-\t0x68000002\nz\tUTF-8\t-\tlf\t-\t0x68000002\n");
  EXPECT_EQ(outcome.err.substr(0, 14), "ksv: missing: ");
  EXPECT_NE(outcome.err.find("\nksv: empty: is empty\nksv: .: "), std::string::npos) << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 3);
  EXPECT_EQ(ksv({"detect", "--classic"}, "").err, "ksv: standard input: is empty\n");
}

TEST_F(ClassicDetect, writes_no_record_of_a_failure) {
  write("a", "plain\n");
  const Outcome outcome = ksv({"detect", "--classic", "--json", "-j", "4", "a", "missing"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "{\"path\":\"a\",\"encodings\":[\"UTF-8\"],\"byteOrder\":null,\"lineEnd\":\"lf\","
            "\"separators\":[],\"byteOrderMark\":false,\"result\":\"0x68000002\"}\n");
  EXPECT_EQ(outcome.err, "ksv: missing: No such file or directory\n");
}

TEST_F(ClassicDetect, takes_names_from_a_list_behind_the_operands) {
  write("a b", "plain");
  write("c", "plain");
  write("d", "plain");
  write("lines", "a b\r\n\nc\n");
  write("nuls", std::string("a b\0c", 5));
  const std::string line = "\tUTF-8\t-\t-\t-\t0x60000002\n";
  const std::string expected = "d" + line + "a b" + line + "c" + line;
  EXPECT_EQ(ksv({"detect", "--classic", "--files-from", "lines", "d"}).out, expected);
  EXPECT_EQ(ksv({"detect", "--classic", "d", "--files-from", "nuls", "--null"}).out, expected);
  EXPECT_EQ(ksv({"detect", "--classic", "d", "--files-from", "-"}, "a b\nc").out, expected);
  EXPECT_EQ(
      ksv({"detect", "--classic", "d", "--files-from", "-", "--null"}, std::string("a b\0c\0", 6))
          .out,
      expected);
  const Outcome none = ksv({"detect", "--classic", "--files-from", "-"}, "");
  EXPECT_EQ(none.status, 0);
  EXPECT_EQ(none.out, "") << "an empty list names nothing, not standard input";
}

TEST_F(ClassicDetect, of_many_files_at_once_keeps_their_order) {
  std::string list;
  std::string expected;
  for (int i = 0; i < 300; ++i) {
    const std::string name = "file" + std::to_string(i);
    list += name + "\n";
    if (i % 7 == 3) continue;  // is missing
    write(name, i % 2 == 0 ? "plain\n" : kUtf16);
    expected += name + (i % 2 == 0 ? "\tUTF-8\t-\tlf\t-\t0x68000002\n"
                                   : "\tUTF-16\tlittle\tlf\tbom\t0xC8000004\n");
  }
  for (const std::string jobs : {"1", "8"}) {
    const Outcome outcome = ksv({"detect", "--classic", "-j", jobs, "--files-from", "-"}, list);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, expected);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 43);
  }
}

TEST_F(ClassicDetect, leaves_no_temporary_file) {
  setEnvironment("TMPDIR", path("."));
  setEnvironment("TMP", path("."));
  ksv({"detect", "--classic"}, kUtf16);
  EXPECT_EQ(files(), std::vector<std::string>());
}

}  // namespace
}  // namespace ksv_cli_tests
