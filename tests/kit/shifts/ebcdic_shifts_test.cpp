#include <gtest/gtest.h>

#include <vector>

#include "tests/kit/shifts/filtered.h"

namespace ksv_kit::test {
namespace {

using namespace std::string_literals;
using Refusals = std::vector<Refusal>;
using Places = std::vector<uint64_t>;

TEST(EbcdicReading, marks_each_pair_and_drops_the_shifts) {
  const Filtered text = read("ibm930", "\xC1\x0E\x42\xC1\x42\xC2\x0F\xC2");
  EXPECT_EQ(text.made, "\xC1\xFE\x42\xC1\xFE\x42\xC2\xC2");
  EXPECT_EQ(text.refusals, Refusals());
  EXPECT_EQ(text.origins, Places({0, 2, 2, 3, 4, 4, 5, 7}));
}

TEST(EbcdicReading, takes_the_space_and_no_other_pair_with_40) {
  EXPECT_EQ(read("ibm930", "\x0E\x40\x40\x0F").made, "\xFE\x40\x40");
  EXPECT_EQ(read("ibm930", "\x0E\x40\x41\x42\x0F").refusals, Refusals({{1, 1}}));
  EXPECT_EQ(read("ibm930", "\x0E\x42\x40\x40\x0F").refusals, Refusals({{1, 1}}));
}

TEST(EbcdicReading, takes_shifts_to_what_holds_and_a_text_that_ends_shifted_out) {
  EXPECT_EQ(read("ibm939", "\x0F\xC1\x0E\x0E\x42\xC1").made, "\xC1\xFE\x42\xC1");
  EXPECT_EQ(read("ibm939", "\x0E\x0F\x0E").made, "");
}

TEST(EbcdicReading, refuses_single_bytes_where_pairs_are_due_one_by_one) {
  const Filtered text = read("ibm1390", "\x0E\x25\x00\xFF\x42\xC1\x0F\x25"s);
  EXPECT_EQ(text.refusals, Refusals({{1, 1}, {2, 1}, {3, 1}}));
  EXPECT_EQ(text.made, "\xFE\x42\xC1\x25");
}

TEST(EbcdicReading, refuses_half_a_pair_in_front_of_a_shift_and_of_the_end) {
  EXPECT_EQ(read("ibm1399", "\x0E\x42\x0F\xC1").refusals, Refusals({{1, 1}}));
  EXPECT_EQ(read("ibm1399", "\x0E\x42\x0F\xC1").made, "\xC1");
  EXPECT_EQ(read("ibm1399", "\x0E\x42\xC1\x42").refusals, Refusals({{3, 1}}));
}

TEST(EbcdicReading, refuses_the_byte_that_marks_pairs) {
  const Filtered text = read("ibm930", "\xC1\xFE\x42\xC1");
  EXPECT_EQ(text.refusals, Refusals({{1, 1}}));
  EXPECT_EQ(text.made, "\xC1\x42\xC1");
}

TEST(EbcdicWriting, shifts_around_pairs_and_back_at_the_end) {
  const Filtered text = written("ibm930", "\xC1\xFE\x42\xC1\xFE\x42\xC2\xC2\xFE\x40\x40");
  EXPECT_EQ(text.made, "\xC1\x0E\x42\xC1\x42\xC2\x0F\xC2\x0E\x40\x40\x0F");
  EXPECT_EQ(text.refusals, Refusals());
  EXPECT_EQ(text.origins, Places({0, 1, 2, 3, 5, 6, 7, 7, 8, 9, 10, 11}));
}

TEST(EbcdicWriting, refuses_shifts_and_what_is_no_pair) {
  EXPECT_EQ(written("ibm930", "\x0E\xC1\x0F").refusals, Refusals({{0, 1}, {2, 1}}));
  EXPECT_EQ(written("ibm930", "\xFE\x25\x42\xC1").refusals, Refusals({{0, 1}}));
  EXPECT_EQ(written("ibm930", "\xFE\x42\x40\xC1").refusals, Refusals({{0, 1}}));
  EXPECT_EQ(written("ibm930", "\xC1\xFE\x42").refusals, Refusals({{1, 2}}));
  EXPECT_EQ(written("ibm930", "\xFE\x25").refusals, Refusals({{0, 1}}));
  EXPECT_EQ(written("ibm930", "\xFE\x25").made, "\x25");
}

TEST(EbcdicWriting, writes_nothing_for_nothing) { EXPECT_EQ(written("ibm930", "").made, ""); }

TEST(Ebcdic, is_the_same_at_every_cut) {
  for (const std::string_view name : {"ibm930", "ibm939", "ibm1390", "ibm1399"}) {
    expectSameAtEveryCut(
        readingFilter, name,
        "\xC1\x0E\x42\xC1\x42\x0F\xC2\x0E\x40\x40\x25\x42\x40\x0F\xFE\xC3\x0E\x42");
    expectSameAtEveryCut(
        writingFilter, name,
        "\xC1\xFE\x42\xC1\xFE\x42\x15\xFE\x42\xC2\x0E\xC2\xFE\xFE\x40\x40\xFE\x42");
  }
}

}  // namespace
}  // namespace ksv_kit::test
