// Where --invalid skip goes on, and what it says it skipped.

#include "kit/text/resynchronisation.h"

#include <string>

#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

const Adjustment kSkipping = [](ksv_cli::ConversionSettings& settings) {
  settings.skipInvalid = true;
};

// What is left of the text, whatever the pieces it is read in.
std::string skipped(const std::string& charset, const std::string& text) {
  const Conversion whole = converting().inPieces(charset, "UTF-8", text, 4096, kSkipping);
  EXPECT_EQ(whole.failure, "");
  for (const size_t block : {1u, 2u, 3u, 5u, 16u})
    EXPECT_EQ(converting().inPieces(charset, "UTF-8", text, block, kSkipping), whole) << block;
  return whole.output;
}

size_t badLength(const std::string& charset, const std::string& text, bool atEnd = true) {
  const auto choice = ksv_kit::CharsetNames(converting().charsets()).findSource(charset);
  return ksv_kit::badSequenceLength(*choice, reinterpret_cast<const uint8_t*>(text.data()),
                                    text.size(), atEnd);
}

TEST(BadSequence, leaves_an_ASCII_byte_that_is_no_trail) {
  EXPECT_EQ(badLength("Shift_JIS", "\x82\n"), 1u);
  EXPECT_EQ(badLength("WINDOWS31J", "\x82 "), 1u);
  EXPECT_EQ(badLength("EUC-JP",
                      "\xA4"
                      "A"),
            1u);
  EXPECT_EQ(badLength("EUC-JP",
                      "\x8F\xA2"
                      "A"),
            2u);
  EXPECT_EQ(badLength("EUC-JP",
                      "\x8E"
                      "A"),
            1u);
  EXPECT_EQ(badLength("ChineseGBK",
                      "\xD6"
                      "0"),
            1u);
  EXPECT_EQ(badLength("GB18030",
                      "\x81"
                      "0\x81"
                      "a"),
            1u);
  EXPECT_EQ(badLength("KoreanKSC", "\xB0["), 1u);
  EXPECT_EQ(badLength("ISO-8859-7", "\xD2z"), 1u);
}

TEST(BadSequence, knows_the_pairs_of_Johab_and_of_the_Macintosh) {
  EXPECT_EQ(badLength("Johab", "\x84\x31"), 2u);
  EXPECT_EQ(badLength("Johab", "\x84\x30"), 1u);
  EXPECT_EQ(badLength("Johab", "\xD4\x41"), 1u);
  EXPECT_EQ(badLength("x-mac-japanese", "\x86\x45"), 2u);
  EXPECT_EQ(badLength("x-mac-chinesetrad", "\xA1\x40"), 2u);
  EXPECT_EQ(badLength("x-mac-chinesetrad", "\xFD\x40"), 1u);
  EXPECT_EQ(badLength("x-mac-chinesesimp", "\xA1\x40"), 1u);
}

TEST(BadSequence, takes_four_bytes_behind_8E_where_that_leads_a_plane) {
  EXPECT_EQ(badLength("EUC-TW", "\x8E\xB0\xA1\xA1"), 4u);
  EXPECT_EQ(badLength("EUC-TW",
                      "\x8E\xA2\xA1"
                      "A"),
            3u);
  EXPECT_EQ(badLength("EUC-TW",
                      "\x8E"
                      "A"),
            1u);
  EXPECT_EQ(badLength("EUC-TW", "\x8E\xA2\xA1", false), 0u);
  EXPECT_EQ(badLength("EUC-TW", "\x8E\xA2\xA1", true), 3u);
  EXPECT_EQ(badLength("EUC-TW", "\xA9\xFF"), 2u);
}

TEST(BadSequence, takes_a_pair_that_the_charset_lacks_as_a_whole) {
  EXPECT_EQ(badLength("Shift_JIS", "\x87@"), 2u);
  EXPECT_EQ(badLength("ChineseBIG5", "\xC8@"), 2u);
  EXPECT_EQ(badLength("KoreanKSC",
                      "\xC9"
                      "A"),
            2u);
  EXPECT_EQ(badLength("EUC-JP", "\xA9\xA1"), 2u);
  EXPECT_EQ(badLength("EUC-JP", "\x8F\xA1\xA1"), 3u);
  EXPECT_EQ(badLength("GB18030", "\xFE\x39\xFE\x39"), 4u);
  EXPECT_EQ(badLength("EUC-JP-FIX", "\x80\x41"), 2u);
}

TEST(BadSequence, of_UTF_8_takes_no_trails_of_a_whole_character) {
  EXPECT_EQ(badLength("UTF-8", "a\x80"), 1u);
  EXPECT_EQ(badLength("UTF-8", "\x80\x80"), 2u);
}

TEST(BadSequence, waits_for_the_bytes_that_decide) {
  EXPECT_EQ(badLength("Shift_JIS", "\x87", false), 0u);
  EXPECT_EQ(badLength("EUC-JP", "\x8F\xA2", false), 0u);
  EXPECT_EQ(badLength("GB18030",
                      "\x81"
                      "0",
                      false),
            0u);
  EXPECT_EQ(badLength("GB18030",
                      "\x81"
                      "0\x81",
                      false),
            0u);
  EXPECT_EQ(badLength("Shift_JIS", "\x87"), 1u);
  EXPECT_EQ(badLength("EUC-JP", "\x8F\xA2"), 2u);
  EXPECT_EQ(badLength("Shift_JIS", "\xA0", false), 1u);
}

TEST(SkippedText, goes_on_as_browsers_do) {
  EXPECT_EQ(skipped("Shift_JIS", "a\x82\n\x82\xA0"), "a\nあ");
  EXPECT_EQ(skipped("Shift_JIS", "a\x87@b"), "ab");
  EXPECT_EQ(skipped("Shift_JIS", "\x82<b>\xA0\x82\xA0"), "<b>あ");
  EXPECT_EQ(skipped("EUC-JP", "\xA4<\xA4\xA2\xA9\xA1>"), "<あ>");
  EXPECT_EQ(skipped("EUC-JP", "\xB9\x8F\xB0\xA1"), "亜");
  EXPECT_EQ(skipped("ChineseGBK", "\xD6\"\xD6\xD0\xFF"), "\"中");
  EXPECT_EQ(skipped("GB18030", "\x81\x30\xD6\xD0!"), "0中!");
  EXPECT_EQ(skipped("KoreanKSC", "\xB0[\xC7\xD1"), "[한");
  EXPECT_EQ(skipped("ChineseBIG5", "\xA4\"\xA4\xA4"), "\"中");
}

TEST(SkippedText, that_ends_inside_a_character_keeps_its_ASCII) {
  EXPECT_EQ(skipped("Shift_JIS", "ab\x82"), "ab");
  EXPECT_EQ(skipped("EUC-JP", "ab\x8F\xA2"), "ab");
  EXPECT_EQ(skipped("GB18030",
                    "ab\x81"
                    "0"),
            "ab0");
}

class ConvertSkipping : public CommandTest {
 protected:
  Outcome skip(const std::vector<std::string>& more, const std::string& input) {
    std::vector<std::string> arguments = {"convert", "--invalid", "skip"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return ksv(arguments, input);
  }
  static std::string line(const std::string& counts) {
    return "ksv: standard input: " + counts + "\n";
  }
};

TEST_F(ConvertSkipping, says_what_was_skipped_and_replaced) {
  const Outcome outcome =
      skip({"-f", "Shift_JIS", "-t", "ISO-8859-1", "--unmappable", "replace", "--replacement", "?"},
           "\x82\xA0\xA0z\x87@\x82\xA2");
  EXPECT_EQ(outcome.out, "?z?");
  EXPECT_EQ(outcome.err, line("3 invalid bytes skipped, 2 characters replaced"));
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ConvertSkipping, says_nothing_where_nothing_was) {
  const Outcome outcome = skip({"-f", "Shift_JIS", "-t", "UTF-8", "--strict"}, "\x82\xA0");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ConvertSkipping, fails_for_it_under_strict_with_the_result_in_place) {
  write("a", "x\xFFy");
  const Outcome outcome = ksv(
      {"convert", "-f", "UTF-8", "-t", "UTF-8", "--invalid", "skip", "--strict", "-o", "out", "a"});
  EXPECT_EQ(outcome.err, "ksv: a: 1 invalid byte skipped, 0 characters replaced\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(read("out"), "xy");
}

TEST_F(ConvertSkipping, counts_bytes_of_every_form) {
  const auto expect = [this](const std::string& charset, const std::string& text,
                             const std::string& out, const std::string& counts) {
    for (const char* block : {"16", "17", "4096"}) {
      const Outcome outcome = skip({"-f", charset, "-t", "UTF-8", "--block-size", block}, text);
      EXPECT_EQ(outcome.out, out) << charset;
      EXPECT_EQ(outcome.err, line(counts + ", 0 characters replaced")) << charset;
    }
  };
  expect("UTF-8", "a\xE3\x81z\xC0\x80", "az", "4 invalid bytes skipped");
  expect("UTF-16BE", bytes({0, 'a', 0xD8, 0, 0, 'b', 0xDC}), "ab", "3 invalid bytes skipped");
  expect("ISO-2022-JP", "a\x1B.Ab\x1B$B$\"$\x1B(B\xFF", "abあ", "5 invalid bytes skipped");
  expect("ISO-2022-JP", "\x1B$B$\")!\x1B(B", "あ", "2 invalid bytes skipped");
  expect("CP50220", "\x1B$B$\"))-!\x1B(B", "あ①", "2 invalid bytes skipped");
  expect("UTF-7",
         "a\x80"
         "b",
         "ab", "1 invalid byte skipped");
  expect("HZ-GB-2312", "a~{VP~}~x", "a中x", "1 invalid byte skipped");
  expect("EUC-JP", std::string(100, '\xFF') + "a", "a", "100 invalid bytes skipped");
}

TEST_F(ConvertSkipping, counts_what_goes_through_UTF_8) {
  const Outcome outcome = skip({"-f", "ISO-2022-JP", "-t", "Shift_JIS", "--unmappable", "replace"},
                               "\x1B(I1\x1B$B)!$\"\x1B(B\x80");
  EXPECT_EQ(outcome.out, "\xB1\x82\xA0");
  EXPECT_EQ(outcome.err, line("3 invalid bytes skipped, 0 characters replaced"));
}

TEST_F(ConvertSkipping, counts_each_file_of_several_at_once) {
  std::vector<std::string> arguments = {"convert",   "-f",        "UTF-8", "-t",
                                        "Shift_JIS", "--invalid", "skip",  "--output-dir",
                                        "out",       "-j",        "4"};
  std::string expected;
  for (int i = 0; i < 8; ++i) {
    const std::string name = "f" + std::to_string(i);
    write(name, "あ" + std::string(static_cast<size_t>(i), '\xFF') + "い");
    arguments.push_back(name);
  }
  const Outcome outcome = ksv(arguments);
  EXPECT_EQ(outcome.status, 0);
  for (int i = 2; i < 8; ++i)
    EXPECT_NE(outcome.err.find("ksv: f" + std::to_string(i) + ": " + std::to_string(i) +
                               " invalid bytes skipped, 0 characters replaced\n"),
              std::string::npos);
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 7);
}

// Thousands in one piece, so that each is found where the last ended.
TEST_F(ConvertSkipping, replaces_as_many_as_there_are) {
  std::string text;
  std::string expected;
  for (int i = 0; i < 20000; ++i) {
    text += i % 3 == 0 ? "a" : "é";
    expected += i % 3 == 0 ? "a" : "?";
  }
  const Outcome outcome = ksv(
      {"convert", "-f", "UTF-8", "-t", "KOI8-R", "--unmappable", "replace", "--replacement", "?"},
      text);
  EXPECT_TRUE(outcome.out == expected);
  EXPECT_EQ(outcome.err, line("0 invalid bytes skipped, 13333 characters replaced"));
}

}  // namespace
}  // namespace ksv_cli_tests
