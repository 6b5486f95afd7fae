#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

class Ucs2 : public ConversionTest {
 protected:
  static Conversion toUcs2(uint16_t supplementaryMode, const char* source = "UTF-8") {
    Conversion setup{source, "ISO-10646-UCS-2"};
    setup.options.supplementaryMode = supplementaryMode;
    return setup;
  }
  // The written units as text, when all of them are ASCII.
  static std::string text(const Bytes& units) {
    std::string narrow;
    for (size_t i = 1; i < units.size(); i += 2) narrow += units[i - 1] == 0 ? units[i] : '?';
    return narrow;
  }
};

TEST_F(Ucs2, supplementary_characters_are_refused_or_referred_to) {
  const Bytes emoji = "\xF0\x9F\x98\x80";
  EXPECT_EQ(convertWhole(toUcs2(0), emoji), (Result{23, 4, ""}));
  EXPECT_EQ(text(convertWhole(toUcs2(1), emoji).output), "&#x1F600;");
  EXPECT_EQ(text(convertWhole(toUcs2(2), emoji).output), "&#128512;");
  EXPECT_EQ(text(convertWhole(toUcs2(65535), emoji).output), "&#128512;");
}

TEST_F(Ucs2, each_character_of_a_reference_is_a_unit) {
  Converter converter(toUcs2(1));
  converter.give("\xF0\x9F\x98\x80", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.unitsWritten, 9);
  EXPECT_EQ(converter.record.charactersRead, 1);
}

TEST_F(Ucs2, a_reference_that_would_fill_the_output_exactly_is_refused) {
  Converter converter(toUcs2(1));
  converter.give("\xF0\x9F\x98\x80", 18);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0);
  EXPECT_EQ(converter.record.inputPosition, 0);
  converter.drain(19);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(text(converter.written()), "&#x1F600;");
}

TEST_F(Ucs2, modes_refer_to_all_that_windows31j_lacks) {
  // U+0E01 is no character of Windows-31J, U+2460 (NEC row 13) and U+3042 are.
  EXPECT_EQ(text(convertWhole(toUcs2(1), "\xE0\xB8\x81").output), "&#xE01;");
  EXPECT_EQ(text(convertWhole(toUcs2(2), "\xE0\xB8\x81").output), "&#3585;");
  EXPECT_EQ(hex(convertWhole(toUcs2(1), "\xE2\x91\xA0\xE3\x81\x82").output), "24 60 30 42");
  EXPECT_EQ(hex(convertWhole(toUcs2(0), "\xE0\xB8\x81").output), "0E 01");
}

TEST_F(Ucs2, the_repertoire_of_the_private_use_area_ends_at_e758) {
  EXPECT_EQ(hex(convertWhole(toUcs2(1), "\xEE\x9D\x98").output), "E7 58");
  EXPECT_EQ(text(convertWhole(toUcs2(1), "\xEE\x9D\x99").output), "&#xE759;");
}

TEST_F(Ucs2, the_repertoire_of_the_full_and_half_width_forms_has_gaps) {
  const auto isReferredTo = [](uint32_t unit) {
    const Bytes input = {static_cast<char>(unit >> 8), static_cast<char>(unit)};
    const Bytes output = convertWhole(toUcs2(1, "UTF-16"), input).output;
    EXPECT_TRUE(output == input || text(output).starts_with("&#xFF")) << hex(output);
    return output != input;
  };
  for (const uint32_t inside : {0xFF01, 0xFF5E, 0xFF61, 0xFF9F, 0xFFE0, 0xFFE2, 0xFFE5})
    EXPECT_FALSE(isReferredTo(inside)) << std::hex << inside;
  for (const uint32_t outside :
       {0xFF00, 0xFF5F, 0xFF60, 0xFFA0, 0xFFDF, 0xFFE3, 0xFFE4, 0xFFE6, 0xFFFE})
    EXPECT_TRUE(isReferredTo(outside)) << std::hex << outside;
}

TEST_F(Ucs2, the_repertoire_of_the_full_width_forms_is_their_ranges) {
  EXPECT_EQ(hex(convertWhole(toUcs2(1), "\xEF\xBC\x81").output), "FF 01");
  EXPECT_EQ(text(convertWhole(toUcs2(1), "\xEF\xBC\x80").output), "&#xFF00;");
  EXPECT_EQ(text(convertWhole(toUcs2(1), "\xEF\xBD\x9F").output), "&#xFF5F;");
  EXPECT_EQ(hex(convertWhole(toUcs2(1), "\xEF\xBF\xA5").output), "FF E5");
  EXPECT_EQ(text(convertWhole(toUcs2(1), "\xEF\xBF\xA3").output), "&#xFFE3;");
}

TEST_F(Ucs2, a_character_of_a_japanese_group_is_in_the_repertoire) {
  // FFE3 fails as a Unicode code, but 8150 comes from JIS X 0208.
  EXPECT_EQ(hex(convertWhole(toUcs2(1, "Shift_JIS"), bytes("81 50")).output), "FF E3");
}

TEST_F(Ucs2, a_replacement_is_written_as_itself) {
  Conversion setup = toUcs2(1);
  setup.options.replaceUnmappable = 1;
  setup.options.narrowReplacement = '?';
  setup.options.wideReplacement = 0x0E01;
  EXPECT_EQ(hex(convertWhole(setup, "\xE0\xB8\x81").output), "0E 01");
}

TEST_F(Ucs2, the_mark_is_never_a_reference) {
  Conversion setup = toUcs2(1);
  setup.options.writeByteOrderMark = 1;
  EXPECT_EQ(hex(convertWhole(setup, "A").output), "FE FF 00 41");
}

TEST_F(Ucs2, surrogates_are_no_characters) {
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-2", "UTF-8"}, bytes("00 41 D8 3D 00 42")),
            (Result{13, 2, "A"}));
  Conversion skipping{"ISO-10646-UCS-2", "UTF-8"};
  skipping.parameters[2] = 1;
  EXPECT_EQ(convertWhole(skipping, bytes("00 41 D8 3D 00 42")), (Result{0, 6, "AB"}));
}

TEST_F(Ucs2, an_odd_byte_at_the_end_waits) {
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-2", "UTF-8"}, bytes("00 41 00")), (Result{12, 2, "A"}));
}

TEST_F(Ucs2, byte_order_of_input_and_output) {
  Conversion setup{"ISO-10646-UCS-2", "ISO-10646-UCS-2"};
  setup.parameters[0] = 0;
  EXPECT_EQ(hex(convertWhole(setup, bytes("42 30")).output), "30 42");
}

TEST_F(Ucs2, nul_is_a_character) {
  EXPECT_EQ(hex(convertWhole({"ISO-10646-UCS-2", "UTF-8"}, bytes("00 00 00 41")).output), "00 41");
  EXPECT_EQ(hex(convertWhole({"UTF-8", "ISO-10646-UCS-2"}, Bytes(1, '\0')).output), "00 00");
}

}  // namespace
}  // namespace ksv_test
