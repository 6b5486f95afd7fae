// The options of ksv convert that change characters.

#include "command.h"

namespace ksv_cli_tests {
namespace {

class ConvertOptionsTest : public CommandTest {
 protected:
  std::string converted(const std::string& from, const std::string& to,
                        std::vector<std::string> options, const std::string& text) const {
    options.insert(options.begin(), {"convert", "-f", from, "-t", to});
    const Outcome outcome = ksv(options, text);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }
};

TEST_F(ConvertOptionsTest, newline_rewrites_every_line_end) {
  const std::string text = "a\rb\nc\r\nd";
  EXPECT_EQ(converted("utf8", "sjis", {"--newline", "keep"}, text), text);
  EXPECT_EQ(converted("utf8", "sjis", {}, text), text);
  EXPECT_EQ(converted("utf8", "sjis", {"--newline", "lf"}, text), "a\nb\nc\nd");
  EXPECT_EQ(converted("utf8", "sjis", {"--newline", "cr"}, text), "a\rb\rc\rd");
  EXPECT_EQ(converted("utf8", "sjis", {"--newline=crlf"}, text), "a\r\nb\r\nc\r\nd");
}

TEST_F(ConvertOptionsTest, bom_begins_unicode_output_with_a_mark) {
  EXPECT_EQ(converted("utf8", "utf8", {"--bom"}, "a"),
            "\xEF\xBB\xBF"
            "a");
  EXPECT_EQ(converted("utf8", "utf-16", {"--bom"}, "a"), bytes({0xFF, 0xFE, 'a', 0}));
  EXPECT_EQ(converted("utf8", "utf-16be", {"--bom"}, "a"), bytes({0xFE, 0xFF, 0, 'a'}));
  EXPECT_EQ(converted("utf8", "ucs-2", {"--bom"}, "a"), bytes({0xFF, 0xFE, 'a', 0}));
  EXPECT_EQ(converted("utf8", "ucs-4", {"--bom"}, "a"), bytes({0xFF, 0xFE, 0, 0, 'a', 0, 0, 0}));
  EXPECT_EQ(converted("utf8", "sjis", {"--bom"}, "a"), "a");
}

TEST_F(ConvertOptionsTest, bom_marks_empty_output_too) {
  EXPECT_EQ(converted("sjis", "utf8", {"--bom"}, ""), "\xEF\xBB\xBF");
  EXPECT_EQ(converted("sjis", "utf-16be", {"--bom"}, ""), bytes({0xFE, 0xFF}));
  EXPECT_EQ(converted("utf8", "utf-32", {"--bom"}, "\xEF\xBB\xBF"), bytes({0xFF, 0xFE, 0, 0}));
}

TEST_F(ConvertOptionsTest, bom_marks_a_stream_of_several_texts_once) {
  write("a", "a");
  write("b", "b");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "--bom", "a", "b"}).out,
            "\xEF\xBB\xBF"
            "ab");
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "--bom", "--in-place", "a", "b"}).status,
            0);
  EXPECT_EQ(read("a"),
            "\xEF\xBB\xBF"
            "a");
  EXPECT_EQ(read("b"),
            "\xEF\xBB\xBF"
            "b");
}

TEST_F(ConvertOptionsTest, byte_order_is_that_of_the_output) {
  EXPECT_EQ(converted("utf8", "utf-16", {}, "a"), bytes({'a', 0}));
  EXPECT_EQ(converted("utf8", "utf-16", {"--byte-order", "little"}, "a"), bytes({'a', 0}));
  EXPECT_EQ(converted("utf8", "utf-16", {"--byte-order", "big"}, "a"), bytes({0, 'a'}));
  EXPECT_EQ(converted("utf8", "ucs-4", {"--byte-order", "big"}, "a"), bytes({0, 0, 0, 'a'}));
  EXPECT_EQ(converted("utf8", "utf-16be", {}, "a"), bytes({0, 'a'}));
  EXPECT_EQ(converted("utf-16", "utf-16", {"--byte-order", "big"}, bytes({'a', 0})),
            bytes({0, 'a'}));
}

TEST_F(ConvertOptionsTest, byte_order_changes_nothing_where_there_is_none) {
  for (const std::string order : {"little", "big"}) {
    EXPECT_EQ(converted("utf8", "sjis", {"--byte-order", order}, "あ"), bytes({0x82, 0xA0}));
    EXPECT_EQ(converted("utf8", "utf8", {"--byte-order", order}, "あ"), "あ");
  }
}

TEST_F(ConvertOptionsTest, invalid_skip_leaves_invalid_bytes_out) {
  EXPECT_EQ(converted("utf8", "utf8", {"--invalid", "skip"},
                      "a\xFF"
                      "b\xE3\x81"
                      "c\xED\xA0\x80"
                      "d"),
            "abcd");
  EXPECT_EQ(converted("sjis", "utf8", {"--invalid", "skip"}, bytes({'a', 0x81, 0x20, 'b', 0xFF})),
            "a b");
  EXPECT_EQ(converted("utf-16be", "utf8", {"--invalid", "skip"},
                      bytes({0, 'a', 0xDC, 0, 0, 'b', 0xD8, 0, 0, 'c', 0})),
            "abc");
  EXPECT_EQ(converted("ucs-4be", "utf8", {"--invalid", "skip"},
                      bytes({0, 0, 0, 'a', 0, 0x11, 0, 0, 0, 0, 0, 'b', 0, 0})),
            "ab");
}

TEST_F(ConvertOptionsTest, invalid_skip_leaves_a_character_out_that_the_end_cuts) {
  EXPECT_EQ(converted("sjis", "utf8", {"--invalid", "skip"}, bytes({'a', 0x82, 0xA0, 0x82})),
            "aあ");
  EXPECT_EQ(converted("utf8", "sjis", {"--invalid", "skip"}, "a\xE3\x81"), "a");
}

TEST_F(ConvertOptionsTest, invalid_fail_is_the_default) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8", "--invalid", "fail"}, "\xFF").status, 1);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "utf8"}, "\xFF").status, 1);
}

TEST_F(ConvertOptionsTest, unmappable_replace_writes_a_replacement) {
  EXPECT_EQ(converted("utf8", "sjis", {"--unmappable", "replace"}, "a😀é"),
            bytes({'a', 0x81, 0xAC, '?'}));
  EXPECT_EQ(converted("utf8", "sjis", {"--unmappable", "replace", "--replacement", "*"}, "a😀é"),
            "a**");
  EXPECT_EQ(converted("utf8", "sjis", {"--unmappable", "replace", "--replacement", "×"}, "a😀é"),
            bytes({'a', 0x81, 0x7E, 0x81, 0x7E}));
  EXPECT_EQ(converted("utf8", "sjis", {"--unmappable", "replace", "--replacement", "外"}, "😀é"),
            bytes({0x8A, 0x4F, 0x8A, 0x4F}));
  // Which have no wide characters.
  for (const char* narrow : {"latin1", "koi8-r", "windows-1252", "tis-620"})
    EXPECT_EQ(converted("utf8", narrow, {"--unmappable", "replace"}, "a😀あb"), "a??b") << narrow;
}

TEST_F(ConvertOptionsTest, replacement_alone_implies_nothing) {
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--replacement", "*"}, "😀").status, 1);
}

TEST_F(ConvertOptionsTest, references_write_what_windows_31j_lacks_as_numbers) {
  const auto utf16 = [](const std::string& ascii) {
    std::string text;
    for (const char c : ascii) text += bytes({c, 0});
    return text;
  };
  EXPECT_EQ(converted("utf8", "ucs-2", {"--references", "hex"}, "a😀é"), utf16("a&#x1F600;&#xE9;"));
  EXPECT_EQ(converted("utf8", "ucs-2le", {"--references", "decimal"}, "a😀é"),
            utf16("a&#128512;&#233;"));
  EXPECT_EQ(converted("utf8", "ucs-2", {"--references", "hex"}, "あ"), bytes({0x42, 0x30}));
}

TEST_F(ConvertOptionsTest, language_is_announced_in_front_of_the_text) {
  EXPECT_EQ(converted("utf8", "utf8", {"--language", "ja"}, "あ"),
            "\U000E0001\U000E006A\U000E0061あ");
  EXPECT_EQ(converted("utf8", "utf-16be", {"--language", "ja", "--bom"}, "a").substr(0, 6),
            bytes({0xFE, 0xFF, 0xDB, 0x40, 0xDC, 0x01}));
  EXPECT_EQ(converted("utf8", "sjis", {"--language", "ja"}, "a"), "a");
  EXPECT_EQ(converted("utf8", "utf8", {"--language", "ja"}, ""), "");
}

}  // namespace
}  // namespace ksv_cli_tests
