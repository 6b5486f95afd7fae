// What the shipped directory cannot show: charsets of the tests' own, with tables
// that refuse values, user-defined groups, groups of every width, and sequences.
#include "tests/convert/own_directory.h"

#include <string>
#include <vector>

#include "cconv/convert/driver.h"
#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

// Unicode sets with a table: letters, hiragana, and no tag characters.
const Group kSmallUnicode = {"small-unicode", 4,
                             "0 0\r\nD D\r\nA A\r\n41 41\r\n42 42\r\n3042 3042\r\n304B 304B"};
const Group kAnyUnicode = {"any-unicode", 4, ""};

std::vector<Charset> smallUnicode() {
  return {{"utf-8", "UTF-8", {kSmallUnicode}},
          {"utf-16", "UTF-16", {kSmallUnicode}},
          {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}};
}

Bytes utf8(uint32_t value) {
  Bytes text;
  text += static_cast<char>(0xF0 | value >> 18);
  for (int shift = 12; shift >= 0; shift -= 6) {
    text += static_cast<char>(0x80 | (value >> shift & 0x3F));
  }
  return text;
}

class TagsOfTheInput : public OwnDirectory {
 protected:
  TagsOfTheInput() { load(smallUnicode()); }

  static Bytes tag(const std::string& language) {
    Bytes text = utf8(0xE0001);
    for (const char c : language) text += utf8(0xE0000u + static_cast<uint8_t>(c));
    return text;
  }
  static Conversion conversion(bool skipInvalid = false) {
    Conversion result{"UTF-8", "ISO-10646-UCS-4"};
    result.parameters[2] = skipInvalid;
    return result;
  }
};

TEST_F(TagsOfTheInput, set_the_current_language_and_deliver_the_next_character) {
  Converter converter(conversion());
  converter.give(tag("fr") + "A", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 00 00 41");
  EXPECT_STREQ(converter.record.currentLanguage, "fr");
  EXPECT_EQ(converter.record.charactersRead, 1);
}

TEST_F(TagsOfTheInput, that_end_with_a_cancel_are_no_character_and_stay_passed) {
  Converter converter(conversion());
  converter.give(tag("fr") + utf8(0xE007F) + "A", 100);
  EXPECT_EQ(converter.convert(), 13u);
  EXPECT_EQ(converter.record.inputPosition, 16);
  EXPECT_STREQ(converter.record.currentLanguage, "fr");
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 00 00 41");
}

TEST_F(TagsOfTheInput, that_the_end_cuts_wait_at_their_beginning) {
  Converter converter(conversion());
  converter.give(tag("fr") + "A", 100);
  converter.showInput(12);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.inputPosition, 0);
  converter.showInput(10);
  EXPECT_EQ(converter.convert(), 12u);
  EXPECT_EQ(converter.record.inputPosition, 0);
  converter.showInput(13);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_STREQ(converter.record.currentLanguage, "fr");
}

TEST_F(TagsOfTheInput, that_a_bad_value_cuts_wait_at_their_beginning_or_are_stepped_over) {
  const Bytes text = tag("fr") + "\xE3\x81\x84" + "A";
  Converter strict(conversion());
  strict.give(text, 100);
  EXPECT_EQ(strict.convert(), 13u);
  EXPECT_EQ(strict.record.inputPosition, 0);
  EXPECT_EQ(convertWhole(conversion(true), text), (Result{0, 16, bytes("00 00 00 41")}));
}

TEST_F(TagsOfTheInput, hold_at_most_259_characters) {
  Converter fits(conversion());
  fits.give(tag(std::string(259, 'a')) + "A", 100);
  EXPECT_EQ(fits.convert(), 0u);
  EXPECT_STREQ(fits.record.currentLanguage, std::string(259, 'a').c_str());
  Converter overflows(conversion());
  overflows.give(tag(std::string(260, 'a')) + "A", 100);
  EXPECT_EQ(overflows.convert(), 13u);
  EXPECT_STREQ(overflows.record.currentLanguage, "");
}

// F3 A0 80 81 F3 A0 81 A6 F3 A0 81 B2 F3 A0 80 81 F3 A0 81 A4 F3 A0 81 A5 42: the inner tag
// stores "de", and then the outer one, for which B is the character behind it, too, "fr".
TEST_F(TagsOfTheInput, inside_each_other_leave_the_outermost_language_behind_a_character) {
  for (const Bytes& text : {tag("fr") + tag("de"), tag("fr") + tag("de") + tag("it")}) {
    Converter converter(conversion());
    converter.give(text + "B", 100);
    EXPECT_EQ(converter.convert(), 0u);
    EXPECT_EQ(hex(converter.written()), "00 00 00 42");
    EXPECT_STREQ(converter.record.currentLanguage, "fr");
    EXPECT_EQ(converter.record.charactersRead, 1);
  }
}

// The cancel is no character for the tags around the innermost, so that they wait as a whole.
TEST_F(TagsOfTheInput, inside_each_other_leave_the_innermost_language_behind_a_cancel) {
  Converter strict(conversion());
  strict.give(tag("fr") + tag("it") + tag("de") + utf8(0xE007F) + "B", 100);
  EXPECT_EQ(strict.convert(), 13u);
  EXPECT_EQ(strict.record.inputPosition, 0);
  EXPECT_STREQ(strict.record.currentLanguage, "de");
  Converter lenient(conversion(true));
  lenient.give(tag("fr") + tag("de") + utf8(0xE007F) + "B", 100);
  EXPECT_EQ(lenient.convert(), 0u);
  EXPECT_EQ(hex(lenient.written()), "00 00 00 42");
  EXPECT_STREQ(lenient.record.currentLanguage, "de");
}

TEST_F(TagsOfTheInput, inside_each_other_hold_259_characters_each) {
  Converter fits(conversion());
  fits.give(tag(std::string(259, 'a')) + tag(std::string(259, 'b')) + "A", 100);
  EXPECT_EQ(fits.convert(), 0u);
  EXPECT_STREQ(fits.record.currentLanguage, std::string(259, 'a').c_str());
  Converter overflows(conversion());
  overflows.give(tag("fr") + tag(std::string(260, 'b')) + "A", 100);
  EXPECT_EQ(overflows.convert(), 13u);
  EXPECT_EQ(overflows.record.inputPosition, 0) << "unlike one by itself";
  EXPECT_STREQ(overflows.record.currentLanguage, "");
}

TEST_F(TagsOfTheInput, inside_each_other_wait_at_the_outermost_for_what_cuts_them) {
  for (const auto& [end, status] :
       {std::pair<Bytes, uint32_t>{"", 0}, {"\xF3\xA0", 12}, {"\xE3\x81\x84", 13}}) {
    Converter converter(conversion());
    converter.give("A" + tag("fr") + tag("de") + end, 100);
    EXPECT_EQ(converter.convert(), status);
    EXPECT_EQ(converter.record.inputPosition, 1) << status;
    EXPECT_STREQ(converter.record.currentLanguage, "") << status;
  }
}

// In time and stack that do not grow with their number.
TEST_F(TagsOfTheInput, are_read_however_many_stand_inside_each_other) {
  Bytes text = tag("fr");
  for (int i = 0; i < 200000; ++i) text += utf8(0xE0001);
  Converter converter(conversion());
  converter.give(text + "A", 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 00 00 41");
  EXPECT_STREQ(converter.record.currentLanguage, "fr");
  EXPECT_EQ(convertWhole(conversion(true), text + utf8(0xE007F) + "A"),
            (Result{0, 800017, bytes("00 00 00 41")}));
  EXPECT_EQ(convertWhole(conversion(), text), (Result{0, 0, ""}));
}

TEST_F(TagsOfTheInput, full_output_behind_a_tag_reads_it_again) {
  Converter converter(conversion());
  converter.give(tag("fr") + "A", 3);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.inputPosition, 0);
  EXPECT_EQ(converter.record.charactersRead, 0);
}

TEST_F(TagsOfTheInput, characters_without_their_tag_pass_without_a_group) {
  Converter converter(conversion());
  converter.give(utf8(0xE0041), 100);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 0E 00 41");
  EXPECT_EQ(converter.record.decodedGroup, 0u);
  EXPECT_EQ(converter.record.decodedGroupType, 0u);
  EXPECT_EQ(converter.record.groupCode, 0xE0041u);
  EXPECT_EQ(converter.record.charactersRead, 0);
}

using SmallUnicode = TagsOfTheInput;

TEST_F(SmallUnicode, a_value_that_no_group_holds_stays_unless_skipped) {
  EXPECT_EQ(convertWhole(conversion(),
                         "A\xE3\x81\x84"
                         "B"),
            (Result{13, 1, bytes("00 00 00 41")}));
  EXPECT_EQ(convertWhole(conversion(true),
                         "A\xE3\x81\x84"
                         "B"),
            (Result{0, 5, bytes("00 00 00 41 00 00 00 42")}));
}

TEST_F(SmallUnicode, every_value_below_80_is_held) {
  EXPECT_EQ(convertWhole(conversion(), "z").status, 0u);
}

TEST_F(SmallUnicode, a_target_with_a_table_refuses_what_it_lacks) {
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "UTF-8"}, bytes("00 00 30 44")).status, 23u);
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "UTF-8"}, bytes("00 00 30 42")).output,
            "\xE3\x81\x82");
}

TEST_F(SmallUnicode, a_table_takes_nul_only_when_a_line_has_it) {
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "UTF-8"}, bytes("00 00 00 00")),
            (Result{0, 4, Bytes(1, '\0')}));
  load({{"with-nul", "SAME", {{"pairs-with-nul", 2, "0 0\r\n41 41"}, {"letter", 1, "42 42"}}},
        {"without", "SAME", {{"pairs-without", 2, "1 1\r\n41 41"}, {"letter", 1, "42 42"}}}});
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "with-nul"}, bytes("00 00 00 00")).output,
            bytes("00 00"));
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "without"}, bytes("00 00 00 00")).output, bytes("00"))
      << "a control code, which goes to the narrowest group";
}

// One-byte and two-byte groups read and written as their own bytes.
const Group kNarrow = {"narrow", 1, "41 41\r\n42 42\r\nD D\r\nA A"};
const Group kWide = {"wide", 2, "8140 3042\r\n8141 3044\r\n8142 1F600"};

class Same : public OwnDirectory {
 protected:
  Same() {
    load({{"mixed", "SAME", {kNarrow, kWide}},
          {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}});
  }
  static Conversion toUcs4(bool skipInvalid = false) {
    Conversion result{"mixed", "ISO-10646-UCS-4"};
    result.parameters[2] = skipInvalid;
    return result;
  }
};

TEST_F(Same, groups_are_tried_in_order_with_their_widths) {
  EXPECT_EQ(hex(convertWhole(toUcs4(), bytes("41 81 40 42 81 42")).output),
            "00 00 00 41 00 00 30 42 00 00 00 42 00 01 F6 00");
  EXPECT_EQ(
      hex(convertWhole({"ISO-10646-UCS-4", "mixed"}, bytes("00 00 00 41 00 00 30 44 00 01 F6 00"))
              .output),
      "41 81 41 81 42");
}

TEST_F(Same, little_endian_input_swaps_wide_codes_only) {
  Conversion conversion = toUcs4();
  conversion.parameters[0] = 0;
  EXPECT_EQ(hex(convertWhole(conversion, bytes("41 40 81")).output), "00 00 00 41 00 00 30 42");
}

TEST_F(Same, an_incomplete_group_makes_the_end_wait) {
  EXPECT_EQ(convertWhole(toUcs4(), bytes("41 81")), (Result{12, 1, bytes("00 00 00 41")}));
  EXPECT_EQ(convertWhole(toUcs4(), bytes("FF")).status, 12u);
}

TEST_F(Same, invalid_bytes_stay_or_are_skipped_by_the_widest_group_that_was_read) {
  EXPECT_EQ(convertWhole(toUcs4(), bytes("41 FF FF 42")), (Result{13, 1, bytes("00 00 00 41")}));
  EXPECT_EQ(convertWhole(toUcs4(true), bytes("41 FF FF 42")),
            (Result{0, 4, bytes("00 00 00 41 00 00 00 42")}));
}

TEST_F(Same, control_codes_belong_to_every_group) {
  Converter converter(toUcs4());
  converter.give(bytes("07"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.unicodeCode, 0u);
  EXPECT_EQ(converter.record.groupCode, 7u);
  EXPECT_EQ(hex(converter.written()), "00 00 00 07");
}

TEST_F(Same, control_codes_that_a_target_lacks_go_to_its_narrowest_group) {
  EXPECT_EQ(hex(convertWhole({"ISO-10646-UCS-4", "mixed"}, bytes("00 00 00 07")).output), "07");
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "mixed"}, bytes("00 00 00 09")).status, 23u);
  load({{"wide-first", "SAME", {kWide, {"four", 4, "81408140 4E00"}, kNarrow}},
        {"two-narrow", "SAME", {kWide, kNarrow, {"also-narrow", 1, "43 43"}}}});
  EXPECT_EQ(hex(convertWhole({"ISO-10646-UCS-4", "wide-first"}, bytes("00 00 00 07")).output),
            "07");
  Converter converter({"ISO-10646-UCS-4", "two-narrow"});
  converter.give(bytes("00 00 00 41 00 00 00 07"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  const uint32_t first = converter.record.targetGroup;
  converter.give(bytes("00 00 00 41"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.targetGroup, first) << "the first of two";
}

TEST_F(Same, a_mark_is_dropped_by_a_target_that_is_neither_japanese_nor_unicode) {
  load({{"utf-8", "UTF-8", {kAnyUnicode}}, {"kana", "SAME", {{"kana-set", 2, "1 304B"}}}});
  EXPECT_EQ(hex(convertWhole({"UTF-8", "kana"}, "\xE3\x81\x8B\xE3\x82\x9A").output), "00 01");
}

class Sequences : public OwnDirectory {
 protected:
  // U+3042 in its table, and U+3044 as a sequence of so many bytes.
  void loadTarget(const std::string& sequenceBytes, int width) {
    load({{"target", "SAME", {{"target-set", width, "8140 3042", "81828384 3044", sequenceBytes}}},
          {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}});
  }
  static Result convertSequence() {
    return convertWhole({"ISO-10646-UCS-4", "target"}, bytes("00 00 30 44"));
  }
};

TEST_F(Sequences, are_written_as_units_of_the_groups_width) {
  loadTarget("4", 2);
  Converter converter({"ISO-10646-UCS-4", "target"});
  converter.give(bytes("00 00 30 44"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "81 82 83 84");
  EXPECT_EQ(converter.record.unitsWritten, 2);
  EXPECT_EQ(converter.record.sequenceLength, 4u);
}

TEST_F(Sequences, are_whole_or_not_there) {
  loadTarget("4", 2);
  Converter converter({"ISO-10646-UCS-4", "target"});
  converter.give(bytes("00 00 30 44"), 3);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0);
  EXPECT_EQ(converter.record.unitsWritten, 0);
  EXPECT_EQ(converter.record.inputPosition, 0);
}

TEST_F(Sequences, leave_out_bytes_that_make_no_unit) {
  loadTarget("3", 2);  // 82 83 84: one unit of 82 83
  EXPECT_EQ(hex(convertSequence().output), "82 83");
}

TEST_F(Sequences, longer_than_four_bytes_begin_with_zeroes) {
  loadTarget("6", 2);
  EXPECT_EQ(hex(convertSequence().output), "00 00 81 82 83 84");
}

TEST_F(Sequences, shorter_than_a_unit_fail) {
  loadTarget("1", 2);
  EXPECT_EQ(convertSequence(), (Result{1, 4, ""}));
}

TEST_F(Sequences, follow_the_outputs_byte_order) {
  loadTarget("4", 2);
  Conversion conversion{"ISO-10646-UCS-4", "target"};
  conversion.options.outputBigEndian = 0;
  EXPECT_EQ(hex(convertWhole(conversion, bytes("00 00 30 44")).output), "82 81 84 83");
}

class UserGroups : public OwnDirectory {
 protected:
  UserGroups() {
    Group user = {"user-set", 2};
    user.userStart = 0xF040;
    user.userCount = 3;
    load({{"with-user", "SAME", {kNarrow, user}},
          {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}});
  }
};

TEST_F(UserGroups, map_onto_the_private_use_area) {
  EXPECT_EQ(hex(convertWhole({"with-user", "ISO-10646-UCS-4"}, bytes("F0 40 F0 42")).output),
            "00 00 E0 00 00 00 E0 02");
  EXPECT_EQ(convertWhole({"with-user", "ISO-10646-UCS-4"}, bytes("F0 43")).status, 13u);
}

TEST_F(UserGroups, take_their_share_of_the_private_use_area) {
  Converter converter({"ISO-10646-UCS-4", "with-user"});
  converter.give(bytes("00 00 E0 02"), 10);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "F0 42");
  EXPECT_EQ(converter.record.targetGroupType, 3u);
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "with-user"}, bytes("00 00 E0 03")).status, 23u);
}

class OddCharsets : public OwnDirectory {};

TEST_F(OddCharsets, a_group_of_width_zero_holds_nothing_and_ends_no_call) {
  load({{"empty", "SAME", {{"no-width", 0, ""}}},
        {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}});
  EXPECT_EQ(convertWhole({"empty", "ISO-10646-UCS-4"}, "AB"), (Result{13, 0, ""}));
  Conversion skipping{"empty", "ISO-10646-UCS-4"};
  skipping.parameters[2] = 1;
  EXPECT_EQ(convertWhole(skipping, "AB"), (Result{0, 2, ""}));
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "empty"}, bytes("00 00 00 41")), (Result{0, 4, ""}));
}

TEST_F(OddCharsets, an_unknown_codec_name_fails_the_conversion) {
  load({{"nothing", "NoSuchCodec", {kNarrow}},
        {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}});
  Converter from({"nothing", "ISO-10646-UCS-4"});
  from.give("A", 10);
  EXPECT_EQ(from.convert(), 1u);
  Converter to({"ISO-10646-UCS-4", "nothing"});
  to.give(bytes("00 00 00 41"), 10);
  EXPECT_EQ(to.convert(), 1u);
  EXPECT_EQ(to.terminate(), 0u);
}

TEST_F(OddCharsets, a_code_outside_the_rows_of_shift_jis_is_unmappable) {
  load({{"shift_jis", "Shift_JIS", {{"jis_x0208-1990", 2, "9A21 3042\r\n2422 3044"}}},
        {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}});
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "shift_jis"}, bytes("00 00 30 42")),
            (Result{23, 4, ""}));
  EXPECT_EQ(hex(convertWhole({"ISO-10646-UCS-4", "shift_jis"}, bytes("00 00 30 44")).output),
            "82 A0");
}

TEST_F(OddCharsets, a_replacement_that_is_refused_itself_ends_the_call) {
  // The replacement's code has no place in the rows.
  load({{"shift_jis", "Shift_JIS", {{"jis_x0208-1990", 2, "9A21 3013\r\n9A22 3F"}}},
        {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kAnyUnicode}}});
  Conversion conversion{"ISO-10646-UCS-4", "shift_jis"};
  conversion.options.replaceUnmappable = 1;
  EXPECT_EQ(convertWhole(conversion, bytes("00 00 4E 00")), (Result{23, 4, ""}));
}

TEST_F(OddCharsets, without_any_replacement_the_last_pair_is_stored_untested) {
  load({{"letters", "SAME", {kNarrow}}});
  ConverterRecord record = {};
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  EXPECT_EQ(cconvInitConvert(&record, &options, "letters"), 0u);
  EXPECT_EQ(record.options.narrowReplacement, 0x3F);
  EXPECT_EQ(record.options.wideReplacement, 0x3F);
  EXPECT_EQ(record.narrowReplacement[0], 0u);
  EXPECT_EQ(record.wideReplacement[0], 0u);
}

TEST_F(OddCharsets, a_wide_replacement_is_looked_up_without_a_narrow_one) {
  load({{"letters", "SAME", {kNarrow, {"pairs", 2, "2122 FF1D"}}}});
  ConverterRecord record = {};
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  EXPECT_EQ(cconvInitConvert(&record, &options, "letters"), 0u);
  EXPECT_EQ(record.options.wideReplacement, 0x3F) << "the pair as such is not there";
  EXPECT_EQ(record.narrowReplacement[3], 0u);
  EXPECT_EQ(record.wideReplacement[2], 0x2122u) << "left from the pair 3F, FF1D";
  EXPECT_EQ(record.wideReplacement[3], 2u);
}

TEST_F(OddCharsets, a_replacement_without_a_code_is_none) {
  load({{"letters", "SAME", {{"no-codes", 1, "0 3F\r\n41 41"}, {"pairs", 2, "2122 3013"}}}});
  ConverterRecord record = {};
  ConvertOptions options = {};
  options.replaceUnmappable = 1;
  EXPECT_EQ(cconvInitConvert(&record, &options, "letters"), 0u);
  EXPECT_EQ(record.narrowReplacement[0], 0u) << "its code is 0";
  EXPECT_EQ(record.wideReplacement[2], 0x2122u);
}

TEST_F(OddCharsets, a_group_of_the_source_that_the_target_has_too_passes_its_code) {
  // 42 is U+0042 in the table, yet the code goes through unchanged.
  const Group shared = {"shared-set", 1, "42 43\r\n43 42"};
  load({{"one", "SAME", {shared}}, {"two", "SAME", {shared}}});
  EXPECT_EQ(convertWhole({"one", "two"}, "BC").output, "BC");
}

TEST_F(OddCharsets, a_code_that_a_table_makes_a_line_end_takes_the_form_in_long_texts_too) {
  load({{"shift_jis",
         "Shift_JIS",
         {{"jis_x0201latin", 1, ""}, {"jis_x0208-1990", 2, "3021 D\r\n3022 4E9C"}}},
        {"utf-8", "UTF-8", {kAnyUnicode}}});
  Conversion conversion{"shift_jis", "UTF-8"};
  conversion.options.convertNewlines = 1;
  conversion.options.newlineForm = KSV_NEWLINE_LF;
  const Bytes letters(3000, 'a');
  EXPECT_EQ(convertWhole(conversion, letters + bytes("88 9F") + letters).output,
            letters + "\n" + letters);
}

TEST_F(OddCharsets, hz_goes_through_the_gbk_charset) {
  load({{"chinesegbk",
         "SAME",
         {{"ascii-set", 1, "61 61"}, {"gbk-set", 2, "D6D0 4E2D\r\nCEC4 6587"}}},
        {"utf-8", "UTF-8", {kAnyUnicode}}});
  EXPECT_EQ(convertWhole({"HZ-GB-2312", "UTF-8"}, "a~{VPND~}a").output,
            "a\xE4\xB8\xAD\xE6\x96\x87"
            "a");
  Converter converter({"HZ-GB-2312", "UTF-8"});
  converter.give("~{VPND~}", 3);  // the buffer cuts the second character
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.written(), "\xE4\xB8\xAD");
}

TEST_F(OddCharsets, an_encoder_named_as_decoder_ends_the_call) {
  load({{"letters", "SAME", {kNarrow}, "constSAME"}, {"none", "SAME", {{"empty", 0, "41 41"}}}});
  Converter filling({"letters", "letters"});
  filling.give("ABA", 10);
  EXPECT_EQ(filling.convert(), 22u) << "it writes until the output is full";
  Converter standing({"letters", "none"});
  standing.give("ABA", 10);
  EXPECT_EQ(standing.convert(), 1u) << "it neither reads nor writes";
  EXPECT_EQ(standing.record.inputPosition, 0);
  EXPECT_EQ(standing.record.outputPosition, 0);
}

TEST_F(OddCharsets, the_input_dump_appends_what_is_converted) {
  load({{"letters", "SAME", {kNarrow}}});
  ksv::inputDumpPath = "dump.bin";
  Converter converter({"letters", "letters"});
  converter.give("ABA", 10);
  converter.record.inputPosition = 1;
  EXPECT_EQ(converter.convert(), 0u);
  converter.record.inputPosition = 0;
  EXPECT_EQ(converter.convert(), 0u);
  ksv::inputDumpPath = nullptr;
  EXPECT_EQ(ksv::test::readFile("dump.bin"), "BAABA");
}

}  // namespace
}  // namespace ksv_test
