#include "kit/unicode/widths.h"

#include <gtest/gtest.h>

#include <random>

#include "kit/unicode/normalization.h"
#include "kit/unicode/utf8_text.h"
#include "tests/kit/unicode/pieces.h"
#include "tests/system/system.h"

namespace ksv_kit {
namespace {

std::string changed(const WidthChoices& choices, std::string_view text) {
  const auto change = widthChange(choices);
  return changedAtEveryCut(*change, text).text;
}

constexpr WidthChoices kFullKatakana{.katakana = Width::kFull};
constexpr WidthChoices kHalfKatakana{.katakana = Width::kHalf};
constexpr WidthChoices kHalfAscii{.ascii = Width::kHalf};
constexpr WidthChoices kFullAscii{.ascii = Width::kFull};

TEST(Widths, of_nothing_are_no_change) { EXPECT_EQ(widthChange({}), nullptr); }

TEST(Widths, join_half_width_katakana_with_their_sound_marks) {
  EXPECT_EQ(changed(kFullKatakana, "\uFF76\uFF9E\uFF77\uFF76"), "\u30AC\u30AD\u30AB");  // ｶﾞｷｶ
  EXPECT_EQ(changed(kFullKatakana, "\uFF8A\uFF9E\uFF8A\uFF9F\uFF8A"), "\u30D0\u30D1\u30CF");
  EXPECT_EQ(changed(kFullKatakana, "\uFF73\uFF9E"), "\u30F4");  // ｳﾞ
}

TEST(Widths, leave_a_sound_mark_apart_where_there_is_no_such_character) {
  EXPECT_EQ(changed(kFullKatakana, "\uFF71\uFF9E"), "\u30A2\u309B");  // ｱﾞ
  EXPECT_EQ(changed(kFullKatakana, "\uFF76\uFF9F"), "\u30AB\u309C");  // ｶﾟ
  EXPECT_EQ(changed(kFullKatakana, "\uFF9C\uFF9E"), "\u30EF\u309B");  // ﾜﾞ: not in JIS X 0208
  EXPECT_EQ(changed(kFullKatakana, "\uFF76\n\uFF9E"), "\u30AB\n\u309B");
}

TEST(Widths, leave_a_zero_behind_a_katakana) {
  using namespace std::string_view_literals;
  EXPECT_EQ(changed(kFullKatakana, "\uFF76\0a"sv), "\u30AB\0a"sv);
}

TEST(Widths, take_punctuation_of_katakana_along) {
  EXPECT_EQ(changed(kFullKatakana, "\uFF61\uFF62\uFF63\uFF64\uFF65\uFF70"),
            "\u3002\u300C\u300D\u3001\u30FB\u30FC");
}

TEST(Widths, of_every_half_width_katakana_are_what_unicode_decomposes_them_to) {
  for (char32_t half = 0xFF61; half <= 0xFF9D; ++half) {
    const std::string text = utf8Of({&half, 1});
    EXPECT_EQ(changed(kFullKatakana, text), normalized(NormalizationForm::kNfkc, text)) << text;
  }
  for (char32_t half = 0xFF66; half <= 0xFF9D; ++half) {
    for (const char32_t mark : {U'\xFF9E', U'\xFF9F'}) {
      const std::string text = utf8Of(std::u32string{half, mark});
      const std::string joined = normalized(NormalizationForm::kNfkc, text);
      // What JIS X 0208 lacks: the four sounds of wa to wo.
      const bool isLacking = charactersOf(joined)[0] >= 0x30F7 && charactersOf(joined)[0] <= 0x30FA;
      if (joined.size() == 3 && !isLacking) {
        EXPECT_EQ(changed(kFullKatakana, text), joined) << text;
      }
    }
  }
}

TEST(Widths, go_back_to_half_width_katakana) {
  EXPECT_EQ(changed(kHalfKatakana, "\u30AC\u30D1\u30AB\u30F4\u30FC\u3002"),
            "\uFF76\uFF9E\uFF8A\uFF9F\uFF76\uFF73\uFF9E\uFF70\uFF61");
  EXPECT_EQ(changed(kHalfKatakana, "\u30F0\u30F1\u30EE\u30F5\u304C"),
            "\u30F0\u30F1\u30EE\u30F5\u304C");  // have no half-width form
}

TEST(Widths, of_katakana_come_back_from_half_width) {
  std::u32string katakana;
  for (char32_t character = 0x30A1; character <= 0x30F4; ++character) katakana += character;
  const std::string text = utf8Of(katakana);
  EXPECT_EQ(changed(kFullKatakana, changed(kHalfKatakana, text)), text);
}

TEST(Widths, of_ascii_and_of_the_space_are_two_choices) {
  EXPECT_EQ(changed(kHalfAscii, "\uFF21\uFF42\uFF5E\u3000\uFF01"), "Ab~\u3000!");
  EXPECT_EQ(changed({.space = Width::kHalf}, "\uFF21\u3000"), "\uFF21 ");
  EXPECT_EQ(changed({.ascii = Width::kHalf, .space = Width::kHalf}, "\uFF21\u3000"), "A ");
  EXPECT_EQ(changed(kFullAscii, "A b~\x7F\t"), "\uFF21 \uFF42\uFF5E\x7F\t");
  EXPECT_EQ(changed({.space = Width::kFull}, "A b"), "A\u3000b");
}

TEST(Widths, of_all_ascii_come_back) {
  std::string ascii;
  for (char character = 0; character < 0x7F; ++character) ascii += character;
  const std::string full = changed({.ascii = Width::kFull, .space = Width::kFull}, ascii);
  EXPECT_EQ(changed({.ascii = Width::kHalf, .space = Width::kHalf}, full), ascii);
}

TEST(Widths, tell_where_each_byte_stems_from) {
  const auto change = widthChange(kFullKatakana);
  const Changed result = changedAtEveryCut(*change, "a\uFF76\uFF9Eb\uFF76c");
  EXPECT_EQ(result.text, "a\u30ACb\u30ABc");
  EXPECT_EQ(result.origins, (std::vector<uint64_t>{0, 1, 1, 1, 7, 8, 9, 10, 11}));
}

TEST(Widths, keep_a_katakana_that_may_go_on_until_the_end) {
  const auto change = widthChange(kFullKatakana);
  std::string out;
  change->change("\uFF76", false, out);
  EXPECT_EQ(out, "");
  change->change("", false, out);
  EXPECT_EQ(out, "");
  change->change("", true, out);
  EXPECT_EQ(out, "\u30AB");
  change->restart();
  change->change("\uFF9E", true, out);
  EXPECT_EQ(out, "\u30AB\u309B");
}

TEST(Widths, of_random_text_do_not_depend_on_cuts) {
  constexpr std::u32string_view kCharacters =
      U"\xFF71\xFF73\xFF76\xFF8A\xFF9E\xFF9F\x30AC\x30D1\x3042 aA~\xFF21\x3000\x1F600\xE9";
  std::mt19937 random(ksv::test::testSeed());
  SCOPED_TRACE("KSV_TEST_SEED=" + std::to_string(ksv::test::testSeed()));
  for (const Width katakana : {Width::kKept, Width::kHalf, Width::kFull}) {
    for (const Width ascii : {Width::kHalf, Width::kFull}) {
      const auto change = widthChange({.katakana = katakana, .ascii = ascii});
      for (int round = 0; round < 200; ++round) {
        std::u32string text;
        for (size_t left = random() % 30; left > 0; --left) {
          text += kCharacters[random() % kCharacters.size()];
        }
        changedAtEveryCut(*change, utf8Of(text));
      }
    }
  }
}

}  // namespace
}  // namespace ksv_kit
