#include "tests/convert/converter.h"

namespace ksv_test {
namespace {

using Driver = ConversionTest;

Conversion withNewlines(const char* source, const char* target, uint32_t form) {
  Conversion setup{source, target};
  setup.options.convertNewlines = 1;
  setup.options.newlineForm = form;
  return setup;
}

TEST_F(Driver, every_field_is_set_after_a_character) {
  Converter converter({"Shift_JIS", "UTF-16"});
  converter.give(bytes("41 82 A0"), 100);
  EXPECT_EQ(converter.convert(), 0u);
  const ConverterRecord& r = converter.record;
  EXPECT_EQ(r.inputPosition, 3);
  EXPECT_EQ(r.outputPosition, 4);
  EXPECT_EQ(r.charactersRead, 2);
  EXPECT_EQ(r.unitsWritten, 2);
  EXPECT_EQ(r.decodedGroup, 2006u);
  EXPECT_EQ(r.decodedGroupType, 1u);
  EXPECT_EQ(r.rawCode, 0x82A0u);
  EXPECT_EQ(r.previousRawCode, 0x41u);
  EXPECT_EQ(r.groupCode, 0x2422u);
  EXPECT_EQ(r.unicodeCode, 0x3042u);
  EXPECT_EQ(r.outputCode, 0x3042u);
  EXPECT_EQ(r.outputWidth, 4u);
  EXPECT_EQ(r.sequenceLength, 0u);
  EXPECT_EQ(r.secondCode, 0u);
  EXPECT_EQ(r.targetGroupType, 1u);
  EXPECT_EQ(hex(converter.written()), "00 41 30 42");
}

TEST_F(Driver, full_output_before_a_character_changes_nothing) {
  Converter converter({"Shift_JIS", "UTF-8"});
  converter.give("ab", 1);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.inputPosition, 1);
  EXPECT_EQ(converter.record.rawCode, static_cast<uint32_t>('a'));
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.rawCode, static_cast<uint32_t>('a'));
}

TEST_F(Driver, full_output_inside_a_character_goes_back_to_its_beginning) {
  Converter converter({"Shift_JIS", "UTF-8"});
  converter.give(bytes("41 82 A0"), 3);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.inputPosition, 1);
  EXPECT_EQ(converter.record.charactersRead, 1);
  EXPECT_EQ(converter.record.unitsWritten, 1);
  EXPECT_EQ(converter.record.outputPosition, 1);
  converter.drain(3);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "41 E3 81 82");
  EXPECT_EQ(converter.record.charactersRead, 2);
}

TEST_F(Driver, an_unmappable_character_is_passed_by_its_status) {
  Converter converter({"UTF-8", "Shift_JIS"});
  converter.give("a\xE0\xB8\x81z", 10);  // U+0E01
  EXPECT_EQ(converter.convert(), 23u);
  EXPECT_EQ(converter.record.inputPosition, 4);
  EXPECT_EQ(converter.record.charactersRead, 2);
  EXPECT_EQ(converter.record.outputPosition, 1);
  EXPECT_EQ(converter.record.unicodeCode, 0x0E01u);
  EXPECT_EQ(converter.record.outputWidth, 0u);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.written(), "az");
}

TEST_F(Driver, unmappable_characters_are_replaced_by_their_group_code) {
  Conversion setup{"UTF-8", "Shift_JIS"};
  setup.options.replaceUnmappable = 1;
  // U+00E9 has a group code below 256: narrow. U+0E01 and U+1F600: wide.
  EXPECT_EQ(convertWhole(setup, "\xC3\xA9\xE0\xB8\x81\xF0\x9F\x98\x80"),
            (Result{0, 9, bytes("3F 81 AC 81 AC")}));
}

TEST_F(Driver, a_replacement_is_whole_or_not_there) {
  Conversion setup{"UTF-8", "Shift_JIS"};
  setup.options.replaceUnmappable = 1;
  Converter converter(setup);
  converter.give("\xE0\xB8\x81", 1);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.inputPosition, 0);
  converter.drain(2);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "81 AC");
  EXPECT_EQ(converter.record.targetGroup, 2006u);
  EXPECT_EQ(converter.record.sequenceLength, 0u);
}

TEST_F(Driver, invalid_input_stops_and_is_skipped_on_request) {
  Conversion setup{"Shift_JIS", "UTF-8"};
  EXPECT_EQ(convertWhole(setup, bytes("41 81 7F 42")), (Result{13, 2, "A"}));
  setup.parameters[2] = 1;
  EXPECT_EQ(convertWhole(setup, bytes("41 81 7F 42")), (Result{0, 4, bytes("41 7F 42")}));
}

TEST_F(Driver, going_on_behind_invalid_input_works_without_any_step) {
  Converter converter({"Shift_JIS", "UTF-8"});
  converter.give(bytes("41 81 7F 42"), 10);
  EXPECT_EQ(converter.convert(), 13u);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "41 7F 42");
}

TEST_F(Driver, a_cut_character_keeps_both_raw_codes) {
  Converter converter({"Shift_JIS", "UTF-8"});
  converter.give(bytes("41 42 82 A0"), 10);
  converter.showInput(3);
  EXPECT_EQ(converter.convert(), 12u);
  EXPECT_EQ(converter.record.inputPosition, 2);
  EXPECT_EQ(converter.record.rawCode, 0x42u);
  EXPECT_EQ(converter.record.previousRawCode, 0x41u);
  EXPECT_EQ(converter.record.unicodeCode, 0u);
  converter.showInput(4);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.previousRawCode, 0x42u);
}

TEST_F(Driver, every_line_end_takes_the_form) {
  const Bytes text =
      "a\r\nb\nc\rd\xE2\x80\xA8"
      "e\xE2\x80\xA9"
      "f\n\n\r\r\n";
  EXPECT_EQ(convertWhole(withNewlines("UTF-8", "UTF-8", 3), text).output,
            "a\nb\nc\nd\ne\nf\n\n\n\n");
  EXPECT_EQ(convertWhole(withNewlines("UTF-8", "UTF-8", 2), text).output,
            "a\rb\rc\rd\re\rf\r\r\r\r");
  EXPECT_EQ(convertWhole(withNewlines("UTF-8", "UTF-8", 1), "a\nb").output, "a\r\nb");
  EXPECT_EQ(convertWhole(withNewlines("UTF-8", "UTF-8", 0), "a\nb").output, "a\r\nb");
  EXPECT_EQ(convertWhole(withNewlines("UTF-8", "UTF-8", 77), "a\nb").output, "a\r\nb");
}

TEST_F(Driver, separator_forms_need_a_wide_target) {
  EXPECT_EQ(hex(convertWhole(withNewlines("UTF-8", "UTF-8", 4), "\n").output), "E2 80 A8");
  EXPECT_EQ(hex(convertWhole(withNewlines("UTF-8", "UTF-16", 5), "\n").output), "20 29");
  EXPECT_EQ(hex(convertWhole(withNewlines("UTF-8", "Shift_JIS", 4), "\n").output), "0D 0A");
}

TEST_F(Driver, line_ends_stay_without_the_option) {
  Conversion setup{"Shift_JIS", "UTF-8"};
  setup.options.newlineForm = 3;
  EXPECT_EQ(convertWhole(setup, "a\r\nb\r").output, "a\r\nb\r");
}

TEST_F(Driver, a_line_feed_behind_its_carriage_return_is_dropped_across_calls) {
  for (const char* source : {"Shift_JIS", "UTF-8"}) {
    Converter converter(withNewlines(source, "UTF-8", 3));
    converter.give("a\r\nb", 100);
    converter.showInput(2);
    EXPECT_EQ(converter.convert(), 0u);
    converter.showInput(4);
    EXPECT_EQ(converter.convert(), 0u);
    EXPECT_EQ(converter.written(), "a\nb");
    EXPECT_EQ(converter.record.charactersRead, 4);
  }
}

TEST_F(Driver, a_line_feed_that_comes_in_two_calls_is_dropped_too) {
  Conversion setup = withNewlines("UTF-16", "UTF-8", 3);
  Converter converter(setup);
  converter.give(bytes("00 0D 00 0A 00 62"), 100);
  converter.showInput(3);
  EXPECT_EQ(converter.convert(), 12u);
  converter.showInput(6);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.written(), "\nb");
}

TEST_F(Driver, cr_lf_is_whole_or_not_there) {
  Converter converter(withNewlines("Shift_JIS", "UTF-8", 1));
  converter.give("a\nb", 2);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 1);
  EXPECT_EQ(converter.record.unitsWritten, 1);
  EXPECT_EQ(converter.record.inputPosition, 1);
  converter.drain(3);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.written(), "a\r\nb");
  EXPECT_EQ(converter.record.unitsWritten, 4);
}

TEST_F(Driver, a_bad_character_between_cr_and_lf_separates_them) {
  Conversion setup = withNewlines("Shift_JIS", "UTF-8", 3);
  setup.parameters[2] = 1;
  EXPECT_EQ(convertWhole(setup, bytes("0D FD 0A")).output, "\n\n");
}

TEST_F(Driver, a_mark_that_a_target_cannot_compose_follows_as_its_own_code) {
  // U+304B U+309A: two codes in Shift_JIS (the semi-voiced mark is 814B).
  EXPECT_EQ(hex(convertWhole({"UTF-8", "Shift_JIS"}, "\xE3\x81\x8B\xE3\x82\x9A").output),
            "82 A9 81 4B");
  EXPECT_EQ(hex(convertWhole({"UTF-8", "Shift_JIS-2004"}, "\xE3\x81\x8B\xE3\x82\x9A").output),
            "82 F5");
}

TEST_F(Driver, a_base_and_its_mark_are_whole_or_not_there) {
  Converter converter({"UTF-8", "Shift_JIS"});
  converter.give("\xE3\x81\x8B\xE3\x82\x9A", 3);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0);
  EXPECT_EQ(converter.record.inputPosition, 0);
  converter.drain(4);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.unitsWritten, 2);
  EXPECT_EQ(converter.record.charactersRead, 1);
}

TEST_F(Driver, a_possible_base_at_the_end_of_the_input_is_delivered_alone) {
  Converter converter({"UTF-8", "Shift_JIS-2004"});
  converter.give("\xC3\xA6\xCC\x80", 100);  // U+00E6 U+0300
  converter.showInput(2);
  EXPECT_EQ(converter.convert(), 0u);
  converter.showInput(4);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "85 7B 86 7B");
  EXPECT_EQ(hex(convertWhole({"UTF-8", "Shift_JIS-2004"}, "\xC3\xA6\xCC\x80").output), "86 63");
}

TEST_F(Driver, a_destination_table_writes_a_sequence) {
  Converter converter({"UTF-8", "Shift_JIS"});
  converter.give("\xE3\x80\x9C", 10);  // U+301C, which the Windows mapping lacks
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "81 60");
  EXPECT_EQ(converter.record.sequenceLength, 2u);
  EXPECT_EQ(converter.record.outputCode, 0x2141u);
  EXPECT_EQ(converter.record.targetGroup, 2006u);
}

TEST_F(Driver, little_endian_output_swaps_the_bytes_of_a_pair) {
  Conversion setup{"UTF-8", "Shift_JIS"};
  setup.options.outputBigEndian = 0;
  EXPECT_EQ(hex(convertWhole(setup, "\xE3\x81\x82").output), "A0 82");
}

TEST_F(Driver, control_codes_pass) {
  Bytes controls;
  for (char c = 0; c < 0x20; ++c) controls += c;
  controls += '\x7F';
  EXPECT_EQ(convertWhole({"Shift_JIS", "UTF-8"}, controls).output, controls);
  EXPECT_EQ(convertWhole({"UTF-8", "Shift_JIS"}, controls).output, controls);
}

}  // namespace
}  // namespace ksv_test
