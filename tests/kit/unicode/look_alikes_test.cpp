#include "kit/unicode/look_alikes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

struct LookAlikeSample {
  uint32_t character;
  std::vector<std::string> texts;
};

void PrintTo(const LookAlikeSample& sample, std::ostream* out) {
  *out << std::hex << sample.character;
}

class LookAlikesOf : public testing::TestWithParam<LookAlikeSample> {};

TEST_P(LookAlikesOf, begin_with_the_nearest) {
  EXPECT_EQ(lookAlikes(GetParam().character), GetParam().texts);
}

INSTANTIATE_TEST_SUITE_P(
    Characters, LookAlikesOf,
    testing::Values(
        LookAlikeSample{0xE9, {"e"}}, LookAlikeSample{0x201C, {"\""}},
        LookAlikeSample{0x2026, {"..."}}, LookAlikeSample{0xFB01, {"fi"}},
        LookAlikeSample{0x2460, {"(1)", "1"}}, LookAlikeSample{0x24B6, {"(A)", "A"}},
        LookAlikeSample{0xFF21, {"A"}}, LookAlikeSample{0xFF5E, {"\u301C", "~"}},
        LookAlikeSample{0x301C, {"\uFF5E", "~"}}, LookAlikeSample{0x2014, {"\u2015", "-"}},
        LookAlikeSample{0x2013, {"-"}}, LookAlikeSample{0xA0, {" "}},
        LookAlikeSample{0x2009, {" "}}, LookAlikeSample{0x3000, {" "}},
        LookAlikeSample{0x20AC, {"EUR"}}, LookAlikeSample{0xA9, {"(C)"}},
        LookAlikeSample{0xBD, {"1\u20442", "1/2"}}, LookAlikeSample{0x3231, {"(\u682A)"}},
        LookAlikeSample{0x2160, {"I"}}, LookAlikeSample{0x2116, {"No"}},
        LookAlikeSample{0x2122, {"TM"}}, LookAlikeSample{0x1FD, {"\u00E6", "ae"}},
        // What Unicode takes for the same character goes first.
        LookAlikeSample{0x212B, {"\u00C5", "A"}}, LookAlikeSample{0xFA19, {"\u795E"}},
        LookAlikeSample{0x1F71, {"\u03AC", "\u03B1"}}, LookAlikeSample{0xFF76, {"\u30AB"}},
        // A stroke negates; without it the sign would say the opposite.
        LookAlikeSample{0x2260, {"!="}}, LookAlikeSample{0x226E, {}},
        // No sound without its mark, and no syllable in parts.
        LookAlikeSample{0x304C, {}}, LookAlikeSample{0xAC00, {}}, LookAlikeSample{0xA8, {"\""}},
        LookAlikeSample{0x2DA, {}},
        // What cannot be seen may be left out.
        LookAlikeSample{0x200B, {""}}, LookAlikeSample{0xFE0F, {""}}, LookAlikeSample{0xFEFF, {""}},
        LookAlikeSample{0x301, {}}, LookAlikeSample{0x3042, {}}, LookAlikeSample{0x4E9C, {}},
        LookAlikeSample{0x1F600, {}}, LookAlikeSample{'a', {}}, LookAlikeSample{0xD800, {}},
        LookAlikeSample{0x110000, {}}));

TEST(LookAlikes, are_never_the_character_itself_nor_there_twice_nor_long) {
  size_t withSome = 0;
  for (uint32_t character = 0; character <= 0x10FFFF; ++character) {
    const std::vector<std::string> texts = lookAlikes(character);
    withSome += !texts.empty();
    for (const std::string& text : texts) {
      EXPECT_NE(text, utf8Of(character)) << std::hex << character;
      EXPECT_EQ(std::count(texts.begin(), texts.end(), text), 1) << std::hex << character;
      EXPECT_LE(text.size(), 48U) << std::hex << character;
    }
  }
  EXPECT_GT(withSome, 5000U);
}

}  // namespace
}  // namespace ksv_kit
