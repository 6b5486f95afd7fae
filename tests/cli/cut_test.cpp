// ksv cut: the beginning of a text that breaks no character.

#include "command.h"

namespace ksv_cli_tests {
namespace {

class Cut : public CommandTest {
 protected:
  std::string cut(const std::string& charset, int count, const std::string& text) const {
    const Outcome outcome = ksv({"cut", "-c", charset, "-n", std::to_string(count)}, text);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(Cut, leaves_out_the_character_that_does_not_fit) {
  EXPECT_EQ(cut("utf8", 5, "あい"), "あ");
  EXPECT_EQ(cut("utf8", 6, "あいう"), "あい");
  EXPECT_EQ(cut("sjis", 3, bytes({0x82, 0xA0, 0x82, 0xA2})), bytes({0x82, 0xA0}));
  EXPECT_EQ(cut("cp932", 1, bytes({0x82, 0xA0})), "");
  EXPECT_EQ(cut("utf-16be", 3, bytes({0x30, 0x42, 0x30, 0x44})), bytes({0x30, 0x42}));
  EXPECT_EQ(cut("ucs-4le", 7, bytes({0x42, 0x30, 0, 0, 0x44, 0x30, 0, 0})),
            bytes({0x42, 0x30, 0, 0}));
}

TEST_F(Cut, takes_a_number_with_zeros_in_front_for_a_decimal_one) {
  EXPECT_EQ(ksv({"cut", "-c", "utf8", "-n", "010"}, "0123456789ab").out, "0123456789");
  EXPECT_EQ(ksv({"cut", "-c", "utf8", "-n", "08"}, "0123456789ab").out, "01234567");
}

TEST_F(Cut, takes_the_rule_that_fits_the_charset) {
  EXPECT_EQ(cut("Shift_JIS-2004", 3, bytes({0x82, 0xF5, 0x82, 0xF6, 'a'})), bytes({0x82, 0xF5}));
  EXPECT_EQ(cut("EUC-JIS-2004", 4, bytes({0xA4, 0xF7, 0x8F, 0xA1, 0xA1, 'a'})),
            bytes({0xA4, 0xF7}));
  EXPECT_EQ(cut("eucJP", 3, bytes({0xA4, 0xA2, 0xA4, 0xA4})), bytes({0xA4, 0xA2}));
  EXPECT_EQ(cut("cp51932", 3, bytes({0xA4, 0xA2, 0xA4, 0xA4})), bytes({0xA4, 0xA2}));
  EXPECT_EQ(cut("gb2312", 3, bytes({0xD6, 0xD0, 0xCE, 0xC4})), bytes({0xD6, 0xD0}));
  EXPECT_EQ(cut("gb18030", 5, bytes({0x94, 0x39, 0xFC, 0x36, 0x94, 0x39, 0xFC, 0x36})),
            bytes({0x94, 0x39, 0xFC, 0x36}));
  EXPECT_EQ(cut("big5-hkscs", 3, bytes({0xA4, 0xA4, 0xA4, 0xE5})), bytes({0xA4, 0xA4}));
  EXPECT_EQ(cut("euc-kr", 3, bytes({0xB0, 0xA1, 0xB0, 0xA2})), bytes({0xB0, 0xA1}));
}

TEST_F(Cut, takes_every_charset_of_single_bytes) {
  for (const std::string charset : {"windows-1252", "koi8-r", "IBM866", "macintosh", "tis-620",
                                    "us-ascii", "iso-8859-15", "windows-874"}) {
    EXPECT_EQ(cut(charset, 2, "a\xE9z"), "a\xE9") << charset;
    EXPECT_EQ(cut(charset, 2, "a\r\nb"), "a") << charset;
    EXPECT_EQ(cut(charset, 3, "a\r\nb"), "a\r\n") << charset;
  }
}

TEST_F(Cut, breaks_no_escape_sequence) {
  const std::string text = "ab\x1B$B$\"$$\x1B(Bc";
  EXPECT_EQ(cut("iso-2022-jp", 4, text), "ab");
  EXPECT_EQ(cut("iso-2022-jp", 8, text), "ab\x1B$B$\"");
  const std::string planes = "\x1B$(Q$\"$$\x1B(Bc";
  EXPECT_EQ(cut("iso-2022-jp-2004", 7, planes), "\x1B$(Q$\"");
}

TEST_F(Cut, parts_no_cr_from_its_lf) {
  EXPECT_EQ(cut("latin1", 2, "a\r\nb"), "a");
  EXPECT_EQ(cut("latin1", 2, "a\rb"), "a\r");
  EXPECT_EQ(cut("latin1", 3, "a\r\nb"), "a\r\n");
  EXPECT_EQ(cut("utf8", 2, "a\r\nb"), "a");
  EXPECT_EQ(cut("utf-16le", 4, bytes({'a', 0, 13, 0, 10, 0, 'b', 0})), bytes({'a', 0}));
}

TEST_F(Cut, gives_all_of_a_text_that_is_not_longer) {
  const std::string text = "あ\r\n\xE3\x81";
  EXPECT_EQ(cut("utf8", 7, text), text);
  EXPECT_EQ(cut("utf8", 1000, text), text);
  EXPECT_EQ(ksv({"cut", "-c", "utf8", "-n", "9000000000000"}, text).out, text);
  EXPECT_EQ(cut("utf8", 10, ""), "");
  EXPECT_EQ(cut("utf8", 0, text), "");
}

TEST_F(Cut, takes_a_name_that_only_the_cutting_knows) {
  EXPECT_EQ(cut("ISO-2022-JP-3", 6, "\x1B$(Q$\"$$"), "\x1B$(Q$\"");
  EXPECT_EQ(cut("ChineseBIG", 3, bytes({0xA4, 0xA4, 0xA4, 0xE5})), bytes({0xA4, 0xA4}));
}

TEST_F(Cut, takes_charsets_that_CutStr_does_not_know) {
  EXPECT_EQ(cut("UTF-7", 3, "a+MEI-b"), "a");
  EXPECT_EQ(cut("hz-gb-2312", 5, "ab~{VP~}"), "ab");
  EXPECT_EQ(cut("johab", 3, "a\x88\x61\x88\x62"), "a\x88\x61");
  EXPECT_EQ(cut("IBM930", 4, bytes({0x62, 0x0E, 0x44, 0x81, 0x0F})),
            bytes({0x62, 0x0E, 0x44, 0x81}));
  EXPECT_EQ(cut("IBM930", 3, bytes({0x62, 0x0E, 0x44, 0x81, 0x0F})), bytes({0x62}));
}

// CR and LF of EBCDIC.
TEST_F(Cut, parts_no_cr_from_its_lf_whatever_their_bytes) {
  EXPECT_EQ(cut("IBM1047", 2, "\xC1\x0D\x25\xC2"), "\xC1");
  EXPECT_EQ(cut("IBM1047", 2, "\xC1\x0D\x0A\xC2"), "\xC1\x0D");
  EXPECT_EQ(cut("ucs-4be", 8, bytes({0, 0, 0, 'a', 0, 0, 0, 13, 0, 0, 0, 10})),
            bytes({0, 0, 0, 'a'}));
}

struct BrokenByCutStr {
  const char* charset;
  std::string text;
  int limit;
  std::string whole;
  std::string classic;
};

// Its rules see the lead bytes of some characters only.
TEST_F(Cut, breaks_no_character_that_CutStr_breaks) {
  const BrokenByCutStr texts[] = {
      {"euc-jp", bytes({0xE0, 0xA1, 0xE0, 0xA2}), 3, bytes({0xE0, 0xA1}),
       bytes({0xE0, 0xA1, 0xE0})},
      {"euc-jp", bytes({0x8F, 0xB0, 0xA1, 'a'}), 2, "", bytes({0x8F, 0xB0})},
      {"gb18030", bytes({0x94, 0x39, 0xFC, 0x36}), 2, "", bytes({0x94, 0x39})},
      {"utf-16le", bytes({0x3D, 0xD8, 0x00, 0xDE}), 2, "", bytes({0x3D, 0xD8})},
  };
  for (const auto& [charset, text, limit, whole, classic] : texts) {
    EXPECT_EQ(cut(charset, limit, text), whole) << charset;
    EXPECT_EQ(ksv({"cut", "--classic", "-c", charset, "-n", std::to_string(limit)}, text).out,
              classic)
        << charset;
  }
}

// What it is asked for fits into its arguments up to here.
TEST_F(Cut, classic_takes_whole_texts_of_any_limit) {
  for (const char* limit : {"2147483643", "2147483644", "9000000000000"})
    EXPECT_EQ(ksv({"cut", "--classic", "-c", "utf8", "-n", limit}, "あ").out, "あ") << limit;
}

TEST_F(Cut, keeps_bytes_that_are_no_text) { EXPECT_EQ(cut("utf8", 3, "a\xFF\x80z"), "a\xFF\x80"); }

TEST_F(Cut, reads_a_file_or_standard_input) {
  write("text", "abcdef");
  EXPECT_EQ(ksv({"cut", "-c", "utf8", "-n", "3", "text"}).out, "abc");
  EXPECT_EQ(ksv({"cut", "--charset", "utf8", "--bytes", "3", "-"}, "uvwxyz").out, "uvw");
}

TEST_F(Cut, reports_a_file_that_cannot_be_read) {
  const Outcome outcome = ksv({"cut", "-c", "utf8", "-n", "3", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: none: No such file or directory\n");
}

TEST_F(Cut, tells_wrong_usage) {
  write("a", "a");
  const std::vector<std::vector<std::string>> wrong = {
      {"-c", "klingon", "-n", "1"},
      {"-c", "OASYS_ONLINE", "-n", "1", "--classic"},
      {"-c", "UTF-7", "-n", "1", "--classic"},
      {"-c", "utf8"},
      {"-n", "1"},
      {"-c", "utf8", "-n", "-1"},
      {"-c", "utf8", "-n", "many"},
      {"-c", "utf8", "-n", "3x"},
      {"-c", "utf8", "-n", ""},
      {"-c", "utf8", "-n", "1", "a", "a"}};
  for (std::vector<std::string> arguments : wrong) {
    arguments.insert(arguments.begin(), "cut");
    const Outcome outcome = ksv(arguments, "text");
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  }
}

}  // namespace
}  // namespace ksv_cli_tests
