// ksv detect: a line a file.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "command.h"

namespace ksv_cli_tests {
namespace {

// Japanese in Shift_JIS, with a line end.
const std::string kShiftJis = bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA, '\r', '\n'});
const std::string kUtf16 = bytes({0xFF, 0xFE, 0xE5, 0x65, 0x2C, 0x67, '\n', 0});

class Detect : public CommandTest {
 protected:
  Detect() { setEnvironment("LANG", "en_US.UTF-8"); }
};

TEST_F(Detect, writes_path_charsets_byte_order_line_end_mark_and_result) {
  write("ascii", "plain\n");
  write("sjis", kShiftJis);
  write("utf16", kUtf16);
  const Outcome outcome = ksv({"detect", "--language", "Japanese", "ascii", "sjis", "utf16"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "ascii\tShift_JIS\t-\tlf\t-\t0x68000100\n"
            "sjis\tShift_JIS\t-\tcrlf\t-\t0x64000100\n"
            "utf16\tUTF-16\tlittle\tlf\tbom\t0xC8000004\n");
}

TEST_F(Detect, writes_one_json_object_a_line) {
  write("utf16", kUtf16 + bytes({0x28, 0x20, 0x29, 0x20}));
  const Outcome outcome = ksv({"detect", "--json", "utf16"});
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

TEST_F(Detect, tells_ties_and_texts_that_fit_nothing) {
  write("tie", bytes({0xB0, 0xA1, 0xC4, 0xE3, 0xD0, 0xD0, ' '}));
  write("none", bytes({0x7F, 0xFF, 0x05, 0x06}));
  const Outcome outcome = ksv({"detect", "tie", "none"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "tie\tEUC-JP,Shift_JIS,ChineseGBK,ChineseBIG5,KoreanKSC\t-\t-\t-\t0x60001D40\n"
            "none\tundetermined\t-\t-\t-\t0x60000001\n");
  const std::string json = ksv({"detect", "--json", "none"}).out;
  EXPECT_EQ(nlohmann::json::parse(json).at("encodings"), nlohmann::json::array());
  EXPECT_EQ(nlohmann::json::parse(json).at("lineEnd"), nullptr);
}

TEST_F(Detect, takes_the_language_of_the_environment) {
  write("ascii", "plain");
  EXPECT_EQ(ksv({"detect", "ascii"}).out, "ascii\tUTF-8\t-\t-\t-\t0x60000002\n");
  setEnvironment("LANG", "ko_KR.UTF-8");
  EXPECT_EQ(ksv({"detect", "ascii"}).out, "ascii\tKoreanKSC\t-\t-\t-\t0x60001000\n");
}

TEST_F(Detect, reads_standard_input) {
  const std::string expected = "-\tUTF-16\tlittle\tlf\tbom\t0xC8000004\n";
  EXPECT_EQ(ksv({"detect"}, kUtf16).out, expected);
  EXPECT_EQ(ksv({"detect", "-"}, kUtf16).out, expected);
}

TEST_F(Detect, goes_on_behind_a_file_that_fails) {
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

TEST_F(Detect, tells_an_empty_file_as_a_result) {
  write("empty", "");
  const Outcome outcome = ksv({"detect", "empty", "-"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "empty\tempty\t-\t-\t-\t-\n-\tempty\t-\t-\t-\t-\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(ksv({"detect", "--json", "empty"}).out,
            "{\"path\":\"empty\",\"encodings\":[],\"byteOrder\":null,\"lineEnd\":null,"
            "\"separators\":[],\"byteOrderMark\":false,\"result\":null,\"empty\":true}\n");
}

TEST_F(Detect, records_failures_in_their_places) {
  write("a", "plain\n");
  const std::string line =
      "{\"path\":\"a\",\"encodings\":[\"UTF-8\"],\"byteOrder\":null,\"lineEnd\":\"lf\","
      "\"separators\":[],\"byteOrderMark\":false,\"result\":\"0x68000002\"";
  const Outcome outcome = ksv({"detect", "--json", "-j", "4", "a", "missing", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, line + ",\"empty\":false}\n" +
                             "{\"path\":\"missing\",\"error\":{\"reason\":\"No such file or "
                             "directory\",\"offset\":null}}\n" +
                             line + ",\"empty\":false}\n");
  EXPECT_EQ(outcome.err, "ksv: missing: No such file or directory\n");
  EXPECT_EQ(ksv({"detect", "--json", "--classic", "a", "missing"}).out, line + "}\n");
}

TEST_F(Detect, takes_names_from_a_list_behind_the_operands) {
  write("a b", "plain");
  write("c", "plain");
  write("d", "plain");
  write("lines", "a b\r\n\nc\n");
  write("nuls", std::string("a b\0c", 5));
  const std::string line = "\tUTF-8\t-\t-\t-\t0x60000002\n";
  const std::string expected = "d" + line + "a b" + line + "c" + line;
  EXPECT_EQ(ksv({"detect", "--files-from", "lines", "d"}).out, expected);
  EXPECT_EQ(ksv({"detect", "d", "--files-from", "nuls", "--null"}).out, expected);
  EXPECT_EQ(ksv({"detect", "d", "--files-from", "-"}, "a b\nc").out, expected);
  EXPECT_EQ(ksv({"detect", "d", "--files-from", "-", "--null"}, std::string("a b\0c\0", 6)).out,
            expected);
  const Outcome none = ksv({"detect", "--files-from", "-"}, "");
  EXPECT_EQ(none.status, 0);
  EXPECT_EQ(none.out, "") << "an empty list names nothing, not standard input";
}

TEST_F(Detect, of_many_files_at_once_keeps_their_order) {
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
    const Outcome outcome = ksv({"detect", "-j", jobs, "--files-from", "-"}, list);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, expected);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 43);
  }
}

TEST_F(Detect, leaves_no_temporary_file) {
  setEnvironment("TMPDIR", path("."));
  setEnvironment("TMP", path("."));
  ksv({"detect"}, kUtf16);
  EXPECT_EQ(files(), std::vector<std::string>());
}

}  // namespace
}  // namespace ksv_cli_tests
