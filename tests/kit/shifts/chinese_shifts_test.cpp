#include <gtest/gtest.h>

#include <vector>

#include "tests/kit/shifts/filtered.h"

namespace ksv_kit::test {
namespace {

constexpr std::string_view kChinese = "iso-2022-cn";
using Refusals = std::vector<Refusal>;
using Places = std::vector<uint64_t>;

TEST(ChineseReading, reads_pairs_by_what_is_designated) {
  const Filtered text = read(kChinese,
                             "a\x1B$)A\x0E\x30\x21\x0F\x1B$)G\x0E\x44\x21\x0F"
                             "b");
  EXPECT_EQ(text.made,
            "a\xB0\xA1\x8E\xA1\xC4\xA1"
            "b");
  EXPECT_EQ(text.refusals, Refusals());
  EXPECT_EQ(text.origins, Places({0, 6, 7, 14, 14, 14, 15, 17}));
}

TEST(ChineseReading, takes_designations_between_pairs) {
  EXPECT_EQ(read(kChinese, "\x1B$)A\x0E\x30\x21\x1B$)G\x44\x21").made, "\xB0\xA1\x8E\xA1\xC4\xA1");
}

TEST(ChineseReading, reads_plane_2_behind_a_single_shift_each_shifted_or_not) {
  const Filtered text = read(kChinese,
                             "\x1B$*H\x1BN!!\x1B$)A\x0E\x30\x21\x1BN!\"\x30\x21\x0F"
                             "a");
  EXPECT_EQ(text.made,
            "\x8E\xA2\xA1\xA1\xB0\xA1\x8E\xA2\xA1\xA2\xB0\xA1"
            "a");
  EXPECT_EQ(text.refusals, Refusals());
}

TEST(ChineseReading, forgets_what_is_designated_at_the_end_of_a_line) {
  EXPECT_EQ(read(kChinese, "\x1B$)A\x0E\x30\x21\n0!").made, "\xB0\xA1\n0!");
  EXPECT_EQ(read(kChinese, "\x1B$)A\n\x0E").refusals, Refusals({{5, 1}}));
  EXPECT_EQ(read(kChinese, "\x1B$*H\r\n\x1BN!!").refusals, Refusals({{6, 2}}));
}

// Other writers take a lone CR for the end of a line, or for none.
TEST(ChineseReading, is_shifted_back_by_a_lone_cr_and_knows_what_is_designated) {
  EXPECT_EQ(read(kChinese, "\x1B$)A\x0E\x30\x21\r0!\x0E\x30\x21").made, "\xB0\xA1\r0!\xB0\xA1");
}

TEST(ChineseReading, refuses_shifts_to_what_is_not_designated) {
  EXPECT_EQ(read(kChinese,
                 "\x0E"
                 "a")
                .refusals,
            Refusals({{0, 1}}));
  EXPECT_EQ(read(kChinese,
                 "\x0E"
                 "a")
                .made,
            "a");
  EXPECT_EQ(read(kChinese, "\x1BN!!").refusals, Refusals({{0, 2}}));
}

TEST(ChineseReading, refuses_half_a_pair_with_its_single_shift) {
  EXPECT_EQ(read(kChinese, "\x1B$*H\x1BN! a").refusals, Refusals({{4, 2}}));
  EXPECT_EQ(read(kChinese, "\x1B$*H\x1BN! a").made, "! a");
  EXPECT_EQ(read(kChinese, "\x1B$)A\x0E\x30").refusals, Refusals({{5, 1}}));
  EXPECT_EQ(read(kChinese, "\x1B$)A\x0E\x30\x0F").refusals, Refusals({{5, 1}}));
  EXPECT_EQ(read(kChinese, "\x1B$*H\x1BN!").refusals, Refusals({{4, 3}}));
}

TEST(ChineseReading, refuses_other_sets_and_high_bytes) {
  EXPECT_EQ(read(kChinese,
                 "\x1B$)E\x1B$+I\x1BO"
                 "a")
                .refusals,
            Refusals({{0, 4}, {4, 4}, {8, 2}}));
  EXPECT_EQ(read(kChinese, "\xB0").refusals, Refusals({{0, 1}}));
}

TEST(ChineseWriting, designates_once_a_line) {
  const Filtered text = written(kChinese,
                                "\xB0\xA1"
                                "a\xB0\xA1\n\xB0\xA1");
  EXPECT_EQ(text.made,
            "\x1B$)A\x0E\x30\x21\x0F"
            "a\x0E\x30\x21\x0F\n\x1B$)A\x0E\x30\x21\x0F");
  EXPECT_EQ(text.origins,
            Places({0, 0, 0, 0, 0, 0, 1, 2, 2, 3, 3, 4, 5, 5, 6, 6, 6, 6, 6, 6, 7, 8}));
}

TEST(ChineseWriting, designates_again_behind_a_lone_cr) {
  EXPECT_EQ(written(kChinese, "\xB0\xA1\r\xB0\xA1").made,
            "\x1B$)A\x0E\x30\x21\x0F\r\x1B$)A\x0E\x30\x21\x0F");
}

TEST(ChineseWriting, changes_sets_between_shifts) {
  EXPECT_EQ(written(kChinese, "\xB0\xA1\x8E\xA1\xC4\xA1").made,
            "\x1B$)A\x0E\x30\x21\x0F\x1B$)G\x0E\x44\x21\x0F");
}

TEST(ChineseWriting, writes_plane_2_behind_single_shifts_and_stays_shifted) {
  const Filtered text = written(kChinese, "\xB0\xA1\x8E\xA2\xA1\xA1\x8E\xA2\xA1\xA2\xB0\xA1");
  EXPECT_EQ(text.made, "\x1B$)A\x0E\x30\x21\x1B$*H\x1BN!!\x1BN!\"\x30\x21\x0F");
}

TEST(ChineseWriting, refuses_what_is_no_code) {
  EXPECT_EQ(written(kChinese, "\x0E\x0F\x1B").refusals, Refusals({{0, 1}, {1, 1}, {2, 1}}));
  // What is left behind 8E are two pairs of GB 2312.
  EXPECT_EQ(written(kChinese, "\x8E\xA3\xA1\xA1\xA2").refusals, Refusals({{0, 1}}));
  EXPECT_EQ(written(kChinese,
                    "\xB0"
                    "a")
                .refusals,
            Refusals({{0, 1}}));
  EXPECT_EQ(written(kChinese, "\x8E\xA1\xC4").refusals, Refusals({{0, 3}}));
}

TEST(Chinese, is_the_same_at_every_cut) {
  expectSameAtEveryCut(readingFilter, kChinese,
                       "\x1B$)A\x0E\x30\x21\x1B$*H\x1BN!!\x30\n\x0E\x1B$)G\x0E\x44\x0F\x1BN!\x1B(");
  expectSameAtEveryCut(writingFilter, kChinese,
                       "\xB0\xA1\x8E\xA1\xC4\xA1\x8E\xA2\xA1\xA1\n\xB0\xA1\x8E\xA2\xA1"
                       "a\x8E\xA1");
}

}  // namespace
}  // namespace ksv_kit::test
