#include <gtest/gtest.h>

#include <vector>

#include "tests/kit/shifts/filtered.h"

namespace ksv_kit::test {
namespace {

constexpr std::string_view kKorean = "iso-2022-kr";
using Refusals = std::vector<Refusal>;
using Places = std::vector<uint64_t>;

TEST(KoreanReading, gives_pairs_their_high_bits_and_drops_header_and_shifts) {
  const Filtered text = read(kKorean,
                             "\x1B$)Ca\x0E\x30\x21\x30\x22\x0F"
                             "b");
  EXPECT_EQ(text.made,
            "a\xB0\xA1\xB0\xA2"
            "b");
  EXPECT_EQ(text.refusals, Refusals());
  EXPECT_EQ(text.origins, Places({4, 6, 7, 8, 9, 11}));
}

TEST(KoreanReading, takes_a_text_without_header_and_headers_elsewhere) {
  EXPECT_EQ(read(kKorean, "\x0E\x30\x21").made, "\xB0\xA1");
  EXPECT_EQ(read(kKorean, "a\n\x1B$)C\x0E\x1B$)C\x30\x21").made, "a\n\xB0\xA1");
}

TEST(KoreanReading, is_shifted_back_by_the_end_of_a_line) {
  EXPECT_EQ(read(kKorean, "\x0E\x30\x21\n0!").made, "\xB0\xA1\n0!");
  EXPECT_EQ(read(kKorean, "\x0E\x30\x21\r\n\x0E\x30\x21").made, "\xB0\xA1\r\n\xB0\xA1");
}

TEST(KoreanReading, refuses_blanks_controls_and_high_bytes_between_pairs) {
  const Filtered text = read(kKorean, "\x0E\x30\x21 \x07\x7F\xB0\x30\x22");
  EXPECT_EQ(text.refusals, Refusals({{3, 1}, {4, 1}, {5, 1}, {6, 1}}));
  EXPECT_EQ(text.made, "\xB0\xA1\xB0\xA2");
}

TEST(KoreanReading, refuses_half_a_pair) {
  EXPECT_EQ(read(kKorean, "\x0E\x30\nx").refusals, Refusals({{1, 1}}));
  EXPECT_EQ(read(kKorean, "\x0E\x30\nx").made, "\nx");
  EXPECT_EQ(read(kKorean, "\x0E\x30\x21\x30").refusals, Refusals({{3, 1}}));
}

TEST(KoreanReading, refuses_other_escape_sequences_whole) {
  EXPECT_EQ(read(kKorean, "a\x1B$B\x1B$)Ab").refusals, Refusals({{1, 3}, {4, 4}}));
  EXPECT_EQ(read(kKorean, "a\x1B$B\x1B$)Ab").made, "ab");
  EXPECT_EQ(read(kKorean,
                 "\x1B$\x07"
                 "a")
                .refusals,
            Refusals({{0, 2}}));
  EXPECT_EQ(read(kKorean, "\x1B$)").refusals, Refusals({{0, 3}}));
  EXPECT_EQ(read(kKorean, "\x1B").refusals, Refusals({{0, 1}}));
}

TEST(KoreanReading, refuses_high_bytes_of_ascii) {
  EXPECT_EQ(read(kKorean, "a\xB0\xA1").refusals, Refusals({{1, 1}, {2, 1}}));
}

TEST(KoreanReading, and_writing_take_the_first_and_the_last_pair) {
  EXPECT_EQ(read(kKorean, "\x0E\x21\x21\x7E\x7E\x0F").made, "\xA1\xA1\xFE\xFE");
  EXPECT_EQ(written(kKorean, "\xA1\xA1\xFE\xFE").made, "\x1B$)C\x0E\x21\x21\x7E\x7E\x0F");
  EXPECT_EQ(written(kKorean, "\xA0\xA1").refusals, Refusals({{0, 1}, {1, 1}}));
}

TEST(KoreanWriting, puts_the_header_in_front_and_shifts_around_pairs) {
  const Filtered text = written(kKorean, "a\xB0\xA1\xB0\xA2\n\xB0\xA1");
  EXPECT_EQ(text.made, "\x1B$)Ca\x0E\x30\x21\x30\x22\x0F\n\x0E\x30\x21\x0F");
  EXPECT_EQ(text.refusals, Refusals());
  EXPECT_EQ(text.origins, Places({0, 0, 0, 0, 0, 1, 1, 2, 3, 4, 5, 5, 6, 6, 7, 8}));
}

TEST(KoreanWriting, puts_the_header_in_front_of_ascii_and_not_of_nothing) {
  EXPECT_EQ(written(kKorean, "a").made, "\x1B$)Ca");
  EXPECT_EQ(written(kKorean, "").made, "");
}

TEST(KoreanWriting, refuses_what_would_be_taken_for_shifts_and_other_bytes) {
  EXPECT_EQ(written(kKorean, "\x0E\x0F\x1B").refusals, Refusals({{0, 1}, {1, 1}, {2, 1}}));
  EXPECT_EQ(written(kKorean,
                    "\xB0"
                    "a\x80\xFF")
                .refusals,
            Refusals({{0, 1}, {2, 1}, {3, 1}}));
  EXPECT_EQ(written(kKorean, "a\xB0").refusals, Refusals({{1, 1}}));
}

TEST(Korean, is_the_same_at_every_cut) {
  expectSameAtEveryCut(readingFilter, kKorean,
                       "\x1B$)Ca\x0E\x30\x21 \x30\n\x1B$B\x0E\x30\x1B$)C\x30\x22\x0F\x80\x1B$");
  expectSameAtEveryCut(writingFilter, kKorean,
                       "a\xB0\xA1\x0E\xB0"
                       "a\n\xB0\xA2\xFF\xB0");
}

}  // namespace
}  // namespace ksv_kit::test
