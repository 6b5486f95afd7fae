#include "cconv/engine/shift_jis_codes.h"
#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

using ksv::jisX0208ToShiftJis;
using ksv::jisX0213ToShiftJis2004;
using ksv::shiftJis2004ToJisX0213;
using ksv::shiftJisToJisX0208;

TEST(ShiftJisTransforms, every_pair_of_jis_x0208_goes_there_and_back) {
  int pairs = 0;
  for (uint32_t row = 0x21; row <= 0x7E; ++row) {
    for (uint32_t cell = 0x21; cell <= 0x7E; ++cell, ++pairs) {
      const uint32_t code = row << 8 | cell;
      EXPECT_EQ(shiftJisToJisX0208(jisX0208ToShiftJis(code)), code);
    }
  }
  EXPECT_EQ(pairs, 94 * 94);
}

TEST(ShiftJisTransforms, every_code_of_jis_x0213_goes_there_and_back) {
  int pairs = 0;
  for (uint32_t plane : {0x00000u, 0x10000u}) {
    for (uint32_t row = 0x21; row <= 0x7E; ++row) {
      for (uint32_t cell = 0x21; cell <= 0x7E; ++cell) {
        const uint32_t code = plane | row << 8 | cell;
        // Rows 64 to 77 of plane 2 hold nothing; the arithmetic covers them all the same.
        if (plane != 0 && row >= 0x60 && row <= 0x6D) continue;
        const uint32_t pair = jisX0213ToShiftJis2004(code);
        if (pair == 0) continue;
        EXPECT_EQ(shiftJis2004ToJisX0213(pair), code) << std::hex << code;
        ++pairs;
      }
    }
  }
  // 94 rows of plane 1 and 26 of plane 2: two a lead byte.
  EXPECT_EQ(pairs, (94 + 26) * 94);
}

TEST(ShiftJisTransforms, codes_below_100_pass_unchanged) {
  for (uint32_t code = 0; code < 0x100; ++code) {
    EXPECT_EQ(shiftJisToJisX0208(code), code);
    EXPECT_EQ(shiftJis2004ToJisX0213(code), code);
    EXPECT_EQ(jisX0208ToShiftJis(code), code);
    EXPECT_EQ(jisX0213ToShiftJis2004(code), code);
  }
}

TEST(ShiftJisTransforms, bad_lead_and_trail_bytes_give_no_code) {
  for (const uint32_t pair : {0x8040u, 0xA040u, 0xDF40u, 0xFD40u, 0x817Fu, 0x813Fu, 0x81FDu}) {
    EXPECT_EQ(shiftJisToJisX0208(pair), 0u) << std::hex << pair;
    EXPECT_EQ(shiftJis2004ToJisX0213(pair), 0u) << std::hex << pair;
  }
}

TEST(ShiftJisTransforms, leads_from_f0_give_rows_beyond_7e) {
  EXPECT_EQ(shiftJisToJisX0208(0xF040), 0x7F21u);
  EXPECT_EQ(shiftJisToJisX0208(0xFCFC), 0x987Eu);
  EXPECT_EQ(jisX0208ToShiftJis(0x987E), 0xFCFCu);
  EXPECT_EQ(shiftJis2004ToJisX0213(0xF040), 0x12121u);
  EXPECT_EQ(shiftJis2004ToJisX0213(0xF09F), 0x12821u);
  EXPECT_EQ(shiftJis2004ToJisX0213(0xFCFC), 0x17E7Eu);
}

TEST(ShiftJisTransforms, codes_outside_the_rows_give_no_pair) {
  EXPECT_EQ(jisX0208ToShiftJis(0x2120), 0u);
  EXPECT_EQ(jisX0208ToShiftJis(0x987F), 0u);
  EXPECT_EQ(jisX0208ToShiftJis(0x12121), 0u);
  // Rows 2 and 7 of plane 2 do not exist; cells end at 7E.
  EXPECT_EQ(jisX0213ToShiftJis2004(0x12221), 0u);
  EXPECT_EQ(jisX0213ToShiftJis2004(0x12721), 0u);
  EXPECT_EQ(jisX0213ToShiftJis2004(0x2120), 0u);
  EXPECT_EQ(jisX0213ToShiftJis2004(0x217F), 0u);
  EXPECT_EQ(jisX0213ToShiftJis2004(0x227F), 0u);
  EXPECT_EQ(jisX0213ToShiftJis2004(0x7F21), 0u);
  EXPECT_EQ(jisX0213ToShiftJis2004(0x22121), 0u);
}

using ShiftJis = ConversionTest;

TEST_F(ShiftJis, five_c_is_decoded_through_the_latin_group) {
  Converter converter({"Shift_JIS", "UTF-8"});
  converter.give("\\~", 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.written(), "\\~");
  EXPECT_EQ(converter.record.decodedGroup, 2002u);
}

TEST_F(ShiftJis, katakana_bytes_are_one_character_each) {
  EXPECT_EQ(hex(convertWhole({"Shift_JIS", "UTF-16"}, bytes("A1 DF")).output), "FF 61 FF 9F");
  EXPECT_EQ(hex(convertWhole({"UTF-16", "Shift_JIS"}, bytes("FF 61 FF 9F")).output), "A1 DF");
}

TEST_F(ShiftJis, a_lead_byte_at_the_end_waits) {
  for (const char* lead : {"80", "81", "9F", "A0", "E0", "FC", "FD", "FF"}) {
    EXPECT_EQ(convertWhole({"Shift_JIS", "UTF-8"}, "A" + bytes(lead)), (Result{12, 1, "A"}));
    EXPECT_EQ(convertWhole({"WINDOWS31J", "UTF-8"}, "A" + bytes(lead)), (Result{12, 1, "A"}));
  }
}

TEST_F(ShiftJis, an_invalid_pair_moves_one_byte) {
  for (const char* pair : {"81 7F", "81 20", "80 41", "A0 41", "FD 41", "85 40", "F0 40"}) {
    Converter converter({"Shift_JIS", "UTF-8"});
    converter.give(bytes(pair), 10);
    EXPECT_EQ(converter.convert(), 13u) << pair;
    EXPECT_EQ(converter.record.inputPosition, 1) << pair;
    EXPECT_EQ(converter.record.charactersRead, 0) << pair;
  }
}

TEST_F(ShiftJis, windows_finds_its_extension_rows_in_their_groups) {
  struct Case {
    const char* pair;
    uint32_t group;
    const char* unicode;
  };
  for (const Case& c :
       {Case{"82 A0", 2006, "30 42"}, Case{"87 40", 2008, "24 60"}, Case{"FA 40", 2009, "21 70"},
        Case{"ED 40", 2012, "7E 8A"}, Case{"F0 40", 3001, "E0 00"}, Case{"F9 FC", 3001, "E7 57"}}) {
    Converter converter({"WINDOWS31J", "UTF-16"});
    converter.give(bytes(c.pair), 10);
    EXPECT_EQ(converter.convert(), 0u) << c.pair;
    EXPECT_EQ(converter.record.decodedGroup, c.group) << c.pair;
    EXPECT_EQ(hex(converter.written()), c.unicode) << c.pair;
  }
}

TEST_F(ShiftJis, pairs_of_2004_with_two_characters) {
  Converter converter({"Shift_JIS-2004", "UTF-16"});
  converter.give(bytes("82 F5"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "30 4B 30 9A");
  EXPECT_EQ(converter.record.groupCode, 0x2477u);
  EXPECT_EQ(converter.record.unicodeCode, 0x304Bu);
  EXPECT_EQ(converter.record.secondCode, 0x309Au);
}

TEST_F(ShiftJis, composed_codes_stay_composed_in2004) {
  Converter converter({"Shift_JIS-2004", "Shift_JIS-2004"});
  converter.give(bytes("82 F5"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "82 F5");
  EXPECT_EQ(converter.record.outputCode, 0x2477u);
  EXPECT_EQ(converter.record.secondCode, 0u);
  EXPECT_EQ(converter.record.outputWidth, 4u);
}

TEST_F(ShiftJis, plane_two_of_2004) {
  EXPECT_EQ(hex(convertWhole({"Shift_JIS-2004", "UTF-8"}, bytes("F0 40")).output), "F0 A0 82 89");
  EXPECT_EQ(hex(convertWhole({"UTF-8", "Shift_JIS-2004"}, "\xF0\xA0\x82\x89").output), "F0 40");
}

TEST_F(ShiftJis, groups_in_common_pass_their_codes_on) {
  Converter converter({"WINDOWS31J", "Shift_JIS"});
  converter.give(bytes("81 60 87 40"), 10);
  EXPECT_EQ(converter.convert(), 23u);
  EXPECT_EQ(converter.record.inputPosition, 4);
  EXPECT_EQ(hex(converter.written()), "81 60");
}

}  // namespace
}  // namespace ksv_test
