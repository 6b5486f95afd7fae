// Every unit, against predicates that are written out another way.
#include <gtest/gtest.h>

#include <string_view>

#include "ksv_sjis.h"
#include "ksv_ucs2.h"
#include "tests/common/sjis_facts.h"

using ksv::test::sjisFacts;
using ksv::test::sjisFactsReversed;

namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

bool isOneOf(std::string_view characters, unsigned unit) {
  return unit < 0x80 && characters.find(static_cast<char>(unit)) != characters.npos;
}

// The double-byte codes lead byte by lead byte.
bool isJisPair(unsigned lead, unsigned trail) {
  const auto within = [trail](unsigned first, unsigned last) {
    return first <= trail && trail <= last;
  };
  if (!within(0x30, 0xFC)) return false;
  switch (lead) {
    case 0x81:
      return within(0x40, 0xAC) || within(0xB8, 0xBF) || within(0xC8, 0xCE) ||
             within(0xDA, 0xE8) || within(0xF0, 0xF7) || trail == 0xFC;
    case 0x82:
      return within(0x4F, 0x58) || within(0x60, 0x79) || within(0x81, 0x9A) || within(0x9F, 0xF1);
    case 0x83:
      return within(0x40, 0x96) || within(0x9F, 0xB6) || within(0xBF, 0xD6);
    case 0x84:
      return within(0x40, 0x60) || within(0x70, 0x91) || within(0x9F, 0xBE);
    case 0x88:
      return trail >= 0x9F;
    case 0x98:
      return trail <= 0x72 || trail >= 0x9F;
    case 0xE0:
      return trail >= 0x40;
    case 0xEA:
      return trail <= 0xA4;
    default:
      return (lead >= 0x89 && lead <= 0x9F) || (lead >= 0xE1 && lead <= 0xE9);
  }
}

// 95 printing characters, and 64 codes of which the first is no katakana.
bool isAnkByte(unsigned code) { return code - 0x20 < 95 || code - 0xA0 < 64; }

// The Shift_JIS code of a unit as the facts have it; 0 for none.
unsigned factOf(unsigned unit) {
  const auto entry = sjisFactsReversed().find(static_cast<uint16_t>(unit));
  return entry == sjisFactsReversed().end() ? 0 : entry->second;
}

// Asks a predicate for every unit, and compares with what it should answer.
template <class Wanted>
void expectForEveryUnit(int (*predicate)(uint16_t), Wanted wanted) {
  for (unsigned unit = 0; unit < 0x10000; ++unit) {
    ASSERT_EQ(predicate(static_cast<uint16_t>(unit)), static_cast<int>(wanted(unit)))
        << std::hex << unit;
  }
}

// For the predicates that return the unit itself.
template <class Holds>
void expectItselfForEveryUnit(int (*predicate)(uint16_t), Holds holds) {
  expectForEveryUnit(predicate, [&](unsigned unit) { return holds(unit) ? unit : 0; });
}

}  // namespace

TEST(CharacterClass, tells_ascii_letters_and_digits) {
  expectForEveryUnit(KSV_isucs2alnum, [](unsigned unit) {
    return isOneOf(kLetters, unit) || isOneOf(kDigits, unit);
  });
  expectForEveryUnit(KSV_isucs2digit, [](unsigned unit) { return isOneOf(kDigits, unit); });
}

TEST(CharacterClass, tells_ascii) {
  expectForEveryUnit(KSV_isucs2ascii, [](unsigned unit) { return unit / 0x80 == 0; });
}

TEST(CharacterClass, tells_control_codes) {
  expectForEveryUnit(KSV_isucs2cntrl,
                     [](unsigned unit) { return unit / 0x20 == 0 || unit == 0x7F; });
}

TEST(CharacterClass, tells_full_width_forms_of_ascii_from_ascii) {
  EXPECT_EQ(KSV_isucs2alnum(0xFF21), 0);
  EXPECT_EQ(KSV_isucs2digit(0xFF11), 0);
}

TEST(JisClass, agrees_with_a_look_at_each_lead_byte_for_every_code) {
  expectItselfForEveryUnit(KSV_isjis,
                           [](unsigned code) { return isJisPair(code >> 8, code & 0xFF); });
}

TEST(JisClass, has_exactly_the_characters_among_pairs_with_a_trail_byte) {
  for (unsigned code = 0x100; code < 0x10000; ++code) {
    const unsigned trail = code & 0xFF;
    if (trail < 0x40 || trail == 0x7F || trail == 0xFD) continue;
    const auto unit = static_cast<uint16_t>(code);
    ASSERT_EQ(KSV_isjis(unit), sjisFacts().contains(unit) ? code : 0) << std::hex << code;
  }
}

TEST(JisClass, has_gaps_and_borders) {
  EXPECT_EQ(KSV_isjis(0x8140), 0x8140);
  EXPECT_EQ(KSV_isjis(0x813F), 0);
  EXPECT_EQ(KSV_isjis(0x81AC), 0x81AC);
  EXPECT_EQ(KSV_isjis(0x81AD), 0);
  EXPECT_EQ(KSV_isjis(0x81FC), 0x81FC);
  EXPECT_EQ(KSV_isjis(0x9872), 0x9872);
  EXPECT_EQ(KSV_isjis(0x9873), 0);
  EXPECT_EQ(KSV_isjis(0xEAA4), 0xEAA4);
  EXPECT_EQ(KSV_isjis(0xEAA5), 0);
  EXPECT_EQ(KSV_isjis(0xE03F), 0);
}

TEST(JisClass, has_no_single_bytes) {
  for (uint16_t code = 0; code < 0x100; ++code) EXPECT_EQ(KSV_isjis(code), 0);
}

TEST(JisClass, takes_all_trail_bytes_from_0x30_between_two_rows_of_a_range) {
  EXPECT_EQ(KSV_isjis(0x8930), 0x8930);
  EXPECT_EQ(KSV_isjis(0x892F), 0);
  EXPECT_EQ(KSV_isjis(0x897F), 0x897F);
  EXPECT_EQ(KSV_isjis(0x89FC), 0x89FC);
  EXPECT_EQ(KSV_isjis(0x89FD), 0);
}

TEST(AnkClass, agrees_with_a_count_from_the_first_for_every_code) {
  expectItselfForEveryUnit(KSV_isank, isAnkByte);
}

TEST(AnkClass, has_0xa0_and_no_delete) {
  EXPECT_EQ(KSV_isank(0xA0), 0xA0);
  EXPECT_EQ(KSV_isank(0x7F), 0);
  EXPECT_EQ(KSV_isank(0x20), 0x20);
  EXPECT_EQ(KSV_isank(0x1F), 0);
  EXPECT_EQ(KSV_isank(0xDF), 0xDF);
  EXPECT_EQ(KSV_isank(0xE0), 0);
  EXPECT_EQ(KSV_isank(0x0141), 0);
}

TEST(UnicodeJisClass, goes_by_the_shift_jis_code_of_every_unit) {
  expectItselfForEveryUnit(KSV_isucs2jis, [](unsigned unit) {
    const unsigned code = factOf(unit);
    return isJisPair(code >> 8, code & 0xFF);
  });
  expectItselfForEveryUnit(KSV_isucs2ank, [](unsigned unit) { return isAnkByte(factOf(unit)); });
}

TEST(UnicodeJisClass, takes_the_characters_that_are_only_written) {
  EXPECT_EQ(KSV_isucs2jis(0x00B7), 0x00B7);
  EXPECT_EQ(KSV_isucs2ank(0x00AD), 0x00AD);
  EXPECT_EQ(KSV_isucs2ank(0x203E), 0x203E);
}

TEST(UnicodeJisClass, takes_half_width_katakana_for_single_bytes) {
  EXPECT_EQ(KSV_isucs2ank(0xFF61), 0xFF61);
  EXPECT_EQ(KSV_isucs2ank(0xFF9F), 0xFF9F);
  EXPECT_EQ(KSV_isucs2jis(0xFF61), 0);
}

// In the mapping hiragana and katakana stand in the order of Unicode.
TEST(KanaClass, is_a_run_of_units_that_the_mapping_has) {
  expectItselfForEveryUnit(KSV_isucs2zenhira,
                           [](unsigned unit) { return unit >= 0x3041 && unit <= 0x3093; });
  expectItselfForEveryUnit(KSV_isucs2zenkata,
                           [](unsigned unit) { return unit >= 0x30A1 && unit <= 0x30F6; });
}

TEST(KanaClass, has_neither_marks_nor_half_width_forms) {
  EXPECT_EQ(KSV_isucs2zenkata(0x30FC), 0) << "the prolonged sound mark";
  EXPECT_EQ(KSV_isucs2zenkata(0xFF71), 0);
  EXPECT_EQ(KSV_isucs2zenhira(0x309B), 0) << "the voiced sound mark";
  EXPECT_EQ(KSV_isucs2zenhira(0x3094), 0) << "vu, which JIS X 0208 lacks";
}
