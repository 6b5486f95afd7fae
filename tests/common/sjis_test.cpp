#include "ksv_sjis.h"

#include <gtest/gtest.h>

#include "tests/common/sjis_facts.h"

using ksv::test::SjisMap;
using ksv::test::sjisFacts;
using ksv::test::sjisFactsReversed;

namespace {

constexpr unsigned kCodes = 0x10000;

uint16_t valueIn(const SjisMap& map, unsigned key) {
  const auto entry = map.find(static_cast<uint16_t>(key));
  return entry == map.end() ? 0 : entry->second;
}

}  // namespace

TEST(SjisToUnicode, agrees_with_the_facts_for_every_code) {
  for (unsigned code = 0; code < kCodes; ++code) {
    ASSERT_EQ(KSV_sjistounicode(static_cast<uint16_t>(code)), valueIn(sjisFacts(), code))
        << std::hex << code;
  }
}

TEST(SjisToUnicode, maps_7037_codes) {
  int mapped = 0;
  for (unsigned code = 0; code < kCodes; ++code) {
    mapped += KSV_sjistounicode(static_cast<uint16_t>(code)) != 0;
  }
  EXPECT_EQ(mapped, 7037);
}

TEST(SjisToUnicode, begins_at_0x20) {
  for (uint16_t code = 0; code < 0x20; ++code) EXPECT_EQ(KSV_sjistounicode(code), 0);
  EXPECT_EQ(KSV_sjistounicode(0x20), 0x20);
}

TEST(SjisToUnicode, leaves_ascii_as_it_is) {
  EXPECT_EQ(KSV_sjistounicode(0x5C), 0x5C);
  EXPECT_EQ(KSV_sjistounicode(0x7E), 0x7E);
}

TEST(SjisToUnicode, gives_half_width_katakana) {
  EXPECT_EQ(KSV_sjistounicode(0xA1), 0xFF61);
  EXPECT_EQ(KSV_sjistounicode(0xDF), 0xFF9F);
}

TEST(SjisToUnicode, follows_windows) {
  EXPECT_EQ(KSV_sjistounicode(0x8140), 0x3000);
  EXPECT_EQ(KSV_sjistounicode(0x815C), 0x2015);
  EXPECT_EQ(KSV_sjistounicode(0x815F), 0xFF3C);
  EXPECT_EQ(KSV_sjistounicode(0x8160), 0xFF5E);
  EXPECT_EQ(KSV_sjistounicode(0x8161), 0x2225);
  EXPECT_EQ(KSV_sjistounicode(0x817C), 0xFF0D);
  EXPECT_EQ(KSV_sjistounicode(0x8191), 0xFFE0);
  EXPECT_EQ(KSV_sjistounicode(0xEAA4), 0x7199);
}

TEST(SjisToUnicode, knows_no_other_single_bytes) {
  for (unsigned code = 0x7F; code <= 0xA0; ++code) {
    EXPECT_EQ(KSV_sjistounicode(static_cast<uint16_t>(code)), 0) << std::hex << code;
  }
  for (unsigned code = 0xE0; code <= 0xFF; ++code) {
    EXPECT_EQ(KSV_sjistounicode(static_cast<uint16_t>(code)), 0) << std::hex << code;
  }
}

TEST(SjisToUnicode, knows_no_extensions_and_no_user_defined_codes) {
  for (const int code : {0x8740, 0x8754, 0x879C, 0xEAA5, 0xED40, 0xEEFC, 0xF040, 0xF9FC, 0xFA40,
                         0xFC4B, 0xFFFF}) {
    EXPECT_EQ(KSV_sjistounicode(static_cast<uint16_t>(code)), 0) << std::hex << code;
  }
}

TEST(UnicodeToSjis, agrees_with_the_facts_for_every_unit) {
  for (unsigned unit = 0; unit < kCodes; ++unit) {
    ASSERT_EQ(KSV_unicodetosjis(static_cast<uint16_t>(unit)), valueIn(sjisFactsReversed(), unit))
        << std::hex << unit;
  }
}

TEST(UnicodeToSjis, turns_every_code_back) {
  for (unsigned code = 0x20; code < kCodes; ++code) {
    const uint16_t unit = KSV_sjistounicode(static_cast<uint16_t>(code));
    if (unit == 0) continue;
    ASSERT_EQ(KSV_unicodetosjis(unit), code) << std::hex << code;
  }
}

TEST(UnicodeToSjis, writes_three_characters_more_than_are_read) {
  SjisMap oneWay;
  for (unsigned unit = 0; unit < kCodes; ++unit) {
    const uint16_t code = KSV_unicodetosjis(static_cast<uint16_t>(unit));
    if (code != 0 && KSV_sjistounicode(code) != unit) oneWay[static_cast<uint16_t>(unit)] = code;
  }
  EXPECT_EQ(oneWay, (SjisMap{{0x00AD, 0x2D}, {0x00B7, 0x8145}, {0x203E, 0x7E}}));
}

TEST(UnicodeToSjis, gives_codes_of_two_bytes) {
  EXPECT_EQ(KSV_unicodetosjis(0x3042), 0x82A0);
  EXPECT_EQ(KSV_unicodetosjis(0x8868), 0x955C);
  EXPECT_EQ(KSV_unicodetosjis(0xFF5E), 0x8160);
}

TEST(UnicodeToSjis, takes_nothing_for_similar) {
  EXPECT_EQ(KSV_unicodetosjis(0x301C), 0) << "the wave dash is the full-width tilde's code";
  EXPECT_EQ(KSV_unicodetosjis(0x2016), 0);
  EXPECT_EQ(KSV_unicodetosjis(0x2212), 0);
  EXPECT_EQ(KSV_unicodetosjis(0x00A5), 0);
  EXPECT_EQ(KSV_unicodetosjis(0x2460), 0) << "a circled figure of row 13";
}

TEST(UnicodeToSjis, begins_at_0x20) {
  for (uint16_t unit = 0; unit < 0x20; ++unit) EXPECT_EQ(KSV_unicodetosjis(unit), 0);
  EXPECT_EQ(KSV_unicodetosjis(0x20), 0x20);
  EXPECT_EQ(KSV_unicodetosjis(0x7F), 0);
}
