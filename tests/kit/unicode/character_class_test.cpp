#include "kit/unicode/character_class.h"

#include <gtest/gtest.h>

#include <ostream>

namespace ksv_kit {
namespace {

struct ClassSample {
  uint32_t character;
  const char* name;
};

void PrintTo(const ClassSample& sample, std::ostream* out) { *out << std::hex << sample.character; }

class ClassOf : public testing::TestWithParam<ClassSample> {};

TEST_P(ClassOf, is_named_in_a_word_or_two) {
  EXPECT_EQ(classOf(GetParam().character), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(
    Characters, ClassOf,
    testing::Values(
        ClassSample{0x0000, "control"}, ClassSample{0x001B, "control"},
        ClassSample{0x0085, "control"}, ClassSample{0x00AD, "format"},
        ClassSample{0x200D, "format"}, ClassSample{0xD800, "surrogate"},
        ClassSample{0xDFFF, "surrogate"}, ClassSample{0xE000, "private use"},
        ClassSample{0xF8FF, "private use"}, ClassSample{0x100000, "private use"},
        ClassSample{0xFDD0, "noncharacter"}, ClassSample{0xFFFF, "noncharacter"},
        ClassSample{0x10FFFF, "noncharacter"}, ClassSample{0x0378, "unassigned"},
        ClassSample{0xFE0F, "variation selector"}, ClassSample{0xE0100, "variation selector"},
        ClassSample{0x1F600, "emoji"}, ClassSample{0x1F1EF, "emoji"}, ClassSample{0x263A, "symbol"},
        ClassSample{0xFF76, "half-width"}, ClassSample{0xFF9E, "half-width"},
        ClassSample{0xFF21, "full-width"}, ClassSample{0xFFE5, "full-width"},
        ClassSample{0x3000, "space"}, ClassSample{0x00A0, "space"},
        ClassSample{0x0301, "combining mark"}, ClassSample{0x3099, "combining mark"},
        ClassSample{0x4E9C, "CJK ideograph"}, ClassSample{0x2000B, "CJK ideograph"},
        ClassSample{0xFA0E, "CJK ideograph"}, ClassSample{0xFA19, "compatibility ideograph"},
        ClassSample{0x2F800, "compatibility ideograph"}, ClassSample{0x3042, "hiragana"},
        ClassSample{0x30AB, "katakana"}, ClassSample{0xAC00, "Hangul"},
        ClassSample{0x0041, "letter"}, ClassSample{0x0416, "letter"}, ClassSample{0x0031, "number"},
        ClassSample{0x2460, "number"}, ClassSample{0x3001, "punctuation"},
        ClassSample{0x20AC, "symbol"}, ClassSample{0x110000, "no character"},
        ClassSample{0xFFFFFFFF, "no character"}));

TEST(IsCircled, holds_for_what_has_a_circle_around_it) {
  EXPECT_TRUE(isCircled(0x2460));
  EXPECT_TRUE(isCircled(0x3299));
  EXPECT_FALSE(isCircled(0x2474));
  EXPECT_FALSE(isCircled('1'));
}

}  // namespace
}  // namespace ksv_kit
