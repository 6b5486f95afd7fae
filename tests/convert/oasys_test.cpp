// The OASYS encodings, byte by byte.
#include "tests/convert/converter.h"
#include "tests/convert/own_directory.h"

namespace ksv_test {
namespace {

const Group kLatin = {"jis_x0201latin", 1, "A A\r\n41 41\r\n9F 9F9F"};
const Group kKana = {"jis_x0201kana", 1, "A0 F8F0\r\nB1 FF71"};
const Group kJisC6226 = {"jis_c6226-1978", 2, "2422 3042\r\n21FF 3001\r\n7F00 3002"};
const Group kJisX0208 = {"jis_x0208-1990", 2, "2422 3042\r\n3021 4E9C"};
const Group kIbm = {"ibm_extset", 2, "9321 2170"};
const Group kExtset = {"oasys_extset", 2, "24A2 E111\r\n1 E112\r\n7FFF E113"};
const Group kUnicode = {"any-unicode", 4, ""};

class Oasys : public OwnDirectory {
 protected:
  Oasys() {
    load({{"oasys_win", "OASYS_WIN", {kLatin, kKana, kJisX0208, kIbm}},
          {"oasys_online", "OASYS_ONLINE", {kLatin, kKana, kJisC6226, kExtset}},
          {"latin-online", "OASYS_ONLINE", {kLatin}},
          {"windows31j", "WINDOWS31J", {kLatin, kKana, kJisX0208, kIbm}},
          {"iso-10646-ucs-4", "ISO-10646-UCS-4", {kUnicode}}});
  }

  static Result read(const char* text, const char* source = "oasys_online") {
    return convertWhole({source, "ISO-10646-UCS-4"}, bytes(text));
  }
  static Result done(const char* output, int32_t position) { return {0, position, bytes(output)}; }
};

TEST_F(Oasys, online_reads_two_bytes_a_character) {
  EXPECT_EQ(read("00 41 00 B1 24 22 A4 A2"),
            done("00 00 00 41 00 00 FF 71 00 00 30 42 00 00 E1 11", 8));
  EXPECT_EQ(read("00 9F"), done("00 00 9F 9F", 2)) << "Latin up to 9F";
  EXPECT_EQ(read("00 A0"), done("00 00 F8 F0", 2)) << "katakana from A0";
  EXPECT_EQ(read("21 FF 7F 00"), done("00 00 30 01 00 00 30 02", 4)) << "any second byte";
  EXPECT_EQ(read("80 01 FF FF"), done("00 00 E1 12 00 00 E1 13", 4));
}

TEST_F(Oasys, online_leaves_group_and_code) {
  Converter converter({"oasys_online", "ISO-10646-UCS-4"});
  converter.give(bytes("A4 A2"), 8);
  EXPECT_EQ(converter.convert(), 0u);
  EXPECT_EQ(converter.record.decodedGroup, 3003u);
  EXPECT_EQ(converter.record.rawCode, 0x24A2u);
  EXPECT_EQ(converter.record.groupCode, 0x24A2u);
  EXPECT_EQ(converter.record.charactersRead, 1);
}

TEST_F(Oasys, online_refuses_a_first_byte_from_01_to_20) {
  EXPECT_EQ(read("0A 00"), (Result{13, 1, ""}));
  EXPECT_EQ(read("0A"), (Result{13, 1, ""})) << "without its second byte";
  EXPECT_EQ(read("01 41"), (Result{13, 1, ""}));
  EXPECT_EQ(read("20 41"), (Result{13, 1, ""}));
  EXPECT_EQ(read("00 0A"), done("00 00 00 0A", 2)) << "a line end is written so";
}

TEST_F(Oasys, online_waits_for_a_second_byte) {
  for (const char* text : {"00", "21", "7F", "80", "FF"}) {
    EXPECT_EQ(read(text), (Result{12, 0, ""})) << text;
  }
}

TEST_F(Oasys, online_refuses_what_is_of_no_member) {
  EXPECT_EQ(read("24 22", "latin-online"), (Result{13, 1, ""}));
  EXPECT_EQ(read("00 B1", "latin-online"), (Result{13, 1, ""}));
  EXPECT_EQ(read("A4 A2", "latin-online"), (Result{13, 1, ""}));
}

TEST_F(Oasys, online_writes_codes_as_they_are) {
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "oasys_online"},
                         bytes("00 00 00 41 00 00 30 42 00 00 E1 11")),
            done("41 24 22 24 A2", 12));
}

TEST_F(Oasys, win_reads_shift_jis_through_its_members) {
  EXPECT_EQ(read("41 B1 82 A0 88 9F", "oasys_win"),
            done("00 00 00 41 00 00 FF 71 00 00 30 42 00 00 4E 9C", 6));
  EXPECT_EQ(read("FA 40", "oasys_win"), done("00 00 21 70", 2)) << "row 93 is of a member";
  EXPECT_EQ(read("82", "oasys_win"), (Result{12, 0, ""}));
  EXPECT_EQ(read("82 7F", "oasys_win"), (Result{13, 0, ""}));
  EXPECT_EQ(read("41 82 7F", "oasys_win"), (Result{13, 1, bytes("00 00 00 41")}));
}

TEST_F(Oasys, win_skips_a_byte_of_an_invalid_pair) {
  Conversion skipping = {"oasys_win", "ISO-10646-UCS-4"};
  skipping.parameters[2] = 1;
  EXPECT_EQ(convertWhole(skipping, bytes("82 FF 41")), done("00 00 00 41", 3));
  EXPECT_EQ(convertWhole(skipping, bytes("82 7F 41")), done("00 00 00 7F 00 00 00 41", 3))
      << "DEL is a character of any group";
}

TEST_F(Oasys, win_writes_as_windows31j) {
  const Bytes text = bytes("00 00 00 41 00 00 30 42 00 00 21 70");
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "oasys_win"}, text), done("41 82 A0 FA 40", 12));
  EXPECT_EQ(convertWhole({"ISO-10646-UCS-4", "windows31j"}, text), done("41 82 A0 FA 40", 12));
}

}  // namespace
}  // namespace ksv_test
