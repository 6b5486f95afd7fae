// The scores of the encoding check, one by one: good characters of ten thousand.
#include "detect/check_scores.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/detect/ranges.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

using namespace std::string_literals;
using ksv::detect::CheckedText;

// Keeps the bytes of a text for as long as it is scored.
class Text {
 public:
  Text(const std::string& text) : bytes_(bytesOf(text)) {}  // NOLINT: stands for a text
  operator CheckedText() const { return {bytes_.data(), bytes_.size()}; }

 private:
  const Bytes bytes_;
};

std::string of(std::initializer_list<uint32_t> bytes) {
  std::string text;
  for (const uint32_t byte : bytes) text += static_cast<char>(byte);
  return text;
}

TEST(CheckScores, of_nothing_are_0) {
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("")), 0);
  EXPECT_EQ(ksv::detect::checkEucJp(Text("")), 0);
  EXPECT_EQ(ksv::detect::checkEucJpFix(Text("a")), 0) << "half a character";
  EXPECT_EQ(ksv::detect::checkUtf8(Text("\xE3\x81")).score, 0);
  EXPECT_EQ(ksv::detect::checkWindows31j(Text("")).score, 0);
  EXPECT_EQ(ksv::detect::checkUtf16(Text("a")).score, 0);
  EXPECT_EQ(ksv::detect::checkUcs4(Text("abc")).score, 0);
}

TEST(CheckScores, are_cut_off_to_whole_numbers) {
  EXPECT_EQ(ksv::detect::checkEucJp(Text("aa\x01")), 6666);
}

TEST(CheckIso2022Jp, keeps_the_state_behind_an_unknown_sequence_of_four) {
  const std::string pair = "\x46\x7C";
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("\x1B$B" + pair + "\x1B$(X" + pair)), 10000);
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("a\x1B$(Xb")), 10000);
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("a\x1B$(D" + pair)), 10000);
}

TEST(CheckIso2022Jp, takes_all_for_bad_behind_another_unknown_sequence_until_a_known_one) {
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("a\x1B$Abcd")), 2500);
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("a\x1B$Abcd\x1B(Bef")), 5000);
}

TEST(CheckIso2022Jp, uses_one_byte_for_a_bad_first_and_two_for_a_bad_second) {
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("\x1B$B\n\x46\x7C")), 5000);
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("\x1B$B\x46\n\x46\x7C")), 5000);
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("\x1B$B\x46\x7C\x46")), 10000) << "ends the scan";
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("a\x1B$")), 10000);
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("a\x1B$(")), 10000);
}

TEST(CheckIso2022Jp, reads_katakana_and_blanks_in_the_mode_of_katakana) {
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("\x1B(I\xB1\xDF \r\n\t")), 10000);
  EXPECT_EQ(ksv::detect::checkIso2022Jp(Text("\x1B(I\xB1\x41")), 5000);
}

TEST(CheckUtf8, tells_values_that_are_too_small_among_characters_of_three_bytes) {
  for (size_t place = 0; place < 9; ++place) {
    std::string small, large;
    for (size_t i = 0; i < 9; ++i) {
      small += i == place ? "\xE0\x9F\xBF" : "\xE3\x81\x82";
      large += i == place ? "\xE0\xA0\x80" : "\xE3\x81\x82";
    }
    const ksv::detect::Utf8Score score = ksv::detect::checkUtf8(Text(small + "aaa"));
    EXPECT_EQ(score.score, 9166) << place << ": 11 of 12";
    EXPECT_EQ(score.multibyte, 8u) << place;
    EXPECT_EQ(ksv::detect::checkUtf8(Text(large + "aaa")).multibyte, 9u) << place;
  }
  std::string allSmall;
  for (int i = 0; i < 9; ++i) allSmall += "\xE0\x80\x80";
  EXPECT_EQ(ksv::detect::checkUtf8(Text(allSmall)).score, 0);
}

// Behind a good character and before one, so that what a byte uses up shows.
TEST(CheckEucJp, takes_exactly_these_pairs) {
  for (uint32_t lead = 0x80; lead <= 0xFF; ++lead) {
    for (uint32_t trail = 0; trail <= 0xFF; ++trail) {
      const int32_t score = ksv::detect::checkEucJp(Text(of({'a', lead, trail, 'a', 'a'})));
      if (lead >= 0xA1 && lead <= 0xDF) {
        EXPECT_EQ(score, trail >= 0xA1 ? 10000 : 7500) << std::hex << lead << trail;
      } else if (lead == 0x8E) {
        EXPECT_EQ(score, trail >= 0xA1 && trail <= 0xDF ? 10000 : 7500) << std::hex << trail;
      } else if (lead != 0x8F) {
        const int32_t alone = ksv::detect::checkEucJp(Text(of({'a', trail, 'a', 'a'})));
        EXPECT_LT(score, std::max(alone, 1)) << std::hex << lead << trail << " is no pair";
      }
    }
  }
}

TEST(CheckEucJp, reads_threes) {
  EXPECT_EQ(ksv::detect::checkEucJp(Text("a\x8F\xB0\xA1")), 10000);
  EXPECT_EQ(ksv::detect::checkEucJp(Text("a\x8F\xB0\xA0z")), 6666) << "a wrong third is used up";
  EXPECT_EQ(ksv::detect::checkEucJp(Text("a\x8F\x41zz")), 7500) << "a wrong second leaves it";
  EXPECT_EQ(ksv::detect::checkEucJp(Text("a\x8F\xE0zz")), 7500);
  EXPECT_EQ(ksv::detect::checkEucJp(Text("a\x8F\xB0")), 10000) << "cut, it ends the scan";
}

TEST(CheckEucJpFix, takes_exactly_these_pairs) {
  const std::set<uint32_t> narrow = codesOf("9 A D 20-7E A1-DF");
  const std::set<uint32_t> wide = codesOf("21-7E A1-FF");
  for (uint32_t first = 0; first <= 0xFF; ++first) {
    for (uint32_t second = 0; second <= 0xFF; ++second) {
      bool isGood = first == 0 && narrow.count(second) != 0;
      if (first >= 0xA1 && first <= 0xDF) isGood = wide.count(second) != 0;
      const int32_t expected = first == 0x1B ? 0 : isGood ? 10000 : 5000;
      EXPECT_EQ(ksv::detect::checkEucJpFix(Text(of({0, 'a', first, second}))), expected)
          << std::hex << first << " " << second;
    }
  }
}

TEST(CheckUtf8, judges_sequences_by_their_value_alone) {
  const auto score = [](const std::string& text) {
    return ksv::detect::checkUtf8(Text("a" + text)).score;
  };
  EXPECT_EQ(score("\xC2\x80"), 10000);
  EXPECT_EQ(score("\xC1\xBF"), 5000) << "below 80";
  EXPECT_EQ(score("\xE0\xA0\x80"), 10000);
  EXPECT_EQ(score("\xE0\x9F\xBF"), 5000) << "below 800";
  EXPECT_EQ(score("\xF0\x90\x80\x80"), 10000);
  EXPECT_EQ(score("\xF0\x8F\xBF\xBF"), 5000);
  EXPECT_EQ(score("\xF8\x88\x80\x80\x80"), 10000);
  EXPECT_EQ(score("\xF8\x87\xBF\xBF\xBF"), 5000);
  EXPECT_EQ(score("\xFC\x84\x80\x80\x80\x80"), 10000);
  EXPECT_EQ(score("\xFC\x83\xBF\xBF\xBF\xBF"), 5000);
  EXPECT_EQ(score("\xFD\xBF\xBF\xBF\xBF\xBF"), 10000);
  EXPECT_EQ(score("\xE3zz"), 10000) << "any byte gives its low six bits";
  EXPECT_EQ(score("\xFE\xFF"), 10000) << "skipped";
  EXPECT_EQ(score("\x80"), 5000);
  EXPECT_EQ(score("\0"s), 0);
  EXPECT_EQ(score("\x1B"), 0);
  EXPECT_EQ(ksv::detect::checkUtf8(Text("aé日\xC1\xBF")).multibyte, 2u);
}

TEST(CheckWindows31j, takes_the_codes_of_ShiftJis_and_counts_what_it_sees) {
  const auto result = ksv::detect::checkWindows31j(Text("a\x93\xFA\xB1\xFD\x80"));
  EXPECT_EQ(result.score, 6000);
  EXPECT_EQ(result.doubleByte, 1u);
  EXPECT_EQ(result.high, 2u) << "B1 and FD";
  const std::set<uint32_t> codes = codesOf(kShiftJisCodeText);
  for (uint32_t code = 0; code <= 0xFFFF; ++code)
    ASSERT_EQ(ksv::detect::checkWindows31j(Text(of({code >> 8, code & 0xFF}))).doubleByte,
              codes.count(code))
        << std::hex << code;
  for (const std::string& stop : {"\0"s, "\x1B"s, "\x7F"s})
    EXPECT_EQ(ksv::detect::checkWindows31j(Text("a" + stop)).score, 0);
}

TEST(CheckUtf16, needs_a_letter_of_ascii) {
  EXPECT_EQ(ksv::detect::checkUtf16(Text("\x65\xE5\x67\x2C")).score, 0);
  EXPECT_EQ(ksv::detect::checkUtf16(Text("\x65\xE5\0\x20"s)).score, 0) << "a space is none";
  EXPECT_EQ(ksv::detect::checkUtf16(Text("\x65\xE5\0\x21"s)).score, 10000);
  EXPECT_TRUE(ksv::detect::checkUtf16(Text("\x65\xE5\0\x21"s)).isBigEndian);
  EXPECT_FALSE(ksv::detect::checkUtf16(Text("\xE5\x65\x21\0"s)).isBigEndian);
}

TEST(CheckUcs4, looks_at_the_code_on_every_plane_up_to_16) {
  const auto score = [](const std::string& text) {
    return ksv::detect::checkUcs4(Text("\0\0\0a"s + text)).score;
  };
  EXPECT_EQ(score("\0\x10\x4E\0"s), 10000);
  EXPECT_EQ(score("\0\x01\x4E\xA6"s), 5000);
  EXPECT_EQ(score("\0\x11\x4E\0"s), 0);
  EXPECT_EQ(score("\0\x7F\x4E\0"s), 0);
  EXPECT_EQ(score("\0\x80\x4E\0"s), 5000);
}

}  // namespace
}  // namespace ksv_detect_tests
