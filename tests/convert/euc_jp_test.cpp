// EUC-JP, EUC-JIS-2004 and EUC-JP-FIX, byte by byte.
#include "tests/convert/converter.h"
#include "tests/convert/own_directory.h"

namespace ksv_test {
namespace {

const Group kAscii = {"iso-646irv", 1, "9 9\r\nA A\r\nD D\r\n3F 3F\r\n41 41\r\n7E 7E"};
const Group kLatin = {"jis_x0201latin", 1, "A5 A5"};
const Group kKana = {"jis_x0201kana", 1, "A1 FF61\r\nB1 FF71\r\nDF FF9F\r\nE0 E0E0"};
const Group kJisX0208 = {"jis_x0208-1990", 2,
                         "2121 3000\r\n2422 3042\r\n3021 4E9C\r\n7E7E FFEE\r\n7F21 E021\r\n"
                         "7E21 E022\r\n9221 E023\r\n9321 E024\r\n2020 E025\r\n3F 3F"};
const Group kJisX0212 = {"jis_x0212-1990", 2, "3021 4E02\r\n2B21 C6"};
// The last line composes: base and mark stand in the engine.
const Group kJisX0213 = {"jis_x0213", 4,
                         "2422 3042\r\n242B 304B\r\n12121 20089\r\n7E7E 7E7E\r\n2B52 309A"};
const Group kUnicode = {"any-unicode", 4, ""};

class EucJp : public OwnDirectory {
 protected:
  EucJp() {
    load({{"euc-jp", "EUC-JP", {kAscii, kJisX0208, kKana, kJisX0212}},
          {"euc-jis-2004", "EUC-JIS-2004", {kAscii, kJisX0213, kKana}},
          {"euc-jp-fix", "EUC-JP-FIX", {kAscii, kJisX0208, kKana, kJisX0212}},
          {"ascii-only", "EUC-JP", {kAscii}},
          {"ascii-fixed", "EUC-JP-FIX", {kAscii}},
          {"latin", "EUC-JP", {kLatin}},
          {"latin-fixed", "EUC-JP-FIX", {kLatin}},
          {"utf-8", "UTF-8", {kUnicode}},
          {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kUnicode}}});
  }

  // The characters that text stands for, or its status and position.
  static Result read(const char* source, const char* text) {
    return convertWhole({source, "ISO-10646-UCS-4"}, bytes(text));
  }
  static Result write(const char* target, const char* codes) {
    return convertWhole({"ISO-10646-UCS-4", target}, bytes(codes));
  }
  static Result done(const char* output, int32_t position) { return {0, position, bytes(output)}; }
};

TEST_F(EucJp, reads_pairs_from_a0_up_as_jis_x0208) {
  EXPECT_EQ(read("euc-jp", "A4 A2 41"), done("00 00 30 42 00 00 00 41", 3));
  EXPECT_EQ(read("euc-jp", "FE FE"), done("00 00 FF EE", 2));
  EXPECT_EQ(read("euc-jp", "A0 A0"), done("00 00 E0 25", 2)) << "A0 leads and trails, too";
  EXPECT_EQ(read("euc-jp", "FF A1"), done("00 00 E0 21", 2)) << "code 7F21";
}

TEST_F(EucJp, leaves_the_record_of_a_pair_as_its_own_group_says) {
  Converter converter({"euc-jp", "ISO-10646-UCS-4"});
  converter.give(bytes("A4 A2"), 8);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.decodedGroup, 2006u);
  EXPECT_EQ(converter.record.decodedGroupType, 1u);
  EXPECT_EQ(converter.record.rawCode, 0x2422u);
  EXPECT_EQ(converter.record.groupCode, 0x2422u);
  EXPECT_EQ(converter.record.unicodeCode, 0x3042u);
  EXPECT_EQ(converter.record.charactersRead, 1);
}

TEST_F(EucJp, reads_katakana_behind_8e_with_the_high_bit_kept) {
  EXPECT_EQ(read("euc-jp", "8E B1"), done("00 00 FF 71", 2));
  EXPECT_EQ(read("euc-jp", "8E E0"), done("00 00 E0 E0", 2));
  EXPECT_EQ(read("euc-jp", "8E 41"), (Result{13, 1, ""}));
  EXPECT_EQ(read("euc-jp", "8E"), (Result{12, 0, ""}));
}

TEST_F(EucJp, reads_jis_x0212_behind_8f_and_plane_2_in_euc_jis2004) {
  EXPECT_EQ(read("euc-jp", "8F B0 A1"), done("00 00 4E 02", 3));
  EXPECT_EQ(read("euc-jis-2004", "8F A1 A1"), done("00 02 00 89", 3));
  for (const char* source : {"euc-jp", "euc-jis-2004"}) {
    EXPECT_EQ(read(source, "8F"), (Result{12, 0, ""}));
    EXPECT_EQ(read(source, "8F A1"), (Result{12, 0, ""}));
    EXPECT_EQ(read(source, "8F 41"), (Result{12, 0, ""})) << "a byte is missing before all";
    EXPECT_EQ(read(source, "8F 41 A1"), (Result{13, 1, ""}));
    EXPECT_EQ(read(source, "8F A1 41"), (Result{13, 1, ""}));
  }
}

TEST_F(EucJp, reads_jis_x0213_and_its_composed_characters) {
  EXPECT_EQ(read("euc-jis-2004", "A4 A2"), done("00 00 30 42", 2));
  EXPECT_EQ(read("euc-jis-2004", "A4 F7"), done("00 00 30 4B 00 00 30 9A", 2));
  EXPECT_EQ(convertWhole({"utf-8", "euc-jis-2004"}, "\xE3\x81\x8B\xE3\x82\x9A"), done("A4 F7", 6));
}

TEST_F(EucJp, refuses_other_bytes_and_bad_trails) {
  for (const char* text : {"7F", "80", "8D", "90", "9F"}) {
    EXPECT_EQ(read("euc-jp", text), (Result{13, 1, ""})) << text;
  }
  EXPECT_EQ(read("euc-jp", "41 A4 41"), (Result{13, 2, bytes("00 00 00 41")}));
  EXPECT_EQ(read("euc-jp", "A4"), (Result{12, 0, ""}));
}

TEST_F(EucJp, refuses_what_is_of_no_member_after_one_byte) {
  EXPECT_EQ(read("ascii-only", "A4 A2"), (Result{13, 1, ""}));
  EXPECT_EQ(read("ascii-only", "8E B1"), (Result{13, 1, ""}));
  EXPECT_EQ(read("ascii-only", "8F B0 A1"), (Result{13, 1, ""}));
  EXPECT_EQ(read("latin", "41"), (Result{13, 1, ""}));
}

TEST_F(EucJp, reports_a_code_without_a_character_as_unmappable) {
  EXPECT_EQ(read("euc-jp", "A5 A2"), (Result{23, 2, ""}));
}

TEST_F(EucJp, writes_each_group_in_its_own_form) {
  EXPECT_EQ(write("euc-jp", "00 00 00 41"), done("41", 4));
  EXPECT_EQ(write("euc-jp", "00 00 30 42"), done("A4 A2", 4));
  EXPECT_EQ(write("euc-jp", "00 00 FF 71"), done("8E B1", 4));
  EXPECT_EQ(write("euc-jp", "00 00 4E 02"), done("8F B0 A1", 4));
  EXPECT_EQ(write("euc-jis-2004", "00 00 30 42"), done("A4 A2", 4));
  EXPECT_EQ(write("euc-jis-2004", "00 02 00 89"), done("8F A1 A1", 4));
}

TEST_F(EucJp, does_not_write_rows_7f_to_92) {
  EXPECT_EQ(write("euc-jp", "00 00 E0 22"), done("FE A1", 4)) << "row 7E";
  EXPECT_EQ(write("euc-jp", "00 00 E0 21"), (Result{23, 4, ""})) << "row 7F";
  EXPECT_EQ(write("euc-jp", "00 00 E0 23"), (Result{23, 4, ""})) << "row 92";
  EXPECT_EQ(write("euc-jp", "00 00 E0 24"), done("93 A1", 4)) << "row 93";
  EXPECT_EQ(convertWhole({"euc-jp", "euc-jp"}, bytes("FF A1")), (Result{23, 2, ""}));
}

TEST_F(EucJp, writes_single_bytes_only_for_ascii) {
  EXPECT_EQ(write("latin", "00 00 00 A5"), (Result{23, 4, ""}));
  EXPECT_EQ(write("latin-fixed", "00 00 00 A5"), (Result{23, 4, ""}));
}

TEST_F(EucJp, writes_a_character_whole_or_not_at_all) {
  for (const char* codes : {"00 00 30 42", "00 00 FF 71", "00 00 4E 02"}) {
    const Bytes whole = write("euc-jp", codes).output;
    for (int32_t room = 0; room < static_cast<int32_t>(whole.size()); ++room) {
      Converter converter({"ISO-10646-UCS-4", "euc-jp"});
      converter.give(bytes(codes), room);
      EXPECT_EQ(converter.convert(), 22u);
      EXPECT_EQ(converter.record.outputPosition, 0);
      EXPECT_EQ(converter.record.inputPosition, 0);
      EXPECT_EQ(converter.record.unitsWritten, 0);
      converter.drain(8);
      EXPECT_EQ(converter.convert(), 0u);
      EXPECT_EQ(converter.written(), whole);
      EXPECT_EQ(converter.record.unitsWritten, 1);
    }
  }
}

TEST_F(EucJp, has_no_byte_order) {
  Conversion little = {"ISO-10646-UCS-4", "euc-jp"};
  little.options.outputBigEndian = 0;
  EXPECT_EQ(convertWhole(little, bytes("00 00 30 42 00 00 FF 71")), done("A4 A2 8E B1", 8));
}

TEST_F(EucJp, writes_newline_forms_in_its_single_bytes) {
  Conversion newlines = {"ISO-10646-UCS-4", "euc-jp"};
  newlines.options.convertNewlines = 1;
  newlines.options.newlineForm = 4;
  EXPECT_EQ(convertWhole(newlines, bytes("00 00 00 0A")), done("0D 0A", 4));
}

TEST_F(EucJp, fixed_reads_two_bytes_a_character) {
  EXPECT_EQ(read("euc-jp-fix", "00 41 B0 21 B0 A1 00 B1"),
            done("00 00 00 41 00 00 4E 02 00 00 4E 9C 00 00 FF 71", 8));
  EXPECT_EQ(read("euc-jp-fix", "00"), (Result{12, 0, ""}));
  EXPECT_EQ(read("euc-jp-fix", "B0"), (Result{12, 0, ""}));
  EXPECT_EQ(read("euc-jp-fix", "01"), (Result{12, 0, ""})) << "both bytes are read first";
  for (const char* text : {"00 7F", "00 9F", "01 41", "9F A1", "B0 20", "B0 7F", "B0 9F"}) {
    EXPECT_EQ(read("euc-jp-fix", text), (Result{13, 1, ""})) << text;
  }
  EXPECT_EQ(read("ascii-fixed", "B0 A1"), (Result{13, 1, ""}));
}

TEST_F(EucJp, fixed_leaves_codes_without_high_bits_in_the_record) {
  Converter converter({"euc-jp-fix", "ISO-10646-UCS-4"});
  converter.give(bytes("B0 21"), 8);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.decodedGroup, 2007u);
  EXPECT_EQ(converter.record.rawCode, 0x3021u);
  converter.give(bytes("B0 A1"), 8);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.decodedGroup, 2006u);
  EXPECT_EQ(converter.record.rawCode, 0x3021u);
}

TEST_F(EucJp, fixed_writes_two_bytes_a_character) {
  EXPECT_EQ(write("euc-jp-fix", "00 00 00 41 00 00 FF 71 00 00 30 42 00 00 4E 02"),
            done("00 41 00 B1 A4 A2 B0 21", 16));
  EXPECT_EQ(write("euc-jp-fix", "00 00 E0 21"), (Result{23, 4, ""}));
  EXPECT_EQ(write("euc-jp-fix", "00 00 E0 24"), done("93 A1", 4));
  Converter converter({"ISO-10646-UCS-4", "euc-jp-fix"});
  converter.give(bytes("00 00 00 41"), 1);
  EXPECT_EQ(converter.convert(), 22u);
  EXPECT_EQ(converter.record.outputPosition, 0);
}

TEST_F(EucJp, goes_through_unchanged_between_its_forms) {
  EXPECT_EQ(convertWhole({"euc-jp", "euc-jp-fix"}, bytes("41 A4 A2 8E B1 8F B0 A1")),
            done("00 41 A4 A2 00 B1 B0 21", 8));
  EXPECT_EQ(convertWhole({"euc-jp-fix", "euc-jp"}, bytes("00 41 A4 A2 00 B1 B0 21")),
            done("41 A4 A2 8E B1 8F B0 A1", 8));
}

TEST_F(EucJp, skips_one_byte_at_a_time) {
  Conversion skipping = {"euc-jp", "ISO-10646-UCS-4"};
  skipping.parameters[2] = 1;
  EXPECT_EQ(convertWhole(skipping, bytes("8F 41 A1 A4 A2")), (Result{23, 4, bytes("00 00 00 41")}))
      << "behind 8F and A there is A1 A4, a code without a character";
}

}  // namespace
}  // namespace ksv_test
