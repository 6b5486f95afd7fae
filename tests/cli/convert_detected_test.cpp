// ksv convert without --from: each text's charset is detected and told.

#include <algorithm>

#include "command.h"

namespace ksv_cli_tests {
namespace {

const std::string kShiftJis = bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA, '\r', '\n'});
const std::string kJapanese = "日本語\r\n";

class ConvertDetected : public CommandTest {
 protected:
  ConvertDetected() { setEnvironment("LANG", "ja_JP.UTF-8"); }
};

TEST_F(ConvertDetected, reads_the_charset_that_fits_and_says_why) {
  write("sjis", kShiftJis);
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "sjis"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, kJapanese);
  EXPECT_EQ(outcome.err,
            "ksv: sjis: read as WINDOWS31J, which holds Shift_JIS: its characters are those of "
            "text in ja\n");
}

TEST_F(ConvertDetected, reads_the_extensions_of_ShiftJis) {
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8"}, bytes({0x87, 0x40}) + kShiftJis).out, "①日本語\r\n");
}

TEST_F(ConvertDetected, reads_every_charset_that_is_detected) {
  const auto expect = [this](const std::string& text, const std::string& out,
                             const std::string& reading) {
    const Outcome outcome = ksv({"convert", "-t", "UTF-8"}, text);
    EXPECT_EQ(outcome.out, out) << reading;
    EXPECT_EQ(outcome.err.find("ksv: standard input: read as " + reading + ": "), 0u)
        << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
    EXPECT_EQ(outcome.status, 0);
  };
  expect("\xC6\xFC\xCB\xDC\xA4\xB3\xA4\xEC\xF4\xA6", "日本これ熙", "EUC-JP-MS, which holds EUC-JP");
  expect("\x1B$B\x46\x7C\x1B(B", "日", "CP50220, which holds ISO-2022-JP");
  expect("これは日本語です\n", "これは日本語です\n", "UTF-8");
  expect("\xEF\xBB\xBF日本", "日本", "UTF-8");
  expect(bytes({0xFF, 0xFE, 0xE5, 0x65}), "日", "UTF-16LE");
  expect(bytes({0x65, 0xE5, 0x67, 0x2C, 0, '\n'}), "日本\n", "UTF-16BE");
  expect(bytes({0, 0, 0x65, 0xE5, 0, 0, 0, '\n'}), "日\n", "UTF-32BE");
  setEnvironment("LANG", "zh_CN.UTF-8");
  expect(bytes({0xD6, 0xD0, 0xCE, 0xC4}), "中文", "ChineseGBK, which holds GB2312");
  setEnvironment("LANG", "zh_TW.UTF-8");
  expect(bytes({0xA4, 0xA4, 0xA4, 0xE5}), "中文", "ChineseBIG5");
  setEnvironment("LANG", "ko_KR.UTF-8");
  expect(bytes({0xC7, 0xD1, 0xB1, 0xDB}), "한글", "KoreanKSC, which holds EUC-KR");
}

TEST_F(ConvertDetected, fails_where_several_charsets_fit) {
  setEnvironment("LANG", "en_US.UTF-8");
  write("tie", "\xB1\xB2");
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "-o", "out", "tie"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("ksv: tie: may be "), 0u) << outcome.err;
  EXPECT_NE(outcome.err.find("; --from names one of them, --guess takes "), std::string::npos);
  EXPECT_FALSE(exists("out"));
}

TEST_F(ConvertDetected, fails_where_no_charset_fits) {
  write("none", bytes({0x7F, 0xFF, 0x05, 0x06}));
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "-o", "out", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: none: is no text; --from reads it as one\n");
  EXPECT_FALSE(exists("out"));
}

TEST_F(ConvertDetected, makes_an_empty_text_of_an_empty_one) {
  write("empty", "");
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "-o", "out", "empty"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "ksv: empty: read as UTF-8: it is empty\n");
  EXPECT_EQ(read("out"), "");
}

TEST_F(ConvertDetected, goes_on_behind_a_text_that_is_not_determined) {
  write("a", kShiftJis);
  write("b", bytes({0x7F, 0xFF, 0x05, 0x06}));
  write("c", "\x1B$B\x46\x7C\x1B(B");
  const Outcome outcome =
      ksv({"convert", "-t", "UTF-8", "--output-dir", "out", "-j", "3", "a", "b", "missing", "c"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(files("out"), (std::vector<std::string>{"a", "c"}));
  EXPECT_EQ(read("out/a"), kJapanese);
  EXPECT_EQ(read("out/c"), "日");
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 4);
}

TEST_F(ConvertDetected, converts_in_place) {
  write("a", kShiftJis);
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--in-place", "a"}).status, 0);
  EXPECT_EQ(read("a"), kJapanese);
}

// Of "Festplatten die gleiche Größe" in Latin-1 F6 DF is a kanji in EUC-JP. That the user is
// Japanese does not say that the text is, and that it is said does not make it so.
TEST_F(ConvertDetected, believes_the_language_of_the_user_only_where_there_is_something_to_see) {
  const std::string german = "# Festplatten die gleiche Gr\xF6\xDF";
  setEnvironment("LANG", "ja_JP.UTF-8");
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8"}, german).out, "# Festplatten die gleiche Größ");
  const Outcome said = ksv({"convert", "-t", "UTF-8", "--detect-language", "ja"}, german);
  EXPECT_TRUE(said.status == 1 || said.out == "# Festplatten die gleiche Größ") << said.out;
}

// Longer than what is looked at before it is converted.
TEST_F(ConvertDetected, reads_all_of_a_long_standard_input) {
  constexpr size_t kLength = 4400000;
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--detect-language", "ja", "-o", "out"},
                              std::string(kLength, 'a') + kShiftJis);
  EXPECT_EQ(outcome.status, 0);
  const std::string out = read("out");
  EXPECT_EQ(out.find_first_not_of('a'), kLength);
  EXPECT_EQ(out.substr(out.size() - kJapanese.size()), kJapanese);
  EXPECT_EQ(out.size(), kLength + kJapanese.size());
}

TEST_F(ConvertDetected, tells_what_is_wrong_further_on) {
  std::string text = "\xFF\xFE";
  for (int i = 0; i < 20; ++i) text += "\xE5\x65";
  write("a", text + bytes({0x00, 0xD8, 0xE5, 0x65}));
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "-o", "out", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("ksv: a: read as UTF-16LE: "), 0u) << outcome.err;
  EXPECT_NE(outcome.err.find(" at byte offset 42\n"), std::string::npos) << outcome.err;
  EXPECT_FALSE(exists("out"));
}

}  // namespace
}  // namespace ksv_cli_tests
