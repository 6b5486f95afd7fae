// Invalid and unmappable characters, and files that cannot be read.

#include <filesystem>

#include "command.h"
#include "offset_sweep.h"

namespace ksv_cli_tests {
namespace {

class ConvertFailures : public CommandTest {};

TEST_F(ConvertFailures, name_file_reason_and_offset) {
  write("bad.txt", bytes({'a', 'b', 0x81, 0x7F, 'c'}));
  const Outcome outcome = ksv({"convert", "-f", "sjis", "-t", "utf8", "bad.txt"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: bad.txt: invalid Shift_JIS (0x81) at byte offset 2\n");
  EXPECT_EQ(outcome.out, "ab");
}

TEST_F(ConvertFailures, name_the_character_that_the_target_lacks) {
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis"}, "あい😀う");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: standard input: U+1F600 is not in Shift_JIS at byte offset 6\n");
}

TEST_F(ConvertFailures, name_a_character_that_the_end_cuts) {
  const Outcome outcome =
      ksv({"convert", "-f", "sjis", "-t", "utf8"}, bytes({'a', 0x82, 0xA0, 0x82}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: standard input: the text ends inside a Shift_JIS character at byte offset 3\n");
}

TEST_F(ConvertFailures, count_the_byte_order_mark) {
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis"},
                              "\xEF\xBB\xBF"
                              "a\xFF");
  EXPECT_EQ(outcome.err, "ksv: standard input: invalid UTF-8 (0xFF) at byte offset 4\n");
}

TEST_F(ConvertFailures, leave_no_output_file) {
  write("bad.txt", bytes({'a', 0x81}));
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8", "-o", "out.txt", "bad.txt"}).status, 1);
  EXPECT_EQ(files(), (std::vector<std::string>{"bad.txt"}));
}

TEST_F(ConvertFailures, leave_an_older_output_file_as_it_was) {
  write("bad.txt", bytes({'a', 0x81}));
  write("out.txt", "older");
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8", "-o", "out.txt", "bad.txt"}).status, 1);
  EXPECT_EQ(read("out.txt"), "older");
  EXPECT_EQ(files(), (std::vector<std::string>{"bad.txt", "out.txt"}));
}

TEST_F(ConvertFailures, leave_a_file_in_place_and_make_no_backup) {
  const std::string text = bytes({'a', 0x81});
  write("bad.txt", text);
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8", "--in-place=.bak", "bad.txt"}).status, 1);
  EXPECT_EQ(read("bad.txt"), text);
  EXPECT_EQ(files(), (std::vector<std::string>{"bad.txt"}));
}

TEST_F(ConvertFailures, do_not_keep_the_other_files_from_being_done) {
  write("a", "あ");
  write("b", "\xFF");
  write("c", "い");
  const Outcome outcome =
      ksv({"convert", "-f", "utf8", "-t", "sjis", "--output-dir", "out", "a", "b", "none", "c"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: b: invalid UTF-8 (0xFF) at byte offset 0\n"
            "ksv: none: No such file or directory\n");
  EXPECT_EQ(files("out"), (std::vector<std::string>{"a", "c"}));
  EXPECT_EQ(read("out/c"), bytes({0x82, 0xA2}));
}

TEST_F(ConvertFailures, on_standard_output_leave_what_the_others_give) {
  write("a", "a");
  write("b", "b\xFF");
  write("c", "c");
  for (const std::string jobs : {"1", "3"}) {
    const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "-j", jobs, "a", "b", "c"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "abc");
  }
}

TEST_F(ConvertFailures, report_a_directory_and_a_missing_file) {
  std::filesystem::create_directory(path("dir"));
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "dir", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: dir: Is a directory\n"
            "ksv: none: No such file or directory\n");
}

TEST_F(ConvertFailures, report_an_output_that_is_a_directory_or_in_none) {
  write("a", "a");
  std::filesystem::create_directory(path("dir"));
  const Outcome directory = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "dir", "a"});
  EXPECT_EQ(directory.status, 1);
  EXPECT_EQ(directory.err, "ksv: a: cannot write dir: Is a directory\n");
  const Outcome nowhere = ksv({"convert", "-f", "utf8", "-t", "sjis", "-o", "none/x", "a"});
  EXPECT_EQ(nowhere.status, 1);
  EXPECT_EQ(nowhere.err, "ksv: a: cannot write none/x: No such file or directory\n");
}

TEST_F(ConvertFailures, report_an_output_directory_that_is_a_file) {
  write("a", "a");
  write("file", "");
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "--output-dir", "file", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.substr(0, 11), "ksv: file: ");
}

class BadBytes : public testing::TestWithParam<BadText> {};

TEST_P(BadBytes, are_named_at_every_place_around_a_border) { expectBadBytesNamed(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    EachDecoder, BadBytes,
    testing::Values(
        BadText{"Shift_JIS", "あ", bytes({0x81, 0x7F}), "invalid Shift_JIS (0x81)"},
        BadText{"Shift_JIS", "ｱ", bytes({0x85, 0x40}), "invalid Shift_JIS (0x85)"},
        BadText{"Shift_JIS", "aあ", bytes({0xA0, 0x20}), "invalid Shift_JIS (0xA0)"},
        BadText{"Shift_JIS", "あ", bytes({0xFF, 0x20}), "invalid Shift_JIS (0xFF)"},
        BadText{"WINDOWS31J", "①", bytes({0xEF, 0x40}), "invalid WINDOWS31J (0xEF)"},
        BadText{"WINDOWS31J", "髙", bytes({0x81, 0x20}), "invalid WINDOWS31J (0x81)"},
        BadText{"Shift_JIS-2004", "か゚", bytes({0x81, 0x3F}), "invalid Shift_JIS-2004 (0x81)"},
        BadText{"Shift_JIS-2004", "𠀋", bytes({0xFD, 0x40}), "invalid Shift_JIS-2004 (0xFD)"},
        BadText{"UTF-8", "あ", bytes({0xE3, 0x81, 0x20}), "invalid UTF-8 (0xE3)"},
        BadText{"UTF-8", "😀", bytes({0xC0, 0x80}), "invalid UTF-8 (0xC0)"},
        BadText{"UTF-16LE", "あ", bytes({0x00, 0xDC}), "invalid UTF-16 (0x00)"},
        BadText{"UTF-16BE", "😀", bytes({0xD8, 0x01, 0x00, 0x20}), "invalid UTF-16 (0xD8)"},
        BadText{"UCS-2LE", "あ", bytes({0x01, 0xD8}), "invalid ISO-10646-UCS-2 (0x01)"},
        BadText{"UCS-4BE", "😀", bytes({0x00, 0x11, 0x00, 0x00}),
                "invalid ISO-10646-UCS-4 (0x00)"}));

class LackingCharacters : public testing::TestWithParam<LackingText> {};

TEST_P(LackingCharacters, are_named_at_every_place_around_a_border) {
  expectLackingCharacterNamed(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    EachSource, LackingCharacters,
    testing::Values(
        LackingText{"UTF-8", "あ", "😀", "Shift_JIS", "U+1F600 is not in Shift_JIS"},
        LackingText{"UTF-8", "a", "é", "Shift_JIS", "U+00E9 is not in Shift_JIS"},
        LackingText{"UTF-8", "か゚", "æ\u0300", "WINDOWS31J", "U+00E6 is not in WINDOWS31J"},
        LackingText{"UTF-16LE", "あ", "😀", "WINDOWS31J", "U+1F600 is not in WINDOWS31J"},
        LackingText{"UTF-16BE", "か゚", "æ\u0300", "Shift_JIS", "U+00E6 is not in Shift_JIS"},
        LackingText{"UCS-2BE", "あ", "é", "Shift_JIS", "U+00E9 is not in Shift_JIS"},
        LackingText{"UCS-4LE", "あ", "😀", "UCS-2", "U+1F600 is not in ISO-10646-UCS-2"},
        LackingText{"WINDOWS31J", "あ", "①", "Shift_JIS", "U+2460 is not in Shift_JIS"},
        LackingText{"Shift_JIS-2004", "か゚", "𠀋", "WINDOWS31J", "U+2000B is not in WINDOWS31J"},
        LackingText{"Shift_JIS-2004", "ｱ", "æ\u0300", "WINDOWS31J",
                    "U+00E6 is not in WINDOWS31J"}));

// A character that the end of the text cuts.
TEST(TruncatedText, is_named_at_the_first_byte_of_its_last_character) {
  for (const std::string charset :
       {"Shift_JIS", "WINDOWS31J", "Shift_JIS-2004", "UTF-8", "UTF-16LE", "UCS-2BE", "UCS-4LE"})
    expectTruncatedCharacterNamed(charset);
}

}  // namespace
}  // namespace ksv_cli_tests
