// Charsets whose control codes are not those of ASCII.
#include "command.h"

namespace ksv_cli_tests {
namespace {

class Ebcdic : public CommandTest {};

TEST_F(Ebcdic, is_converted_to_utf8_and_back) {
  EXPECT_EQ(ksv({"convert", "-f", "cp1047", "-t", "utf8"}, "\xC8\x85\x93\x93\x96\x15\x25").out,
            "Hello\xC2\x85\n");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "ibm037"}, "Hello\xC2\x85\n").out,
            "\xC8\x85\x93\x93\x96\x15\x25");
}

// The converter would write the code of what the target lacks as it is, as a NAK.
TEST_F(Ebcdic, has_a_next_line_that_other_charsets_lack) {
  const Outcome outcome = ksv({"convert", "-f", "cp1047", "-t", "Shift_JIS"}, "\xC1\x15\xC2");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "A");
  EXPECT_EQ(outcome.err, "ksv: standard input: U+0085 is not in Shift_JIS at byte offset 1\n");
}

TEST_F(Ebcdic, keeps_controls_that_others_have_at_other_codes) {
  EXPECT_EQ(ksv({"convert", "-f", "cp1047", "-t", "Shift_JIS"}, "\x2F\x05\x37\x25").out,
            "\x07\x09\x04\n");
}

TEST_F(Ebcdic, gets_line_ends_of_its_own) {
  const std::string text = "a\r\nb\nc\r";
  const auto toEbcdic = [&](const char* form) {
    return ksv({"convert", "-f", "utf8", "-t", "cp1047", "--newline", form}, text).out;
  };
  EXPECT_EQ(toEbcdic("keep"), "\x81\x0D\x25\x82\x25\x83\x0D");
  EXPECT_EQ(toEbcdic("lf"), "\x81\x25\x82\x25\x83\x25");
  EXPECT_EQ(toEbcdic("crlf"), "\x81\x0D\x25\x82\x0D\x25\x83\x0D\x25");
  EXPECT_EQ(toEbcdic("cr"), "\x81\x0D\x82\x0D\x83\x0D");
}

TEST_F(Ebcdic, has_line_ends_that_are_found) {
  const std::string text = "\x81\x0D\x25\x82\x25";
  EXPECT_EQ(ksv({"convert", "-f", "cp1047", "-t", "utf8", "--newline", "lf"}, text).out, "a\nb\n");
  EXPECT_EQ(ksv({"convert", "-f", "cp1047", "-t", "cp500", "--newline", "crlf"}, text).out,
            "\x81\x0D\x25\x82\x0D\x25");
}

TEST_F(Ebcdic, tells_of_a_character_that_it_lacks_where_it_stands_in_the_text) {
  const Outcome outcome =
      ksv({"convert", "-f", "sjis", "-t", "cp1047", "--newline", "lf"}, "a\r\nb\x82\xA0");
  EXPECT_EQ(outcome.err, "ksv: standard input: U+3042 is not in IBM1047 at byte offset 4\n");
}

TEST_F(Ebcdic, with_shifts_has_the_same_controls_and_line_ends) {
  EXPECT_EQ(ksv({"convert", "-f", "ibm930", "-t", "Shift_JIS"}, "\xC1\x15").err,
            "ksv: standard input: U+0085 is not in Shift_JIS at byte offset 1\n");
  EXPECT_EQ(
      ksv({"convert", "-f", "sjis", "-t", "ibm939", "--newline", "lf"}, "a\r\n\x82\xA0\n").out,
      "\x81\x25\x0E\x44\x81\x0F\x25");
  EXPECT_EQ(
      ksv({"convert", "-f", "ibm939", "-t", "utf8", "--newline", "crlf"}, "\x0D\x25\x81\x25").out,
      "\r\na\r\n");
}

class Viscii : public CommandTest {};

TEST_F(Viscii, has_letters_at_control_codes_that_other_charsets_lack) {
  EXPECT_EQ(ksv({"convert", "-f", "viscii", "-t", "utf8"}, "\x02\n").out, "\xE1\xBA\xB2\n");
  const Outcome outcome = ksv({"convert", "-f", "viscii", "-t", "latin1"}, "a\x02");
  EXPECT_EQ(outcome.err, "ksv: standard input: U+1EB2 is not in ISO-8859-1 at byte offset 1\n");
}

}  // namespace
}  // namespace ksv_cli_tests
