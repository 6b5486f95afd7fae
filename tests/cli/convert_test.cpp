// What ksv convert does with whole texts.

#include <filesystem>

#include "command.h"
#include "tests/common/support.h"

namespace ksv_cli_tests {
namespace {

class Convert : public CommandTest {};

const std::string kUtf8Line = "日本語ABC\r\n";
const std::string kSjisLine = bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA, 'A', 'B', 'C', 13, 10});

TEST_F(Convert, turns_shift_jis_into_utf8_and_back) {
  write("in.txt", kSjisLine);
  const Outcome there = ksv({"convert", "-f", "Shift_JIS", "-t", "UTF-8", "in.txt"});
  EXPECT_EQ(there.status, 0);
  EXPECT_EQ(there.err, "");
  EXPECT_EQ(there.out, kUtf8Line);
  const Outcome back = ksv({"convert", "-f", "UTF-8", "-t", "Shift_JIS"}, there.out);
  EXPECT_EQ(back.status, 0);
  EXPECT_EQ(back.out, kSjisLine);
}

TEST_F(Convert, reads_standard_input_for_no_operand_and_for_a_hyphen) {
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8"}, kSjisLine).out, kUtf8Line);
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8", "-"}, kSjisLine).out, kUtf8Line);
}

TEST_F(Convert, writes_several_inputs_one_after_the_other) {
  write("a", "a\n");
  write("b", "b\n");
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "b", "-", "a"}, "in\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "b\nin\na\n");
}

TEST_F(Convert, takes_long_names_of_its_options) {
  const Outcome outcome = ksv({"convert", "--from=sjis", "--to", "utf8", "--jobs", "2"}, kSjisLine);
  EXPECT_EQ(outcome.out, kUtf8Line);
}

TEST_F(Convert, converts_nothing_to_nothing) {
  for (const std::string charset : {"utf8", "utf-16", "ucs-2", "ucs-4", "sjis", "cp932"}) {
    const Outcome outcome = ksv({"convert", "-f", charset, "-t", "utf8"});
    EXPECT_EQ(outcome.status, 0) << charset;
    EXPECT_EQ(outcome.out, "") << charset;
  }
}

TEST_F(Convert, converts_texts_shorter_than_a_byte_order_mark) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf-16le"}, "a").out, bytes({'a', 0}));
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf-16le"}, "ab").out, bytes({'a', 0, 'b', 0}));
  EXPECT_EQ(ksv({"convert", "-f", "utf-16le", "-t", "utf8"}, bytes({'a', 0})).out, "a");
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8"}, "a").out, "a");
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8"}, bytes({0x82, 0xA0, 'b'})).out, "あb");
}

TEST_F(Convert, names_the_offset_of_texts_too_short_for_their_first_character) {
  const Outcome one = ksv({"convert", "-f", "utf-16", "-t", "utf8"}, "a");
  EXPECT_EQ(one.status, 1);
  EXPECT_EQ(one.err,
            "ksv: standard input: the text ends inside a UTF-16 character at byte offset 0\n");
  const Outcome three = ksv({"convert", "-f", "ucs-4", "-t", "utf8"}, bytes({'a', 0, 0}));
  EXPECT_EQ(three.err,
            "ksv: standard input: the text ends inside a ISO-10646-UCS-4 character at byte "
            "offset 0\n");
}

TEST_F(Convert, drops_the_mark_of_the_input) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8"},
                "\xEF\xBB\xBF"
                "a")
                .out,
            "a");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8"}, "\xEF\xBB\xBF").out, "");
  EXPECT_EQ(ksv({"convert", "-f", "utf-16", "-t", "utf8"}, bytes({0xFF, 0xFE, 'a', 0})).out, "a");
  EXPECT_EQ(
      ksv({"convert", "-f", "utf-32", "-t", "utf8"}, bytes({0xFF, 0xFE, 0, 0, 'a', 0, 0, 0})).out,
      "a");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8"}, "a\uFEFF").out, "a\uFEFF");
}

TEST_F(Convert, reads_units_in_the_order_of_their_mark_or_name_else_little_endian) {
  const std::string big = bytes({0x30, 0x42});
  const std::string little = bytes({0x42, 0x30});
  EXPECT_EQ(ksv({"convert", "-f", "utf-16", "-t", "utf8"}, little).out, "あ");
  EXPECT_EQ(ksv({"convert", "-f", "utf-16le", "-t", "utf8"}, little).out, "あ");
  EXPECT_EQ(ksv({"convert", "-f", "utf-16be", "-t", "utf8"}, big).out, "あ");
  EXPECT_EQ(ksv({"convert", "-f", "utf-16", "-t", "utf8"}, bytes({0xFE, 0xFF}) + big).out, "あ");
  EXPECT_EQ(ksv({"convert", "-f", "ucs-2be", "-t", "utf8"}, bytes({0xFE, 0xFF}) + big).out, "あ");
  EXPECT_EQ(ksv({"convert", "-f", "ucs-4be", "-t", "utf8"}, bytes({0, 0}) + big).out, "あ");
}

TEST_F(Convert, takes_only_the_mark_of_the_order_that_the_name_gives) {
  EXPECT_EQ(ksv({"convert", "-f", "utf-16be", "-t", "utf8"}, bytes({0xFF, 0xFE, 0, 'a'})).out,
            "\uFFFE"
            "a");
}

TEST_F(Convert, finds_files_under_japanese_names) {
  write("日本語 テキスト.txt", kSjisLine);
  const Outcome outcome =
      ksv({"convert", "-f", "sjis", "-t", "utf8", "-o", "結果.txt", "日本語 テキスト.txt"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(read("結果.txt"), kUtf8Line);
}

TEST_F(Convert, finds_the_same_names_in_directories_and_in_place) {
  std::filesystem::create_directory(ksv::test::pathOf(path("夏目漱石")));
  write("夏目漱石/草枕.sjis.txt", kSjisLine);
  const Outcome copied = ksv(
      {"convert", "-f", "sjis", "-t", "utf8", "--output-dir", "變換/後", "夏目漱石/草枕.sjis.txt"});
  EXPECT_EQ(copied.status, 0) << copied.err;
  EXPECT_EQ(read("變換/後/草枕.sjis.txt"), kUtf8Line);
  const Outcome replaced =
      ksv({"convert", "-f", "sjis", "-t", "utf8", "--in-place=.舊", "夏目漱石/草枕.sjis.txt"});
  EXPECT_EQ(replaced.status, 0) << replaced.err;
  EXPECT_EQ(read("夏目漱石/草枕.sjis.txt"), kUtf8Line);
  EXPECT_EQ(files("夏目漱石"), (std::vector<std::string>{"草枕.sjis.txt", "草枕.sjis.txt.舊"}));
}

TEST_F(Convert, names_a_missing_file_as_it_was_named) {
  const Outcome outcome = ksv({"convert", "-f", "sjis", "-t", "utf8", "無い/吾輩は猫.txt"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: 無い/吾輩は猫.txt: No such file or directory\n");
}

TEST_F(Convert, does_several_files_at_once_and_keeps_their_order) {
  std::vector<std::string> arguments = {"convert", "-f", "sjis", "-t", "utf8", "-j", "8"};
  std::string expected;
  for (int i = 0; i < 40; ++i) {
    const std::string name = "file" + std::to_string(i);
    // The first files are the longest, so the later ones are done before them.
    const std::string text(static_cast<size_t>(40 - i) * 3000, static_cast<char>('a' + i % 26));
    write(name, text);
    expected += text;
    arguments.push_back(name);
  }
  const Outcome outcome = ksv(arguments);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, expected);
}

TEST_F(Convert, does_several_files_at_once_into_a_directory) {
  std::vector<std::string> arguments = {"convert", "-f", "utf8",         "-t", "cp932",
                                        "-j",      "4",  "--output-dir", "out"};
  for (int i = 0; i < 30; ++i) {
    write("f" + std::to_string(i), "テスト" + std::to_string(i));
    arguments.push_back("f" + std::to_string(i));
  }
  EXPECT_EQ(ksv(arguments).status, 0);
  for (int i = 0; i < 30; ++i)
    EXPECT_EQ(read("out/f" + std::to_string(i)),
              bytes({0x83, 0x65, 0x83, 0x58, 0x83, 0x67}) + std::to_string(i));
}

TEST_F(Convert, composes_a_base_and_its_mark_for_jis_x_0213) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "Shift_JIS-2004"}, "か\u309A").out,
            bytes({0x82, 0xF5}));
  EXPECT_EQ(ksv({"convert", "-t", "utf8", "-f", "Shift_JIS-2004"}, bytes({0x82, 0xF5})).out,
            "か\u309A");
}

}  // namespace
}  // namespace ksv_cli_tests
