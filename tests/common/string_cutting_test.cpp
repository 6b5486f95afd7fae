#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "ksv_cut.h"
#include "tests/common/slow_cutting.h"

namespace {

using namespace std::string_literals;

// Cuts text whose terminator of four bytes is the end of its memory.
uint32_t cut(const std::string& text, int32_t limit, const char* charset) {
  std::vector<char> buffer(text.begin(), text.end());
  buffer.resize(text.size() + 4);
  return CutStr(buffer.data(), static_cast<int32_t>(text.size()), limit, charset);
}

// Cuts the first length bytes of text, behind which it goes on.
uint32_t cutBefore(const std::string& text, int32_t length, const char* charset) {
  std::vector<char> buffer(text.begin(), text.end());
  buffer.resize(text.size() + 4);
  return CutStr(buffer.data(), length, length, charset);
}

TEST(CutStr, of_an_unknown_charset_gives_the_length_whatever_the_limit) {
  for (const char* name : {"", "utf-8", "UTF8", "shift_jis", "Latin", "ISO-8859", "SJIS", "EUC"}) {
    EXPECT_EQ(cut("abc\x82\xA0", 2, name), 5u) << name;
    EXPECT_EQ(cut("abc", -7, name), 3u) << name;
  }
  EXPECT_EQ(cut("abc", 1, nullptr), 3u);
  EXPECT_EQ(CutStr("abc", -3, 1, "unknown"), 0xFFFFFFFDu);
}

TEST(CutStr, of_nothing_is_nothing) {
  for (const char* name : {"Shift_JIS", "EUC-JP", "UTF-8", "UTF-16", "ISO-10646-UCS-4",
                           "ISO-8859-1", "ISO-2022-JP", "ISO-2022-JP-3", "GB18030", "ChineseGBK"}) {
    EXPECT_EQ(cut("abcd", 0, name), 0u) << name;
    EXPECT_EQ(cut("abcd", -1, name), 0u) << name;
    EXPECT_EQ(cut("", 5, name), 0u) << name;
    EXPECT_EQ(CutStr("abcd", -1, 4, name), 0u) << name;
    EXPECT_EQ(CutStr(nullptr, 4, 4, name), 0u) << name;
  }
}

TEST(CutStr, knows_a_charset_by_the_beginning_of_its_name) {
  // 8F A1 A1 is taken as a pair and a byte by EUC-JP, and as one by EUC-JISX0213.
  EXPECT_EQ(cut("\x8F\xA1\xA1", 2, "EUC-JP"), 2u);
  EXPECT_EQ(cut("\x8F\xA1\xA1", 2, "EUC-JP-MS"), 2u);
  EXPECT_EQ(cut("\x8F\xA1\xA1", 2, "EUC-JISX0213 and more"), 0u);
  EXPECT_EQ(cut("\x82\xA0", 1, "Shift_JIS-2004"), 0u);
  EXPECT_EQ(cut("\x82\xA0", 1, "Shift_JISX0213"), 0u);
  EXPECT_EQ(cut("\x82\xA0", 1, "WINDOWS31J"), 0u);
  EXPECT_EQ(cut("ab", 1, "ISO-10646-UCS-2"), 0u);
  EXPECT_EQ(cut("abc", 3, "UTF-16LE"), 2u);
  EXPECT_EQ(cut("abcdef", 6, "ISO-10646-UCS-4"), 4u);
  EXPECT_EQ(cut("ab\r\n", 3, "ISO-8859-15"), 2u);
  EXPECT_EQ(cut("abc", 3, "ISO-2022-JP-2004"), 3u) << "a plain beginning is fine";
  EXPECT_EQ(cut("abc", 3, "ISO-2022-JP-3"), 0u);
}

TEST(CutStr, takes_fixed_width_EUC_for_EUC) {
  EXPECT_EQ(cut("\xE0", 1, "EUC-JP-FIX"), 1u) << "counts as one byte";
  EXPECT_EQ(cut("\xE0\x41", 1, "EUC-JP-FIX"), 1u);
  EXPECT_EQ(cut("\xB0\x21", 1, "EUC-JP-FIX"), 0u);
}

TEST(CutStr, never_splits_a_pair_of_ShiftJis) {
  EXPECT_EQ(cut("\x41\x82\xA0", 2, "Shift_JIS"), 1u);
  EXPECT_EQ(cut("\x41\x82\xA0", 3, "Shift_JIS"), 3u);
  for (const char* lead : {"\x81", "\x9F", "\xE0", "\xFC", "\xFF"}) {
    EXPECT_EQ(cut(lead + "\x40"s, 1, "Shift_JIS"), 0u);
  }
  for (const char* single : {"\x80", "\xA0", "\xA1", "\xDF"}) {
    EXPECT_EQ(cut(single + "\x40"s, 1, "Shift_JIS"), 1u);
  }
}

TEST(CutStr, takes_A1_to_DF_and_the_single_shifts_for_leads_of_EucJp) {
  for (const char* lead : {"\xA1", "\xDF", "\x8E", "\x8F"}) {
    EXPECT_EQ(cut(lead + "\xA1"s, 1, "EUC-JP"), 0u);
  }
  for (const char* single : {"\x80", "\x90", "\xA0", "\xE0", "\xFF"}) {
    EXPECT_EQ(cut(single + "\xA1"s, 1, "EUC-JP"), 1u);
  }
}

TEST(CutStr, takes_two_of_three_bytes_behind_8F_in_EucJisX0213) {
  EXPECT_EQ(cut("\x8F\xA1\x41", 3, "EUC-JISX0213"), 3u);
  EXPECT_EQ(cut("\x8F\xA1\xA1\xA1", 4, "EUC-JISX0213"), 4u) << "8F A1, A1 A1";
  EXPECT_EQ(cut("\x8F\xA1\xA1", 3, "EUC-JISX0213"), 2u);
  EXPECT_EQ(cut("\x8E\xA1", 1, "EUC-JISX0213"), 1u) << "8E is no lead here";
}

TEST(CutStr, takes_every_high_byte_for_a_lead_of_double_byte_charsets) {
  for (const char* name : {"ChineseGBK", "ChineseBIG5", "KoreanKSC"}) {
    EXPECT_EQ(cut("\x81\x40", 1, name), 0u);
    EXPECT_EQ(cut("\xFF\x40", 1, name), 0u);
    EXPECT_EQ(cut("\x80\x40", 1, name), 1u);
    EXPECT_EQ(cut("a\xB0\xA1", 3, name), 3u);
  }
}

TEST(CutStr, keeps_four_bytes_of_Gb18030_together_where_it_sees_them) {
  EXPECT_EQ(cut("\x81\x30\x81\x30", 4, "GB18030"), 4u);
  EXPECT_EQ(cut("a\x81\x30\x81\x30", 5, "GB18030"), 5u);
  EXPECT_EQ(cut("\xB0\xA1xyz", 4, "GB18030"), 4u);
  EXPECT_EQ(cut("\x81\x30\x81x", 4, "GB18030"), 4u) << "no four bytes: a pair, then 81 x";
  // Near the end a pair needs a trail byte; a lead without one is a byte.
  EXPECT_EQ(cut("\x81\x30\x81\x30", 3, "GB18030"), 2u) << "81, 30, and a lead alone";
  EXPECT_EQ(cut("\x81\x40", 2, "GB18030"), 2u);
  EXPECT_EQ(cut("\x81\x7F", 2, "GB18030"), 2u);
  EXPECT_EQ(cut("\x81", 1, "GB18030"), 0u);
  EXPECT_EQ(cut("\xFF\x80", 2, "GB18030"), 2u);
}

TEST(CutStr, measures_Utf8_by_lead_bytes_of_up_to_six) {
  EXPECT_EQ(cut("\xE3\x81\x82\x41", 3, "UTF-8"), 3u);
  EXPECT_EQ(cut("\xE3\x81\x82\x41", 2, "UTF-8"), 0u);
  EXPECT_EQ(cut("\xC3\xA9", 1, "UTF-8"), 0u);
  EXPECT_EQ(cut("\xF0\x9F\x98\x80", 3, "UTF-8"), 0u);
  EXPECT_EQ(cut("\xF8zzzz", 4, "UTF-8"), 0u);
  EXPECT_EQ(cut("\xF8zzzz", 5, "UTF-8"), 5u);
  EXPECT_EQ(cut("\xFDzzzzz", 5, "UTF-8"), 0u);
  EXPECT_EQ(cut("\xFDzzzzz", 6, "UTF-8"), 6u);
  EXPECT_EQ(cut("\xFE\xFF\x80", 3, "UTF-8"), 3u) << "single bytes";
}

TEST(CutStr, measures_every_lead_byte_of_Utf8) {
  struct Leads {
    int first, last;
    uint32_t length;
  };
  constexpr Leads kLeads[] = {{0x01, 0xBF, 1}, {0xC0, 0xDF, 2}, {0xE0, 0xEF, 3}, {0xF0, 0xF7, 4},
                              {0xF8, 0xFB, 5}, {0xFC, 0xFD, 6}, {0xFE, 0xFF, 1}};
  for (const Leads& leads : kLeads) {
    for (int lead = leads.first; lead <= leads.last; ++lead) {
      if (lead == '\r') continue;
      const std::string text = static_cast<char>(lead) + std::string(5, 'x');
      for (uint32_t limit = 1; limit < leads.length; ++limit)
        EXPECT_EQ(cut(text, static_cast<int32_t>(limit), "UTF-8"), 0u) << lead;
      EXPECT_EQ(cut(text, static_cast<int32_t>(leads.length), "UTF-8"), leads.length) << lead;
    }
  }
}

TEST(CutStr, rounds_down_to_whole_units) {
  EXPECT_EQ(cut("a\0b\0"s, 3, "UTF-16"), 2u);
  EXPECT_EQ(cut("a\0"s, 1, "UTF-16"), 0u);
  EXPECT_EQ(cut("\x3D\xD8\x00\xDE"s, 2, "UTF-16"), 2u) << "a surrogate pair is cut";
  EXPECT_EQ(cut("a\0\0\0b\0\0\0"s, 7, "ISO-10646-UCS-4"), 4u);
  EXPECT_EQ(cut("a\0\0"s, 3, "ISO-10646-UCS-4"), 0u);
}

TEST(CutStr, looks_at_nothing_before_the_text) {
  const std::string text = "\r\r\r\r\n\n\n\n";
  for (int32_t length = 0; length < 4; ++length) {
    EXPECT_EQ(CutStr(text.data() + 4, length, 9, "ISO-10646-UCS-4"), 0u);
    EXPECT_EQ(CutStr(text.data() + 4, length % 2, 9, "UTF-16"), 0u);
    EXPECT_EQ(CutStr(text.data() + 4, 0, 9, "UTF-8"), 0u);
  }
}

TEST(CutStr, keeps_CR_LF_together_in_every_form) {
  EXPECT_EQ(cut("ab\r\n", 3, "ISO-8859-1"), 2u);
  EXPECT_EQ(cut("ab\r\n", 4, "ISO-8859-1"), 4u);
  for (const char* name :
       {"Shift_JIS", "EUC-JP", "EUC-JISX0213", "ChineseGBK", "GB18030", "UTF-8", "ISO-2022-JP"}) {
    EXPECT_EQ(cut("ab\r\n", 3, name), 2u) << name;
    EXPECT_EQ(cut("ab\rc", 3, name), 3u) << name;
    EXPECT_EQ(cutBefore("ab\r\n", 3, name), 2u) << name << ", read behind the length";
  }
  for (const std::string& text : {"\x61\0\x0D\0\x0A\0"s, "\0\x61\0\x0D\0\x0A"s}) {
    EXPECT_EQ(cut(text, 4, "ISO-10646-UCS-2"), 2u);
    EXPECT_EQ(cut(text, 5, "UTF-16"), 2u);
    EXPECT_EQ(cut(text, 6, "UTF-16"), 6u);
  }
  for (const std::string& text : {"\x0D\0\0\0\x0A\0\0\0"s, "\0\0\0\x0D\0\0\0\x0A"s}) {
    EXPECT_EQ(cut(text, 4, "ISO-10646-UCS-4"), 0u);
    EXPECT_EQ(cut(text, 8, "ISO-10646-UCS-4"), 8u);
  }
  EXPECT_EQ(cut("\x0D\0\0\0\x0A\0\0\x41"s, 4, "ISO-10646-UCS-4"), 0u) << "whatever the last byte";
  EXPECT_EQ(cut("\x0D\0\0\0\x41\0\0\0"s, 4, "ISO-10646-UCS-4"), 4u);
}

TEST(CutStr, looks_at_the_CR_at_the_cut_only_when_the_walk_reaches_it) {
  EXPECT_EQ(cut("\r\x82\xA0", 2, "Shift_JIS"), 1u);
  EXPECT_EQ(cut("\x82\r\n", 2, "Shift_JIS"), 1u) << "a CR that is a trail byte is one, too";
}

TEST(CutStr, takes_escape_sequences_of_Iso2022Jp_with_the_character_behind_them) {
  EXPECT_EQ(cut("\x1B$B\x24\x22\x1B(Ba", 5, "ISO-2022-JP"), 5u);
  EXPECT_EQ(cut("\x1B$B\x24\x22\x1B(Ba", 4, "ISO-2022-JP"), 4u)
      << "an ESC without room for its pair is a plain byte at the beginning";
  EXPECT_EQ(cut("a\x1B$B\x24\x22", 5, "ISO-2022-JP"), 1u);
  EXPECT_EQ(cut("a\x1B$B\x24\x22", 6, "ISO-2022-JP"), 6u);
  EXPECT_EQ(cut("\x1B$B\x24\x22\x1B(Ba", 8, "ISO-2022-JP"), 5u);
  EXPECT_EQ(cut("\x1B$B\x24\x22\x1B(Ba", 9, "ISO-2022-JP"), 9u);
  EXPECT_EQ(cut("\x1B$B\x24\x22\x24\x24", 6, "ISO-2022-JP"), 5u);
  EXPECT_EQ(cut("a\x1Bxyz", 5, "ISO-2022-JP"), 1u) << "an unknown escape sequence";
}

TEST(CutStr, puts_an_escape_sequence_before_a_CR_to_the_next_piece) {
  const std::string text = "\x1B$B\x24\x22\x1B(B\r\n";
  EXPECT_EQ(cut(text, 9, "ISO-2022-JP"), 5u);
  EXPECT_EQ(cut(text, 10, "ISO-2022-JP"), 10u);
  EXPECT_EQ(cut("\x1B(B\r\r\n", 5, "ISO-2022-JP"), 4u) << "the second CR has none";
}

TEST(CutStr, cuts_before_the_escape_sequence_of_the_CR_only_where_it_stands_before_that_CR) {
  // The first CR has an escape sequence before it, the last one has none.
  const std::string text = "\x1B(B\r\x1B(Ba\x1B$B1\r\n";
  EXPECT_EQ(cutBefore(text, 13, "ISO-2022-JP"), 9u)
      << "the CR is the second byte of a pair, and leaves the mark of the first one";
  const std::string text3 = "\x1B(B\r\x1B(Ba\x1B$(Q1\r\n";
  EXPECT_EQ(cutBefore(text3, 14, "ISO-2022-JP-3"), 13u) << "ESC ( and a letter have cleared it";
  EXPECT_EQ(cutBefore("\x1B(B\r\x1B$(Q1\r\n", 10, "ISO-2022-JP-3"), 6u) << "ESC $ leaves it";
  EXPECT_EQ(cutBefore("\x1B(B\r\x1B$B1\r\n", 9, "ISO-2022-JP"), 5u);
  EXPECT_EQ(cutBefore("\x1B(B\ra\r\n", 6, "ISO-2022-JP"), 5u) << "a CR clears it";
  EXPECT_EQ(cutBefore("\x1B(B\ra\r\n", 6, "ISO-2022-JP-3"), 5u);
  EXPECT_EQ(cutBefore("\x1B(B\r\n", 4, "ISO-2022-JP"), 0u);
  EXPECT_EQ(cutBefore("\x1B(Ba\r\n", 5, "ISO-2022-JP"), 4u) << "a letter between them";
}

TEST(CutStr, of_a_later_piece_of_Iso2022Jp_does_not_know_the_character_set_of_the_first) {
  const std::string text = "\x1B$B\x24\x22\x24\x24\x24\x26";
  EXPECT_EQ(cut(text, 6, "ISO-2022-JP"), 5u);
  EXPECT_EQ(cut(text.substr(5), 3, "ISO-2022-JP"), 3u) << "taken for single bytes";
  EXPECT_EQ(cut("\x1B$B" + text.substr(5), 6, "ISO-2022-JP"), 5u) << "with its escape sequence";
  EXPECT_EQ(cut(text.substr(5), 3, "ISO-2022-JP-3"), 0u);
}

TEST(CutStr, of_EucJp_may_cut_what_it_does_not_see_as_a_character) {
  EXPECT_EQ(cut("\xE0\xA1\xB0\xA1", 1, "EUC-JP"), 1u);
  EXPECT_EQ(cut("\xE0\xA1\xB0\xA1\n", 3, "EUC-JP"), 3u) << "A1 B0 is taken for a pair";
  EXPECT_EQ(cut("\x8F\xB0\xA1\xB0\xA1\n", 4, "EUC-JP"), 4u) << "8F B0, A1 B0";
  EXPECT_EQ(cut("\x8E\xB1\xB0\xA1\n", 1, "EUC-JISX0213"), 1u);
}

TEST(CutStr, of_Iso2022Jp3_begins_with_an_escape_sequence) {
  EXPECT_EQ(cut("plain", 5, "ISO-2022-JP-3"), 0u);
  EXPECT_EQ(cut("\x1B(Babc", 6, "ISO-2022-JP-3"), 6u);
  EXPECT_EQ(cut("\x1B(Babc", 3, "ISO-2022-JP-3"), 0u);
  EXPECT_EQ(cut("\x1B$(Q\x24\x22", 6, "ISO-2022-JP-3"), 6u);
  EXPECT_EQ(cut("\x1B$(Q\x24\x22", 5, "ISO-2022-JP-3"), 4u) << "the escape sequence is taken";
  EXPECT_EQ(cut("\x1B$(Q\x24\x22", 4, "ISO-2022-JP-3"), 0u);
  EXPECT_EQ(cut("\x1B(B\r\n", 4, "ISO-2022-JP-3"), 0u);
  EXPECT_EQ(cut("\x1B(Bab\x1Bxcd", 8, "ISO-2022-JP-3"), 5u);
}

// Every length and limit of text. Returns how many cuts that were.
int64_t compareCuts(const std::vector<uint8_t>& bytes, const char* name) {
  const int32_t longest = static_cast<int32_t>(bytes.size()) - 4;
  int64_t cuts = 0;
  for (int32_t length = 0; length <= longest; ++length) {
    for (int32_t limit = 0; limit <= length + 1; ++limit, ++cuts) {
      const int64_t expected = ksv::test::slowCut(name, bytes, std::min(length, limit));
      const int64_t result = CutStr(bytes.data(), length, limit, name);
      if (result == expected) continue;
      ADD_FAILURE() << name << ", " << testing::PrintToString(bytes) << ", length " << length
                    << ", limit " << limit << ": " << result << " for " << expected;
      return cuts;
    }
  }
  return cuts;
}

TEST(CutStr, is_what_the_rules_say_at_every_length_and_limit_of_random_text) {
  static constexpr uint8_t kTelling[] = {0x0A, 0x0D, 0x1B, '(',  '$',  'B',  '0',  '9',  0x40, 0x7E,
                                         0x7F, 0x80, 0x81, 0x8E, 0x8F, 0x9F, 0xA0, 0xA1, 0xDF, 0xE0,
                                         0xE3, 0xF0, 0xF8, 0xFC, 0xFE, 0xFF, 0x00, 'a'};
  std::mt19937 random(20261121);
  int64_t cuts = 0;
  for (int round = 0; round < 400 && !testing::Test::HasFailure(); ++round) {
    std::vector<uint8_t> bytes(24 + 4);
    for (uint8_t& byte : bytes) byte = kTelling[random() % std::size(kTelling)];
    for (const char* name :
         {"EUC-JISX0213", "ISO-2022-JP-3", "ISO-2022-JP", "GB18030", "UTF-8", "UTF-16",
          "ISO-10646-UCS-4", "ISO-8859-1", "Shift_JIS", "EUC-JP", "ChineseGBK"})
      cuts += compareCuts(bytes, name);
  }
  EXPECT_GT(cuts, 1000000);
}

// Text of nothing but random bytes begins with an escape sequence too seldom.
TEST(CutStr, is_what_the_rules_say_of_random_text_with_escape_sequences) {
  const std::string pieces[] = {"\x1B(B",    "\x1B(J",  "\x1B(B\r",  "\x1B(J\r\n", "\x1B$B",
                                "\x1B$B1\r", "\x1B$(Q", "\x1B$(D1!", "\x1B$(Q1\r", "\r",
                                "\n",        "\r\n",    "a",         "1!",         "1\r",
                                "\x1B",      "\x1B(",   "\x1B$",     "\x1Bx"};
  constexpr size_t kBeginnings = 9;
  std::mt19937 random(20261122);
  int64_t cuts = 0;
  for (int round = 0; round < 4000 && !testing::Test::HasFailure(); ++round) {
    std::string text = pieces[random() % kBeginnings];
    for (size_t more = random() % 8; more > 0; --more) text += pieces[random() % std::size(pieces)];
    std::vector<uint8_t> bytes(text.begin(), text.end());
    bytes.resize(bytes.size() + 4);
    cuts += compareCuts(bytes, "ISO-2022-JP") + compareCuts(bytes, "ISO-2022-JP-3");
  }
  EXPECT_GT(cuts, 500000);
}

}  // namespace
