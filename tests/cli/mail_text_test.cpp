// UTF-7 and HZ-GB-2312 as sources.

#include <gtest/gtest.h>

#include <random>

#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

const Adjustment kSkipping = [](ksv_cli::ConversionSettings& settings) {
  settings.skipInvalid = true;
};

Conversion fromUtf7(const std::string& text, size_t block = 16,
                    const Adjustment& adjust = nullptr) {
  return converting().inPieces("UTF-7", "UTF-8", text, block, adjust);
}

Conversion fromHz(const std::string& text, size_t block = 16, const Adjustment& adjust = nullptr) {
  return converting().inPieces("HZ-GB-2312", "UTF-8", text, block, adjust);
}

std::string at(const std::string& reason, size_t offset) {
  return reason + " at byte offset " + std::to_string(offset);
}

// UTF-16 as a base64 run, without its hyphen.
std::string base64Run(const std::u16string& units) {
  static const std::string digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string run = "+";
  uint32_t bits = 0;
  int count = 0;
  for (const char16_t unit : units) {
    bits = bits << 16 | unit;
    for (count += 16; count >= 6; count -= 6) run += digits[bits >> (count - 6) & 0x3F];
  }
  if (count > 0) run += digits[bits << (6 - count) & 0x3F];
  return run;
}

struct TwoForms {
  std::string mail;
  std::string utf8;
};

// Runs of all lengths, with and without a hyphen, beside direct characters.
TwoForms randomUtf7(std::mt19937& random) {
  static const std::pair<std::u16string, std::string> characters[] = {
      {u"あ", "あ"}, {u"漢", "漢"}, {u"😀", "😀"}, {u"é", "é"}, {u"~", "~"}, {u"a", "a"}};
  static const std::string direct[] = {"a", "Z", " ", "\r\n", ".", "(", "}"};
  TwoForms text;
  for (int part = 0; part < 12; ++part) {
    std::u16string units;
    for (size_t i = random() % 9; i > 0; --i) {
      const auto& [unit, utf8] = characters[random() % std::size(characters)];
      units += unit;
      text.utf8 += utf8;
    }
    const bool hyphen = random() % 2 == 0;
    if (!units.empty()) text.mail += base64Run(units) + (hyphen ? "-" : " ");
    if (!units.empty() && !hyphen) text.utf8 += " ";
    for (size_t i = random() % 5; i > 0; --i) {
      const std::string& one = direct[random() % std::size(direct)];
      text.mail += one;
      text.utf8 += one;
    }
    text.mail += "+-";
    text.utf8 += "+";
  }
  return text;
}

TEST(Utf7Text, is_read_alike_in_pieces_of_any_size) {
  std::mt19937 random(19971);
  for (int round = 0; round < 200; ++round) {
    const TwoForms text = randomUtf7(random);
    for (const size_t block : {1u, 2u, 3u, 7u, 16u, 31u, 4096u})
      ASSERT_EQ(fromUtf7(text.mail, block), (Conversion{text.utf8, ""})) << text.mail;
  }
}

TEST(Utf7Text, goes_to_every_target) {
  const std::string text = "+ZeVnLIqe-A+AFw-\r\n";
  EXPECT_EQ(converting().inPieces("UTF-7", "Shift_JIS", text, 16).output,
            bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA, 'A', '\\', 13, 10}));
  EXPECT_EQ(converting().inPieces("UTF-7", "UTF-16BE", "+2D3eAA-", 16).output,
            bytes({0xD8, 0x3D, 0xDE, 0x00}));
  // A base and its mark in one code.
  EXPECT_EQ(converting().inPieces("UTF-7", "EUC-JIS-2004", "+MEswmg-", 16).output,
            bytes({0xA4, 0xF7}));
}

TEST(Utf7Text, may_begin_with_a_mark_that_is_left_out) {
  EXPECT_EQ(fromUtf7("+/v8-a").output, "a");
}

TEST(Utf7Text, of_nothing_is_nothing) { EXPECT_EQ(fromUtf7(""), (Conversion{"", ""})); }

struct BadUtf7 {
  const char* bad;
  size_t offset;  // of the first bad byte in it
  const char* output;
  const char* reason;
  const char* skipped;  // what --invalid skip makes of it, and of the "x" behind
};

const BadUtf7 kBadUtf7[] = {
    {"~", 0, "", "invalid UTF-7 (0x7E)", "x"},
    {"\\", 0, "", "invalid UTF-7 (0x5C)", "x"},
    {"\xA4", 0, "", "invalid UTF-7 (0xA4)", "x"},
    {"\x01", 0, "", "invalid UTF-7 (0x01)", "x"},
    {"+MEI~", 4, "あ", "invalid UTF-7 (0x7E)", "あx"},
    {"+AEF-", 3, "A", "invalid UTF-7 (0x46)", "Ax"},       // two bits left, one of them set
    {"+AEEA-", 4, "A", "invalid UTF-7 (0x41)", "Ax"},      // eight bits left
    {"+A-", 1, "", "invalid UTF-7 (0x41)", "x"},           // six bits left
    {"+MELYPQ-", 3, "あ", "invalid UTF-7 (0x4C)", "あx"},  // a high surrogate alone
    {"+2D0AQQ-", 1, "", "invalid UTF-7 (0x32)", "x"},      // one in front of an A
    {"+MELeAA-", 3, "あ", "invalid UTF-7 (0x4C)", "あx"},  // a low surrogate alone
};

TEST(Utf7Text, that_is_bad_is_named_at_every_place_around_a_border) {
  for (const BadUtf7& row : kBadUtf7)
    for (size_t lead = 0; lead < 40; ++lead)
      for (const std::string fill : {"x", "+MEI-"}) {
        std::string before;
        for (size_t i = 0; i < lead; ++i) before += fill;
        const std::string good = fromUtf7(before, 4096).output;
        const std::string text = before + row.bad + "x";
        ASSERT_EQ(fromUtf7(text),
                  (Conversion{good + row.output, at(row.reason, before.size() + row.offset)}))
            << row.bad;
        ASSERT_EQ(fromUtf7(text, 16, kSkipping), (Conversion{good + row.skipped, ""})) << row.bad;
      }
}

TEST(Utf7Text, that_the_end_cuts_is_named_at_its_last_character) {
  const std::pair<std::string, size_t> cut[] = {
      {"+", 0}, {"+M", 1}, {"+ME", 1}, {"+MEIw", 4}, {"+MEIwR", 4}, {"+2D0", 1}, {"+2D3eA", 1}};
  for (const auto& [text, offset] : cut)
    EXPECT_EQ(fromUtf7("abc" + text).failure,
              at("the text ends inside a UTF-7 character", 3 + offset))
        << text;
  EXPECT_EQ(fromUtf7("abc+MEI"), (Conversion{"abcあ", ""}));
}

TEST(Utf7Text, names_a_character_that_the_target_lacks_at_its_first_digit) {
  for (size_t lead = 0; lead < 50; ++lead) {
    const std::string before(lead, 'x');
    EXPECT_EQ(
        converting().inPieces("UTF-7", "Shift_JIS", before + "+MEIA6TBE-", 16),
        (Conversion{before + bytes({0x82, 0xA0}), at("U+00E9 is not in Shift_JIS", lead + 3)}));
  }
}

TEST(Utf7Text, with_a_run_that_does_not_end_is_a_failure) {
  std::string text = "abc+";
  for (int i = 0; i < 300000; ++i) text += "MEIwRDBG";
  const Conversion result = converting().inPieces("UTF-7", "UTF-8", text, 64 * 1024);
  EXPECT_EQ(result, (Conversion{"abc", at("a base64 run of more than 1048576 bytes begins", 3)}));
}

TEST(Utf7Text, may_have_runs_of_many_pages) {
  std::string text = "+";
  std::string expected;
  for (int i = 0; i < 100000; ++i) {
    text += "MEIwRDBG";
    expected += "あいう";
  }
  EXPECT_EQ(fromUtf7(text + "-", 64 * 1024), (Conversion{expected, ""}));
}

// HZ from a text in GBK, with the escapes and the continued lines that it may have.
TwoForms randomHz(std::mt19937& random) {
  TwoForms text;
  static const char* const gb[] = {"VP", "ND", "0!", "w~", "!!"};
  static const char* const utf8[] = {"中", "文", "啊", "齄", "\u3000"};
  for (int part = 0; part < 10; ++part) {
    text.mail += "~{";
    for (size_t i = random() % 7; i > 0; --i) {
      const size_t which = random() % std::size(gb);
      text.mail += gb[which];
      text.utf8 += utf8[which];
    }
    text.mail += "~}";
    static const TwoForms between[] = {{"", ""},       {"~~", "~"},  {"~\n", ""},     {"~\r\n", ""},
                                       {"a\n", "a\n"}, {"{}", "{}"}, {"~~~~{", "~~{"}};
    for (size_t i = random() % 3; i > 0; --i) {
      const TwoForms& one = between[random() % std::size(between)];
      text.mail += one.mail;
      text.utf8 += one.utf8;
    }
  }
  return text;
}

TEST(HzText, is_read_alike_in_pieces_of_any_size) {
  std::mt19937 random(1843);
  for (int round = 0; round < 200; ++round) {
    const TwoForms text = randomHz(random);
    for (const size_t block : {1u, 2u, 3u, 7u, 16u, 31u, 4096u})
      ASSERT_EQ(fromHz(text.mail, block), (Conversion{text.utf8, ""})) << text.mail;
  }
}

TEST(HzText, loses_nothing_behind_a_continued_line) {
  EXPECT_EQ(fromHz("a~\nbc").output, "abc");
  EXPECT_EQ(fromHz("a~\r\nbc~~~\n~~{").output, "abc~~{");
}

TEST(HzText, may_stay_in_gb_mode_to_its_end) {
  EXPECT_EQ(fromHz("~{VPND"), (Conversion{"中文", ""}));
  std::string text = "~{";
  std::string expected;
  for (int i = 0; i < 100000; ++i) {
    text += "VPND";
    expected += "中文";
  }
  EXPECT_EQ(fromHz(text, 64 * 1024), (Conversion{expected, ""}));
}

struct BadHz {
  std::string bad;
  size_t offset;
  const char* reason;
  const char* output;
  const char* skipped;
};

TEST(HzText, that_is_bad_is_named_at_every_place_around_a_border) {
  const BadHz rows[] = {
      {"\xD6", 0, "invalid HZ-GB-2312 (0xD6)", "", "x"},
      {"~!", 0, "invalid HZ-GB-2312 (0x7E)", "", "!x"},
      {"~}", 0, "invalid HZ-GB-2312 (0x7E)", "", "}x"},
      {"~{VP~A~}", 4, "invalid HZ-GB-2312 (0x7E)", "中", "中x"},
      {"~{VP}!~}", 4, "invalid HZ-GB-2312 (0x7D)", "中", "中x"},
      {"~{VP N~}", 4, "invalid HZ-GB-2312 (0x20)", "中", nullptr},
      {"~{VP\n", 4, "invalid HZ-GB-2312 (0x0A)", "中", "中\nx"},
      {"~{VP\r", 4, "invalid HZ-GB-2312 (0x0D)", "中", "中\rx"},
      {"~{VP\xD6~}", 4, "invalid HZ-GB-2312 (0xD6)", "中", "中x"},
      {"~{VPW~ND~}", 4, "invalid HZ-GB-2312 (0x57)", "中", nullptr},  // no character there
      {bytes({0}), 0, "invalid HZ-GB-2312 (0x00)", "", "x"},
  };
  for (const BadHz& row : rows)
    for (size_t lead = 0; lead < 40; ++lead)
      for (const std::string fill : {"x", "~{ND~}"}) {
        std::string before;
        for (size_t i = 0; i < lead; ++i) before += fill;
        const std::string good = fromHz(before, 4096).output;
        const std::string text = before + row.bad + "x";
        ASSERT_EQ(fromHz(text),
                  (Conversion{good + row.output, at(row.reason, before.size() + row.offset)}))
            << row.bad;
        if (row.skipped != nullptr) {
          ASSERT_EQ(fromHz(text, 16, kSkipping), (Conversion{good + row.skipped, ""})) << row.bad;
        }
      }
}

TEST(HzText, that_the_end_cuts_is_named_at_its_last_character) {
  EXPECT_EQ(fromHz("ab~").failure, at("the text ends inside a HZ-GB-2312 character", 2));
  EXPECT_EQ(fromHz("ab~{VPN"),
            (Conversion{"ab中", at("the text ends inside a HZ-GB-2312 character", 6)}));
}

TEST(HzText, names_a_character_that_the_target_lacks) {
  for (size_t lead = 0; lead < 50; ++lead) {
    const std::string before(lead, 'x');
    EXPECT_EQ(converting().inPieces("HZ-GB-2312", "ISO-8859-1", before + "~~~{VPND~}", 16),
              (Conversion{before + "~", at("U+4E2D is not in ISO-8859-1", lead + 4)}));
  }
}

class MailCommand : public CommandTest {};

TEST_F(MailCommand, converts_files_and_names_them) {
  write("a", "+ZeVnLIqe-\n");
  write("b", "ok ~ bad\n");
  const Outcome outcome = ksv({"convert", "-f", "utf-7", "-t", "UTF-8", "a", "b"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "日本語\nok ");
  EXPECT_EQ(outcome.err, "ksv: b: invalid UTF-7 (0x7E) at byte offset 3\n");
  EXPECT_EQ(ksv({"convert", "-f", "hz", "-t", "gbk"}, "~{VPND~}\n").out,
            bytes({0xD6, 0xD0, 0xCE, 0xC4, 10}));
}

}  // namespace
}  // namespace ksv_cli_tests
