// What holds for every encoding with shifts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>
#include <vector>

#include "tests/kit/shifts/filtered.h"

namespace ksv_kit::test {
namespace {

constexpr std::string_view kNames[] = {"ibm930",  "ibm939",      "ibm1390",
                                       "ibm1399", "iso-2022-kr", "iso-2022-cn"};

uint32_t seed() {
  const char* given = std::getenv("KSV_TEST_SEED");
  return given == nullptr ? 20261122 : static_cast<uint32_t>(std::strtoul(given, nullptr, 10));
}

class Encoding : public testing::TestWithParam<std::string_view> {
 protected:
  // Bytes of which most matter to filters.
  std::string someText() {
    static constexpr std::string_view kPieces[] = {
        "\x0E",    "\x0F",     "\x1B",     "\x1B$)A",      "\x1B$)C",  "\x1B$)G",
        "\x1B$*H", "\x1BN",    "\n",       "\x30\x21",     "\x42\xC1", "\x40\x40",
        "\xFE",    "\xB0\xA1", "\x8E\xA1", "\x8E\xA2\xA1", "a",        "\x25"};
    std::string text;
    const size_t count = random_() % 12;
    for (size_t i = 0; i < count; ++i) {
      if (random_() % 4 == 0)
        text += static_cast<char>(random_() & 0xFF);
      else
        text += kPieces[random_() % std::size(kPieces)];
    }
    return text;
  }

  std::vector<size_t> someCuts(size_t size) {
    std::set<size_t> cuts;
    for (size_t i = random_() % 6; i > 0; --i) cuts.insert(random_() % (size + 1));
    return {cuts.begin(), cuts.end()};
  }

  std::mt19937 random_{seed()};
};

TEST_P(Encoding, takes_random_bytes_the_same_at_random_cuts) {
  for (int i = 0; i < 4000; ++i) {
    const std::string text = someText();
    const std::vector<size_t> cuts = someCuts(text.size());
    EXPECT_EQ(read(GetParam(), text, cuts), read(GetParam(), text));
    EXPECT_EQ(written(GetParam(), text, cuts), written(GetParam(), text));
  }
}

// Whatever is refused is left out, so that what was read can be written, and reads as the same.
TEST_P(Encoding, reads_what_it_writes_of_random_bytes) {
  for (int i = 0; i < 4000; ++i) {
    const Filtered stateless = read(GetParam(), someText());
    const Filtered shifted = written(GetParam(), stateless.made);
    EXPECT_EQ(shifted.refusals, std::vector<Refusal>());
    const Filtered again = read(GetParam(), shifted.made);
    EXPECT_EQ(again.refusals, std::vector<Refusal>());
    EXPECT_EQ(again.made, stateless.made);
  }
}

TEST_P(Encoding, tells_of_each_byte_a_place_in_the_text_in_order) {
  for (int i = 0; i < 1000; ++i) {
    const std::string text = someText();
    for (const Filtered& result : {read(GetParam(), text), written(GetParam(), text)}) {
      EXPECT_TRUE(std::is_sorted(result.origins.begin(), result.origins.end()));
      for (const uint64_t origin : result.origins) EXPECT_LE(origin, text.size());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, Encoding, testing::ValuesIn(kNames),
                         [](const testing::TestParamInfo<std::string_view>& info) {
                           std::string name(info.param);
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

TEST(ShiftFilters, are_known_by_the_lower_case_name_of_the_encoding) {
  for (const std::string_view name : kNames) {
    EXPECT_NE(readingFilter(name), nullptr) << name;
    EXPECT_NE(writingFilter(name), nullptr) << name;
    EXPECT_EQ(statelessCharsetOf(name), "x-stateless-" + std::string(name));
  }
  for (const std::string_view name : {"", "IBM930", "iso-2022-jp", "x-stateless-ibm930"}) {
    EXPECT_EQ(readingFilter(name), nullptr) << name;
    EXPECT_EQ(writingFilter(name), nullptr) << name;
    EXPECT_EQ(statelessCharsetOf(name), "") << name;
  }
}

TEST(ShiftFilters, append_to_what_is_there) {
  std::vector<uint8_t> out = {1, 2};
  size_t bad = 1;
  const uint8_t text[] = {0xC1};
  const std::unique_ptr<ShiftFilter> filter = readingFilter("ibm930");
  EXPECT_EQ(filter->filter(text, 1, true, out, bad), 1U);
  EXPECT_EQ(bad, 0U);
  EXPECT_EQ(filter->refusedBefore(), 0U);
  EXPECT_EQ(out, std::vector<uint8_t>({1, 2, 0xC1}));
}

// A caller may ask about what it has not used up yet of the output of the call before.
TEST(ShiftFilters, remember_the_origins_of_two_calls) {
  const std::unique_ptr<ShiftFilter> filter = readingFilter("ibm930");
  std::vector<uint8_t> out;
  size_t bad = 0;
  const uint8_t text[] = {0x0E, 0x42, 0xC1, 0x0F, 0xC1};
  for (uint64_t call = 0; call < 3; ++call) filter->filter(text, sizeof text, false, out, bad);
  ASSERT_EQ(out.size(), 12U);
  const uint64_t second[] = {6, 6, 7, 9};
  for (uint64_t i = 0; i < 4; ++i) {
    EXPECT_EQ(filter->originOf(4 + i), second[i]);
    EXPECT_EQ(filter->originOf(8 + i), second[i] + 5);
  }
}

}  // namespace
}  // namespace ksv_kit::test
