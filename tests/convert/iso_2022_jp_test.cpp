// ISO-2022-JP and ISO-2022-JP-2004, byte by byte.
#include "tests/convert/converter.h"
#include "tests/convert/own_directory.h"

namespace ksv_test {
namespace {

const Group kAscii = {"iso-646irv", 1, "9 9\r\nA A\r\nD D\r\n20 20\r\n3F 3F\r\n41 41\r\n42 42"};
const Group kLatin = {"jis_x0201latin", 1, "41 41\r\n5C A5"};
const Group kKana = {"jis_x0201kana", 1, "31 FF71\r\nB1 FF71"};
const Group kJisC6226 = {"jis_c6226-1978", 2, "2422 3042\r\n3022 5516"};
const Group kJisX0208 = {"jis_x0208-1990", 2, "2422 3042\r\n3021 4E9C\r\n222E 3013\r\n2121 3000"};
const Group kJisX0212 = {"jis_x0212-1990", 2, "3021 4E02"};
const Group kJisX0213 = {"jis_x0213", 4,
                         "2424 3044\r\n242B 304B\r\n2121 2000\r\n12121 20089\r\n12122 20BB7"};
const Group kNec = {"nec_extset", 2, "2D21 2460"};
const Group kNecIbm = {"necibm_extset", 2, "7921 7E8A"};
const Group kUnicode = {"any-unicode", 4, ""};

class Iso2022Jp : public OwnDirectory {
 protected:
  Iso2022Jp() {
    load({{"iso-2022-jp", "ISO-2022-JP", {kAscii, kLatin, kJisX0208, kJisC6226, kKana}},
          {"iso-2022-jp-2004", "ISO-2022-JP-2004", {kAscii, kLatin, kJisX0213, kJisX0208}},
          {"with-0212", "ISO-2022-JP", {kAscii, kJisX0212}},
          {"ascii-only", "ISO-2022-JP", {kAscii}},
          {"cp50220", "CP50220", {kAscii, kLatin, kJisX0208, kNec, kNecIbm}},
          {"with-nec", "ISO-2022-JP", {kAscii, kLatin, kJisX0208, kNec, kNecIbm}},
          {"latin-only", "ISO-2022-JP", {kLatin}},
          {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kUnicode}}});
  }

  static Result read(const Bytes& text, const char* source = "iso-2022-jp") {
    return convertWhole({source, "ISO-10646-UCS-4"}, text);
  }
  // What is written for characters, the end of the text left out.
  static Result write(const char* codes, const char* target = "iso-2022-jp") {
    return convertWhole({"ISO-10646-UCS-4", target}, bytes(codes));
  }
  static Result done(const Bytes& output, int32_t position) { return {0, position, output}; }
};

TEST_F(Iso2022Jp, begins_reading_in_ascii) {
  EXPECT_EQ(read("A"), done(bytes("00 00 00 41"), 1));
  EXPECT_EQ(read("A", "latin-only"), (Result{13, 1, ""})) << "which has to be a member";
}

TEST_F(Iso2022Jp, reads_each_escape_sequence) {
  EXPECT_EQ(read("\x1B$B\x24\x22\x30\x21"), done(bytes("00 00 30 42 00 00 4E 9C"), 7));
  EXPECT_EQ(read("\x1B$@\x30\x22"), done(bytes("00 00 55 16"), 5));
  EXPECT_EQ(read("\x1B(J\x5C"), done(bytes("00 00 00 A5"), 4));
  EXPECT_EQ(read("\x1B(I\x31"), done(bytes("00 00 FF 71"), 4));
  EXPECT_EQ(read("\x1B$B\x24\x22\x1B(BA"), done(bytes("00 00 30 42 00 00 00 41"), 9));
  EXPECT_EQ(read("\x1B$(Q\x24\x24", "iso-2022-jp-2004"), done(bytes("00 00 30 44"), 6));
  EXPECT_EQ(read("\x1B$(P\x21\x21", "iso-2022-jp-2004"), done(bytes("00 02 00 89"), 6));
  EXPECT_EQ(read("\x1B(J\x1B(B\x1B$B\x24\x22"), done(bytes("00 00 30 42"), 11)) << "several";
}

TEST_F(Iso2022Jp, reads_the_second_of_two_plane_2_characters_as_plane_1) {
  EXPECT_EQ(read("\x1B$(P\x21\x21\x21\x21", "iso-2022-jp-2004"),
            done(bytes("00 02 00 89 00 00 20 00"), 8));
  EXPECT_EQ(read("\x1B$(P\x21\x21\x1B$(P\x21\x22", "iso-2022-jp-2004"),
            done(bytes("00 02 00 89 00 02 0B B7"), 12));
}

TEST_F(Iso2022Jp, waits_at_an_escape_sequence_that_is_unknown_or_cut) {
  for (const char* rest : {"", "$", "(", "$(", "$(O", "$A", "(H", "xyz", "$I", "$I1"}) {
    EXPECT_EQ(read(Bytes("A\x1B") + rest), (Result{12, 1, bytes("00 00 00 41")})) << rest;
  }
  EXPECT_EQ(read("\x1B(J\x1B$(O"), (Result{12, 3, ""})) << "behind those that were taken";
}

TEST_F(Iso2022Jp, takes_an_escape_sequence_at_the_end) {
  Converter converter({"iso-2022-jp", "ISO-10646-UCS-4"});
  converter.give("\x1B$B\x24\x22", 8);
  converter.showInput(3);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.inputPosition, 3);
  EXPECT_EQ(converter.record.decoderState, 2006u);
  converter.showInput(5);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 00 30 42");
}

TEST_F(Iso2022Jp, forgets_the_plane_of_an_escape_sequence_at_the_end) {
  Converter converter({"iso-2022-jp-2004", "ISO-10646-UCS-4"});
  converter.give("\x1B$(P\x21\x21", 8);
  converter.showInput(4);
  EXPECT_EQ(converter.convert(), 0u);
  converter.showInput(6);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 00 20 00") << "plane 1";
}

TEST_F(Iso2022Jp, goes_back_before_the_escape_sequence_of_a_pair_that_is_cut) {
  Converter converter({"iso-2022-jp-2004", "ISO-10646-UCS-4"});
  converter.give("\x1B$(P\x21\x21", 8);
  converter.showInput(5);
  EXPECT_EQ(converter.convert(), 12u);
  EXPECT_EQ(converter.record.inputPosition, 0);
  converter.showInput(6);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(hex(converter.written()), "00 02 00 89");
}

TEST_F(Iso2022Jp, reads_line_ends_and_tabs_among_pairs_as_ascii) {
  EXPECT_EQ(read("\x1B$B\x24\x22\r\n\t\x24\x22"),
            done(bytes("00 00 30 42 00 00 00 0D 00 00 00 0A 00 00 00 09 00 00 30 42"), 10));
  Converter converter({"iso-2022-jp", "ISO-10646-UCS-4"});
  converter.give("\x1B$B\n", 8);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.decodedGroup, 2001u);
  EXPECT_EQ(converter.record.decodedGroupType, 1u);
  EXPECT_EQ(converter.record.rawCode, 10u);
  EXPECT_EQ(converter.record.decoderState, 2006u) << "the pairs go on";
  EXPECT_EQ(read("\x1B$B\x20\x21"), (Result{23, 5, ""})) << "a blank begins a pair";
}

TEST_F(Iso2022Jp, refuses_a_byte_of_a_group_that_is_no_member) {
  EXPECT_EQ(read("\x1B$B\x24\x22", "ascii-only"), (Result{13, 4, ""}));
}

TEST_F(OwnDirectory, iso2022_jp_reads_no_group_three_bytes_wide) {
  load({{"wide-kana", "ISO-2022-JP", {kAscii, {"jis_x0201kana", 3, "31 FF71"}}},
        {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kUnicode}}});
  EXPECT_EQ(convertWhole({"wide-kana", "ISO-10646-UCS-4"}, "\x1B(I\x31\x31\x31"),
            (Result{13, 4, ""}));
}

TEST_F(Iso2022Jp, counts_a_character_and_leaves_its_code) {
  Converter converter({"iso-2022-jp-2004", "ISO-10646-UCS-4"});
  converter.give("\x1B$(P\x21\x21", 8);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.charactersRead, 1);
  EXPECT_EQ(converter.record.decodedGroup, 2011u);
  EXPECT_EQ(converter.record.rawCode, 0x12121u);
  EXPECT_EQ(converter.record.groupCode, 0x12121u);
}

TEST_F(Iso2022Jp, writes_the_escape_sequence_of_the_first_character_always) {
  EXPECT_EQ(write("00 00 00 41 00 00 00 42"), done("\x1B(BAB", 8));
  EXPECT_EQ(write("00 00 30 42"), done("\x1B$B\x24\x22", 4));
  EXPECT_EQ(write("00 00 00 A5"), done("\x1B(J\x5C", 4));
  EXPECT_EQ(write("00 00 55 16"), done("\x1B$@\x30\x22", 4));
}

TEST_F(Iso2022Jp, writes_katakana_behind_an_escape_sequence_it_does_not_read) {
  const Result written = write("00 00 FF 71");
  EXPECT_EQ(written, done("\x1B$I\xB1", 4));
  EXPECT_EQ(read(written.output), (Result{12, 0, ""}));
}

TEST_F(Iso2022Jp, writes_escape_sequences_between_groups_only) {
  EXPECT_EQ(write("00 00 30 42 00 00 4E 9C 00 00 00 41 00 00 00 42 00 00 30 42"),
            done("\x1B$B\x24\x22\x30\x21\x1B(BAB\x1B$B\x24\x22", 20));
}

TEST_F(Iso2022Jp, writes_jis_x0208_for_iso2022_jp2004_behind_the_sequence_of_plane_1) {
  EXPECT_EQ(write("00 00 4E 9C", "iso-2022-jp-2004"), done("\x1B$(Q\x30\x21", 4));
}

TEST_F(Iso2022Jp, writes_a_sequence_before_each_character_of_jis_x0213) {
  EXPECT_EQ(write("00 00 30 44 00 00 30 44 00 02 00 89 00 02 0B B7", "iso-2022-jp-2004"),
            done("\x1B$(Q\x24\x24\x1B$(Q\x24\x24\x1B$(P\x21\x21\x1B$(P\x21\x22", 16));
}

TEST_F(Iso2022Jp, writes_the_group_before_jis_x0213_without_its_sequence) {
  EXPECT_EQ(write("00 00 00 41 00 00 30 44 00 00 00 41", "iso-2022-jp-2004"),
            done("\x1B(BA\x1B$(Q\x24\x24"
                 "A",
                 12));
}

TEST_F(Iso2022Jp, keeps_the_designations_in_the_record) {
  Converter converter({"ISO-10646-UCS-4", "iso-2022-jp-2004"});
  converter.give(bytes("00 00 00 41"), 40);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.designatedGroup, 2001u);
  EXPECT_EQ(converter.record.designatedPlane, 0u);
  converter.give(bytes("00 00 30 44"), 40);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.designatedGroup, 2001u) << "is not changed";
  EXPECT_EQ(converter.record.designatedPlane, 11u);
  converter.give(bytes("00 02 00 89"), 40);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.designatedPlane, 12u);
  EXPECT_EQ(converter.record.unitsWritten, 3) << "escape sequences are no units";
}

// Of 1B 24 28 50 21 21 there is room for the sequence, and for its character there is not:
// both go back, and with them what the sequence has left in the record.
TEST_F(Iso2022Jp, forgets_the_plane_whose_character_does_not_fit) {
  Converter converter({"ISO-10646-UCS-4", "iso-2022-jp-2004"});
  converter.give(bytes("00 02 00 89"), 5);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0);
  EXPECT_EQ(converter.record.designatedPlane, 0u);
  converter.give(bytes("00 00 30 44 00 02 00 89"), 11);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(hex(converter.written()), "1B 24 28 51 24 24");
  EXPECT_EQ(converter.record.designatedPlane, 11u) << "as before it";
}

TEST_F(Iso2022Jp, refuses_a_group_without_a_sequence) {
  EXPECT_EQ(write("00 00 4E 02", "with-0212"), (Result{23, 4, ""}));
}

TEST_F(Iso2022Jp, writes_pairs_in_the_order_that_is_asked) {
  Conversion little = {"ISO-10646-UCS-4", "iso-2022-jp"};
  little.options.outputBigEndian = 0;
  EXPECT_EQ(convertWhole(little, bytes("00 00 30 42")), done("\x1B$B\x22\x24", 4));
}

TEST_F(Iso2022Jp, closes_a_text_that_did_not_end_in_ascii) {
  Converter converter({"ISO-10646-UCS-4", "iso-2022-jp"});
  converter.give(bytes("00 00 30 42"), 7);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.terminate(), 22u) << "two bytes of room";
  EXPECT_EQ(converter.record.outputPosition, 5);
  converter.drain(3);
  EXPECT_EQ(converter.terminate(), 0u);
  EXPECT_EQ(converter.written(), "\x1B$B\x24\x22\x1B(B");
  EXPECT_EQ(converter.record.designatedGroup, 2006u) << "stands as it was";
}

TEST_F(Iso2022Jp, closes_nothing_behind_ascii) {
  Converter converter({"ISO-10646-UCS-4", "iso-2022-jp"});
  converter.give(bytes("00 00 30 42 00 00 00 41"), 40);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.terminate(), 0u);
  EXPECT_EQ(converter.written(), "\x1B$B\x24\x22\x1B(BA");
}

TEST_F(Iso2022Jp, closes_an_empty_text) {
  Converter converter({"ISO-10646-UCS-4", "iso-2022-jp"});
  converter.give("", 8);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.terminate(), 0u);
  EXPECT_EQ(converter.written(), "\x1B(B") << "no character was of ASCII";
}

TEST_F(Iso2022Jp, keeps_a_sequence_that_fits_without_its_character) {
  Converter converter({"ISO-10646-UCS-4", "iso-2022-jp"});
  converter.give(bytes("00 00 30 42"), 2);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0) << "no room for the sequence";
  EXPECT_EQ(converter.record.designatedGroup, 0u);
  converter.drain(4);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.written(), "\x1B$B");
  EXPECT_EQ(converter.record.designatedGroup, 2006u);
  EXPECT_EQ(converter.record.inputPosition, 0);
  converter.drain(2);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.written(), "\x1B$B\x24\x22");
}

TEST_F(Iso2022Jp, takes_back_a_sequence_of_jis_x0213_without_its_character) {
  for (int32_t room = 1; room < 6; ++room) {
    Converter converter({"ISO-10646-UCS-4", "iso-2022-jp-2004"});
    converter.give(bytes("00 00 30 44"), room);
    EXPECT_EQ(converter.convert(), 22u);
    EXPECT_EQ(converter.record.outputPosition, 0);
    converter.drain(6);
    EXPECT_EQ(converter.convert(), 0u);
    EXPECT_EQ(converter.written(), "\x1B$(Q\x24\x24");
  }
}

TEST_F(Iso2022Jp, has_the_rows_of_vendors_behind_the_sequence_of_jis_x0208_in_mail) {
  const Bytes characters = bytes("00 00 30 42 00 00 24 60 00 00 7E 8A 00 00 30 42");
  const Bytes mail = "\x1B$B\x24\x22\x2D\x21\x79\x21\x24\x22";
  EXPECT_EQ(read(mail, "cp50220"), done(characters, 11));
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "cp50220"}, characters), done(mail, 16));
  EXPECT_EQ(read("\x1B$@\x24\x22\x2D\x21", "cp50220"), done(bytes("00 00 30 42 00 00 24 60"), 7))
      << "the edition of 1978 stands for it";
}

TEST_F(Iso2022Jp, has_no_rows_of_vendors_in_any_other_charset) {
  EXPECT_EQ(read("\x1B$B\x24\x22\x2D\x21", "with-nec").status, 23u);
  EXPECT_EQ(write("00 00 24 60", "with-nec").status, 23u);
  EXPECT_EQ(read("\x1B$@\x24\x22", "with-nec"), (Result{13, 4, ""}));
  EXPECT_EQ(convertWhole({"cp50220", "iso-2022-jp"}, "\x1B$B\x2D\x21").status, 23u);
}

TEST_F(Iso2022Jp, writes_long_texts_as_it_writes_short_ones) {
  // A state that a table of whole characters would lose.
  Bytes codes;
  Bytes expected = "\x1B$B";
  for (int i = 0; i < 1000; ++i) {
    codes += bytes("00 00 30 42");
    expected += "\x24\x22";
  }
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "iso-2022-jp"}, codes), done(expected, 4000));
}

TEST_F(Iso2022Jp, writes_replacements_behind_their_sequences) {
  Conversion replacing = {"ISO-10646-UCS-4", "iso-2022-jp"};
  replacing.options.replaceUnmappable = 1;
  EXPECT_EQ(convertWhole(replacing, bytes("00 00 0E 01 00 00 00 41")),
            done("\x1B$B\x22\x2E\x1B(BA", 8));
}

}  // namespace
}  // namespace ksv_test
