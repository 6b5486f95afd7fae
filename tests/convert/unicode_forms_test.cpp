#include <cstring>

#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

using UnicodeForms = ConversionTest;

Conversion littleEndian(const char* source, const char* target) {
  Conversion setup{source, target};
  setup.options.outputBigEndian = 0;
  setup.parameters[0] = 0;
  return setup;
}

Bytes toUcs4(const char* source, const Bytes& input) {
  return convertWhole({source, "ISO-10646-UCS-4"}, input).output;
}

TEST_F(UnicodeForms, surrogate_pairs_are_read_in_either_order) {
  EXPECT_EQ(hex(toUcs4("UTF-16", bytes("D8 3D DE 00"))), "00 01 F6 00");
  EXPECT_EQ(hex(toUcs4("UTF-16", bytes("DE 00 D8 3D"))), "00 01 F6 00");
}

TEST_F(UnicodeForms, a_surrogate_takes_any_unit_behind_it) {
  // (D83D - D7F7) * 400 + 41, and (41 - D7F7) * 400 + DE00 mod 2^32.
  EXPECT_EQ(hex(toUcs4("UTF-16", bytes("D8 3D 00 41"))), "00 01 18 41");
  EXPECT_EQ(hex(toUcs4("UTF-16", bytes("DE 00 00 41"))), "FC A2 06 00");
}

TEST_F(UnicodeForms, a_cut_pair_waits_at_its_first_unit) {
  EXPECT_EQ(convertWhole({"UTF-16", "UTF-8"}, bytes("00 41 D8 3D")), (Result{12, 2, "A"}));
  EXPECT_EQ(convertWhole({"UTF-16", "UTF-8"}, bytes("00 41 00")), (Result{12, 2, "A"}));
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "UTF-8"}, bytes("00 00 00")), (Result{12, 0, ""}));
}

TEST_F(UnicodeForms, utf8_reads_overlong_forms_and_stray_bytes) {
  EXPECT_EQ(hex(toUcs4("UTF-8", bytes("C0 80"))), "00 00 00 00");
  EXPECT_EQ(hex(toUcs4("UTF-8", bytes("80"))), "00 00 00 80");
  EXPECT_EQ(hex(toUcs4("UTF-8", bytes("C1 41"))), "00 00 00 41");
  EXPECT_EQ(hex(toUcs4("UTF-8", bytes("ED A0 80"))), "00 00 D8 00");
  EXPECT_EQ(hex(toUcs4("UTF-8", bytes("F8 88 80 80 80"))), "00 20 00 00");
  EXPECT_EQ(hex(toUcs4("UTF-8", bytes("FD BF BF BF BF BF"))), "7F FF FF FF");
}

TEST_F(UnicodeForms, utf8_passes_over_fe_and_ff) {
  EXPECT_EQ(convertWhole({"UTF-8", "UTF-8"}, bytes("41 FE FF 42")), (Result{0, 4, "AB"}));
  EXPECT_EQ(convertWhole({"UTF-8", "UTF-8"}, bytes("41 FE FF")), (Result{0, 3, "A"}));
  EXPECT_EQ(convertWhole({"UTF-8", "UTF-8"}, bytes("FE E3 81")), (Result{12, 1, ""}));
  // Between a base and its mark, too.
  EXPECT_EQ(hex(convertWhole({"UTF-8", "Shift_JIS-2004"}, bytes("E3 81 8B FF E3 82 9A")).output),
            "82 F5");
}

TEST_F(UnicodeForms, utf8_writes_values_of_every_length) {
  const auto toUtf8 = [](const char* ucs4) {
    return hex(convertWhole({"ISO-10646-UCS-4", "UTF-8"}, bytes(ucs4)).output);
  };
  EXPECT_EQ(toUtf8("00 00 00 7F"), "7F");
  EXPECT_EQ(toUtf8("00 00 00 80"), "C2 80");
  EXPECT_EQ(toUtf8("00 00 07 FF"), "DF BF");
  EXPECT_EQ(toUtf8("00 00 08 00"), "E0 A0 80");
  EXPECT_EQ(toUtf8("00 00 FF FF"), "EF BF BF");
  EXPECT_EQ(toUtf8("00 01 00 00"), "F0 90 80 80");
  EXPECT_EQ(toUtf8("00 1F FF FF"), "F7 BF BF BF");
  EXPECT_EQ(toUtf8("00 20 00 00"), "F8 88 80 80 80");
  EXPECT_EQ(toUtf8("03 FF FF FF"), "FB BF BF BF BF");
  EXPECT_EQ(toUtf8("04 00 00 00"), "FC 84 80 80 80 80");
  EXPECT_EQ(toUtf8("7F FF FF FF"), "FD BF BF BF BF BF");
}

TEST_F(UnicodeForms, values_that_a_form_cannot_write_are_unmappable) {
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "UTF-8"}, bytes("80 00 00 00")), (Result{23, 4, ""}));
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "UTF-16"}, bytes("00 11 00 00")), (Result{23, 4, ""}));
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "UTF-16"}, bytes("00 10 FF FF")),
            (Result{0, 4, bytes("DB FF DF FF")}));
}

TEST_F(UnicodeForms, a_pair_is_whole_or_not_there) {
  Converter converter({"UTF-8", "UTF-16"});
  converter.give("\xF0\x9F\x98\x80", 3);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0);
  EXPECT_EQ(converter.record.unitsWritten, 0);
  converter.drain(4);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.unitsWritten, 2);
  EXPECT_EQ(converter.record.charactersRead, 1);
}

TEST_F(UnicodeForms, marks_are_found_once_and_decide_the_byte_order) {
  struct Case {
    const char* source;
    const char* input;
    uint32_t bigEndian;
  };
  for (const Case& c :
       {Case{"UTF-16", "FE FF 00 41", 1}, Case{"UTF-16", "FF FE 41 00", 0},
        Case{"ISO-10646-UCS-2", "FE FF 00 41", 1}, Case{"ISO-10646-UCS-2", "FF FE 41 00", 0},
        Case{"ISO-10646-UCS-4", "00 00 FE FF 00 00 00 41", 1},
        Case{"ISO-10646-UCS-4", "FF FE 00 00 41 00 00 00", 0}, Case{"UTF-8", "EF BB BF 41", 1}}) {
    Conversion setup{c.source, "UTF-8"};
    setup.parameters = {c.bigEndian == 0, 1, 0};
    Converter converter(setup);
    converter.give(bytes(c.input), 10);
    EXPECT_EQ(converter.convert(), 0u) << c.source;
    EXPECT_EQ(converter.written(), "A") << c.source;
    EXPECT_EQ(converter.record.inputBigEndian, c.bigEndian) << c.source;
    EXPECT_EQ(converter.record.detectByteOrderMark, 0u) << c.source;
    EXPECT_EQ(converter.record.charactersRead, 1) << c.source;
  }
}

TEST_F(UnicodeForms, without_a_mark_nothing_is_skipped_and_the_look_ends) {
  Conversion setup{"UTF-16", "UTF-8"};
  setup.parameters[1] = 1;
  Converter converter(setup);
  converter.give(bytes("00 41 FE FF"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "41 EF BB BF");
  EXPECT_EQ(converter.record.detectByteOrderMark, 0u);
}

TEST_F(UnicodeForms, one_mark_byte_makes_a_mark_of_a_utf16_pair) {
  Conversion setup{"UTF-16", "UTF-8"};
  setup.parameters = {1, 1, 0};
  EXPECT_EQ(convertWhole(setup, bytes("FF 41 42 00")).output, "B");
  EXPECT_EQ(convertWhole(setup, bytes("41 FE 42 00")).output, "B");
  EXPECT_EQ(convertWhole(setup, bytes("FE 41 00 42")).output, "B");
}

TEST_F(UnicodeForms, too_few_bytes_for_a_mark_keep_looking_for_it) {
  for (const char* source : {"UTF-16", "ISO-10646-UCS-2", "ISO-10646-UCS-4", "UTF-8"}) {
    Conversion setup{source, "UTF-8"};
    setup.parameters[1] = 1;
    Converter converter(setup);
    converter.give("A", 10);
    EXPECT_EQ(converter.convert(), 12u) << source;
    EXPECT_EQ(converter.record.detectByteOrderMark, 1u) << source;
    EXPECT_EQ(converter.record.inputPosition, 0) << source;
  }
}

TEST_F(UnicodeForms, a_mark_is_no_character_between_two_raw_codes) {
  Converter converter({"Shift_JIS", "UTF-8"});
  converter.give("AB", 10);
  EXPECT_EQ(converter.convert(), 0u);
  uint32_t parameters[3] = {0, 1, 0};
  EXPECT_EQ(cconvChgCharset(&converter.record, parameters, "UTF-16"), 0u);
  converter.give(bytes("FF FE 41"), 10);
  EXPECT_EQ(converter.convert(), 12u);
  EXPECT_EQ(converter.record.inputPosition, 2);
  EXPECT_EQ(converter.record.previousRawCode, 0x41u);
  EXPECT_EQ(converter.record.rawCode, 0u);
}

TEST_F(UnicodeForms, full_output_behind_an_input_mark_stays_behind_it) {
  Conversion setup{"UTF-8", "UTF-8"};
  setup.parameters[1] = 1;
  Converter converter(setup);
  converter.give(bytes("EF BB BF E3 81 82"), 1);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.inputPosition, 3);
  converter.drain(3);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "E3 81 82");
}

TEST_F(UnicodeForms, marks_are_written_once_before_the_first_character) {
  struct Case {
    const char* target;
    const char* output;
  };
  for (const Case& c : {Case{"UTF-16", "FE FF 00 41 00 42"}, Case{"UTF-8", "EF BB BF 41 42"},
                        Case{"ISO-10646-UCS-2", "FE FF 00 41 00 42"},
                        Case{"ISO-10646-UCS-4", "00 00 FE FF 00 00 00 41 00 00 00 42"}}) {
    Conversion setup{"UTF-8", c.target};
    setup.options.writeByteOrderMark = 1;
    Converter converter(setup);
    converter.give("AB", 100);
    EXPECT_EQ(converter.convert(), 0u);
    EXPECT_EQ(hex(converter.written()), c.output);
    EXPECT_EQ(converter.record.options.writeByteOrderMark, 0u);
    EXPECT_EQ(converter.record.unitsWritten, 3);
  }
}

TEST_F(UnicodeForms, a_utf8_mark_sets_the_output_byte_order) {
  Conversion setup = littleEndian("UTF-8", "UTF-8");
  setup.options.writeByteOrderMark = 1;
  Converter converter(setup);
  converter.give("A", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "EF BB BF 41");
  EXPECT_EQ(converter.record.options.outputBigEndian, 1u);
}

TEST_F(UnicodeForms, a_mark_that_fits_stays_when_its_character_does_not) {
  Conversion setup{"UTF-8", "UTF-16"};
  setup.options.writeByteOrderMark = 1;
  Converter converter(setup);
  converter.give("A", 3);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(hex(converter.written()), "FE FF");
  EXPECT_EQ(converter.record.unitsWritten, 1);
  EXPECT_EQ(converter.record.options.writeByteOrderMark, 0u);
  converter.drain(2);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "FE FF 00 41");
}

TEST_F(UnicodeForms, little_endian_units) {
  EXPECT_EQ(hex(convertWhole(littleEndian("UTF-16", "UTF-16"), bytes("3D D8 00 DE")).output),
            "3D D8 00 DE");
  EXPECT_EQ(hex(convertWhole(littleEndian("UTF-16", "ISO-10646-UCS-4"), bytes("42 30")).output),
            "42 30 00 00");
}

TEST_F(UnicodeForms, a_base_and_its_mark_stay_two_characters_in_unicode) {
  Converter converter({"UTF-8", "UTF-16"});
  converter.give("\xE3\x81\x8B\xE3\x82\x9A", 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "30 4B 30 9A");
  EXPECT_EQ(converter.record.secondCode, 0x309Au);
  EXPECT_EQ(converter.record.charactersRead, 1);
  EXPECT_EQ(converter.record.unitsWritten, 2);
}

TEST_F(UnicodeForms, a_mark_that_does_not_compose_is_a_character_of_its_own) {
  Converter converter({"UTF-8", "UTF-16"});
  converter.give("\xE3\x81\x82\xE3\x82\x9A", 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.charactersRead, 2);
  EXPECT_EQ(converter.record.secondCode, 0u);
}

TEST_F(UnicodeForms, ucs4_does_not_compose) {
  Converter converter({"ISO-10646-UCS-4", "Shift_JIS-2004"});
  converter.give(bytes("00 00 00 E6 00 00 03 00"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "85 7B 86 7B");
}

class LanguageTags : public ConversionTest {
 protected:
  static Conversion tagged(const char* target, const char* defaultLanguage) {
    Conversion setup{"Shift_JIS", target};
    std::strcpy(setup.options.defaultLanguage, defaultLanguage);
    return setup;
  }
};

TEST_F(LanguageTags, none_is_written_before_the_language_changes) {
  Converter converter(tagged("UTF-16", "ja"));
  converter.give("A", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 41");
}

TEST_F(LanguageTags, another_language_is_announced_before_the_next_character) {
  Converter converter(tagged("ISO-10646-UCS-4", "ja"));
  cconvChgLang(&converter.record, "fr");
  converter.give("AB", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()),
            "00 0E 00 01 00 0E 00 66 00 0E 00 72 00 00 00 41 00 00 00 42");
  EXPECT_STREQ(converter.record.emittedLanguage, "fr");
  cconvChgLang(&converter.record, "ja");
  converter.give("C", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 0E 00 01 00 0E 00 7F 00 00 00 43");
}

TEST_F(LanguageTags, an_empty_language_is_the_default) {
  Converter converter(tagged("UTF-8", "ja"));
  cconvChgLang(&converter.record, "fr");
  converter.give("A", 100);
  EXPECT_EQ(converter.convert(), 0u);
  cconvChgLang(&converter.record, "");
  converter.give("B", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "F3 A0 80 81 F3 A0 81 BF 42");
  EXPECT_STREQ(converter.record.currentLanguage, "ja");
}

TEST_F(LanguageTags, without_a_default_none_is_written) {
  Converter converter(tagged("UTF-8", ""));
  cconvChgLang(&converter.record, "fr");
  converter.give("A", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.written(), "A");
}

TEST_F(LanguageTags, ucs2_writes_none) {
  Converter converter(tagged("ISO-10646-UCS-2", "ja"));
  cconvChgLang(&converter.record, "fr");
  converter.give("A", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 41");
}

TEST_F(LanguageTags, a_tag_is_whole_or_not_there_and_stays_without_its_character) {
  for (int32_t capacity = 1; capacity < 12; ++capacity) {
    Converter converter(tagged("UTF-8", "ja"));
    cconvChgLang(&converter.record, "fr");
    converter.give(bytes("82 A0"), capacity);
    EXPECT_EQ(converter.convert(), 22u);
    EXPECT_EQ(converter.record.outputPosition, 0) << capacity;
    EXPECT_EQ(converter.record.unitsWritten, 0) << capacity;
    EXPECT_STREQ(converter.record.emittedLanguage, "ja");
  }
  Converter converter(tagged("UTF-8", "ja"));
  cconvChgLang(&converter.record, "fr");
  converter.give(bytes("82 A0"), 14);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 12);
  EXPECT_EQ(converter.record.unitsWritten, 3);
  EXPECT_STREQ(converter.record.emittedLanguage, "fr");
  converter.drain(3);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "F3 A0 80 81 F3 A0 81 A6 F3 A0 81 B2 E3 81 82");
}

TEST_F(LanguageTags, without_a_table_tags_of_the_input_are_characters) {
  const Bytes tag = bytes("F3 A0 80 81 F3 A0 81 A6 41");
  EXPECT_EQ(convertWhole({"UTF-8", "UTF-8"}, tag), (Result{0, 9, tag}));
}

}  // namespace
}  // namespace ksv_test
