// Which encoding a rule file is in, how it is decoded, and which files are refused.
#include "ksv_cconv.h"
#include "tests/rules/support.h"

namespace ksv::test {
namespace {

using Kind = TextEncodingKind;

struct Detected {
  Kind kind;
  bool bigEndian;
  friend bool operator==(const Detected&, const Detected&) = default;
};
std::ostream& operator<<(std::ostream& out, const Detected& detected) {
  return out << static_cast<uint32_t>(detected.kind) << (detected.bigEndian ? " big" : " little");
}

Detected detect(const std::string& bytes) {
  RuleText text;
  text.bytes.assign(bytes.begin(), bytes.end());
  const bool known = detectEncoding(text);
  EXPECT_EQ(known, text.encoding != Kind::kUnknown);
  return {text.encoding, text.bigEndian};
}

constexpr Detected kNothingLittle = {Kind::kUnknown, false};
constexpr Detected kNothingBig = {Kind::kUnknown, true};

const std::string kLittleMark = "\xFF\xFE";
const std::string kBigMark = "\xFE\xFF";

std::string little(std::string_view text) { return encode(kUtf16Little, text); }
std::string big(std::string_view text) { return encode(kUtf16Big, text); }

// Fills up to size with blanks that mean nothing.
std::string padded(std::string bytes, size_t size) {
  EXPECT_LE(bytes.size(), size);
  bytes.resize(size, ' ');
  return bytes;
}

TEST(EncodingDetection, reads_the_name_in_the_first_line_of_a_marked_file) {
  const std::string utf16 = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>";
  const std::string ucs2 = "<?xml version=\"1.0\" encoding=\"ISO-10646-UCS-2\"?>";
  const std::string rest = "\r\n<charset> and so on </charset>";
  EXPECT_EQ(detect(kLittleMark + little(utf16 + rest)), (Detected{Kind::kUtf16, false}));
  EXPECT_EQ(detect(kBigMark + big(utf16 + rest)), (Detected{Kind::kUtf16, true}));
  EXPECT_EQ(detect(kLittleMark + little(ucs2 + rest)), (Detected{Kind::kUcs2, false}));
  EXPECT_EQ(detect(kBigMark + big(ucs2 + rest)), (Detected{Kind::kUcs2, true}));
}

TEST(EncodingDetection, finds_no_other_name_in_a_marked_file) {
  for (const char* name : {"utf-16", "UTF-8", "utf-8", "shift_jis", "ISO-10646-UCS-4",
                           "ISO-10646-UCS2", "iso-10646-ucs-2", "U T F - 1 6", "none"}) {
    const std::string line = "<?xml encoding=\"" + std::string(name) + "\"?> and enough behind it";
    EXPECT_EQ(detect(kLittleMark + little(line)), kNothingLittle) << name;
    EXPECT_EQ(detect(kBigMark + big(line)), kNothingBig) << name;
  }
}

TEST(EncodingDetection, takes_the_first_of_two_names) {
  const std::string tail(40, ' ');
  EXPECT_EQ(detect(kLittleMark + little("UTF-16 ISO-10646-UCS-2" + tail)).kind, Kind::kUtf16);
  EXPECT_EQ(detect(kLittleMark + little("ISO-10646-UCS-2 UTF-16" + tail)).kind, Kind::kUcs2);
}

TEST(EncodingDetection, stops_at_the_end_of_the_first_line) {
  const std::string tail(40, ' ');
  for (const char* lineEnd : {"\r", "\n", "\r\n"}) {
    EXPECT_EQ(detect(kLittleMark + little("<x>" + std::string(lineEnd) + "UTF-16" + tail)),
              kNothingLittle);
    EXPECT_EQ(detect(kBigMark + big("<x>" + std::string(lineEnd) + "UTF-16" + tail)), kNothingBig);
  }
}

TEST(EncodingDetection, takes_a_byte_0D_or_0A_inside_a_character_for_the_line_end) {
  const std::string tail = little(" UTF-16" + std::string(40, ' '));
  EXPECT_EQ(detect(kLittleMark + "\x05\x30" + tail).kind, Kind::kUtf16);    // U+3005
  EXPECT_EQ(detect(kLittleMark + "\x0A\x30" + tail).kind, Kind::kUnknown);  // U+300A
  EXPECT_EQ(detect(kLittleMark + "\x05\x0D" + tail).kind, Kind::kUnknown);  // U+0D05
}

TEST(EncodingDetection, scans_while_the_position_is_below_the_size_less_29) {
  const std::string utf16 = kLittleMark + little("UTF-16");  // the name at position 2
  EXPECT_EQ(detect(padded(utf16, 29)), kNothingLittle);
  EXPECT_EQ(detect(padded(utf16, 30)), kNothingLittle);
  EXPECT_EQ(detect(padded(utf16, 31)), kNothingLittle);
  EXPECT_EQ(detect(padded(utf16, 32)), (Detected{Kind::kUtf16, false}));
  const std::string ucs2 = kLittleMark + little("ISO-10646-UCS-2");
  EXPECT_EQ(ucs2.size(), 32u);
  EXPECT_EQ(detect(ucs2), (Detected{Kind::kUcs2, false}));
  EXPECT_EQ(detect(ucs2.substr(0, 31)), kNothingLittle);
}

TEST(EncodingDetection, matches_a_big_endian_name_one_byte_later) {
  const std::string utf16 = kBigMark + big("UTF-16");  // 'U' at position 3
  EXPECT_EQ(detect(padded(utf16, 32)), kNothingBig);
  EXPECT_EQ(detect(padded(utf16, 33)), (Detected{Kind::kUtf16, true}));
  const std::string ucs2 = kBigMark + big("ISO-10646-UCS-2");
  EXPECT_EQ(detect(padded(ucs2, 32)), kNothingBig);
  EXPECT_EQ(detect(padded(ucs2, 33)), (Detected{Kind::kUcs2, true}));
}

TEST(EncodingDetection, asks_the_mark_for_the_byte_order_and_not_the_name) {
  const std::string tail(40, ' ');
  EXPECT_EQ(detect(kLittleMark + big("UTF-16" + tail)), (Detected{Kind::kUtf16, false}));
  EXPECT_EQ(detect(kBigMark + little("UTF-16" + tail)), (Detected{Kind::kUtf16, true}));
}

TEST(EncodingDetection, knows_ucs4_by_its_first_and_fourth_byte) {
  EXPECT_EQ(detect(std::string("\xFF\0\0\xFE", 4)), (Detected{Kind::kUcs4, false}));
  EXPECT_EQ(detect(std::string("\xFE\0\0\xFF", 4)), (Detected{Kind::kUcs4, true}));
  EXPECT_EQ(detect("\xFF"
                   "ab\xFE"),
            (Detected{Kind::kUcs4, false}));
  EXPECT_EQ(detect("\xFE"
                   "ab\xFF"),
            (Detected{Kind::kUcs4, true}));
  EXPECT_EQ(detect("\xFF"
                   "ab\xFF"),
            kNothingLittle);
  EXPECT_EQ(detect("\xFE"
                   "ab\xFE"),
            kNothingLittle);
}

TEST(EncodingDetection, does_not_know_the_usual_four_byte_marks) {
  // The little-endian one begins with the mark of 16-bit units.
  EXPECT_EQ(
      detect(std::string("\xFF\xFE\0\0", 4) + encode(kUcs4Little, "<?xml encoding=\"UTF-16\"?>")),
      kNothingLittle);
  EXPECT_EQ(detect(std::string("\0\0\xFE\xFF", 4) + encode(kUcs4Big, "<?xml?>")), kNothingLittle);
}

TEST(EncodingDetection, finds_utf_8_or_shift_in_a_file_without_a_mark) {
  EXPECT_EQ(detect("<?xml encoding=\"utf-8\"?>"), (Detected{Kind::kUtf8, false}));
  EXPECT_EQ(detect("<?xml encoding=\"shift_jis\"?>"), (Detected{Kind::kShiftJis, false}));
  EXPECT_EQ(detect("shift utf-8 "), (Detected{Kind::kShiftJis, false}));
  EXPECT_EQ(detect("utf-8 shift "), (Detected{Kind::kUtf8, false}));
  EXPECT_EQ(detect("line\r\nline\r\nutf-8 "), (Detected{Kind::kUtf8, false})) << "in any line";
}

TEST(EncodingDetection, looks_for_them_in_lower_case_and_not_at_the_very_end) {
  EXPECT_EQ(detect("<?xml encoding=\"UTF-8\"?>"), kNothingLittle);
  EXPECT_EQ(detect("<?xml encoding=\"Shift_JIS\"?>"), kNothingLittle);
  EXPECT_EQ(detect("utf-8"), kNothingLittle);
  EXPECT_EQ(detect("utf-8."), (Detected{Kind::kUtf8, false}));
  EXPECT_EQ(detect("xshift"), kNothingLittle);
  EXPECT_EQ(detect("xshift."), (Detected{Kind::kShiftJis, false}));
}

TEST(EncodingDetection, does_not_look_for_them_behind_a_mark) {
  EXPECT_EQ(detect(kLittleMark + "utf-8 and more than 29 bytes of text"), kNothingLittle);
  EXPECT_EQ(detect(std::string("\xFE\0\0\xFF utf-8 ", 11)), (Detected{Kind::kUcs4, true}));
}

TEST(EncodingDetection, of_the_shortest_files_finds_nothing) {
  const std::string start("\xFF\0\0", 3);
  for (size_t size = 0; size <= 3; ++size) EXPECT_EQ(detect(start.substr(0, size)), kNothingLittle);
  EXPECT_EQ(detect("\xFE"), kNothingLittle);
  EXPECT_EQ(detect(kLittleMark), kNothingLittle);
  EXPECT_EQ(detect(kBigMark), kNothingBig);
  EXPECT_EQ(detect(kBigMark + "a"), kNothingBig);
}

// The characters of bytes in a form.
std::vector<uint32_t> decode(const TextForm& form, const std::string& bytes) {
  RuleText text;
  text.encoding = form.kind;
  text.bigEndian = form.bigEndian;
  text.bytes.assign(bytes.begin(), bytes.end());
  EXPECT_TRUE(decodeToUcs4(text));
  return text.chars;
}

using Chars = std::vector<uint32_t>;

TEST(Decoding, reads_units_in_the_byte_order_of_the_file) {
  EXPECT_EQ(decode(kUtf16Little, std::string("\x3C\0\x42\x30", 4)), (Chars{0x3C, 0x3042}));
  EXPECT_EQ(decode(kUtf16Big, std::string("\0\x3C\x30\x42", 4)), (Chars{0x3C, 0x3042}));
  EXPECT_EQ(decode(kUcs2Little, std::string("\x3C\0\x42\x30", 4)), (Chars{0x3C, 0x3042}));
  EXPECT_EQ(decode(kUcs2Big, std::string("\0\x3C\x30\x42", 4)), (Chars{0x3C, 0x3042}));
  EXPECT_EQ(decode(kUcs4Little, "\x44\x33\x22\x11"), (Chars{0x11223344}));
  EXPECT_EQ(decode(kUcs4Big, "\x11\x22\x33\x44"), (Chars{0x11223344}));
}

TEST(Decoding, ignores_bytes_that_make_no_whole_unit) {
  EXPECT_EQ(decode(kUtf16Little, std::string("\x3C\0\x42", 3)), (Chars{0x3C}));
  EXPECT_EQ(decode(kUcs2Big, std::string("\0\x3C\x30", 3)), (Chars{0x3C}));
  for (const size_t size : {4u, 5u, 6u, 7u}) {
    EXPECT_EQ(decode(kUcs4Little, std::string("\x3C\0\0\0\x42\x30\0\0", size)), (Chars{0x3C}));
  }
  EXPECT_EQ(decode(kUcs2Little, "x"), Chars{});
}

TEST(Decoding, takes_surrogates_of_utf_16_together_in_roles_of_their_own) {
  // Second unit no high surrogate: (second - D7F7) * 1024 + first.
  EXPECT_EQ(decode(kUtf16Big, std::string("\xD8\x3D\xDE\x00", 4)), (Chars{0x18FC3D}));
  EXPECT_EQ(decode(kUtf16Little, std::string("\x3D\xD8\x00\xDE", 4)), (Chars{0x18FC3D}));
  EXPECT_EQ(decode(kUtf16Big, std::string("\xDE\x01\xDE\x00", 4)), (Chars{0x182400 + 0xDE01}));
  // Second unit a high surrogate: (first - D7F7) * 1024 + second.
  EXPECT_EQ(decode(kUtf16Big, std::string("\xDE\x00\xD8\x3D", 4)), (Chars{0x18FC3D}));
  EXPECT_EQ(decode(kUtf16Big, "\xD8\x02\xD8\x01"), (Chars{0x2C00 + 0xD801}));
}

TEST(Decoding, takes_any_unit_behind_a_surrogate_with_it) {
  // (0x0041 - 0xD7F7) * 1024 + 0xD83D in 32 bits.
  EXPECT_EQ(decode(kUtf16Big, std::string("\xD8\x3D\x00\x41\x00\x42", 6)),
            (Chars{0xFCA2003D, 0x42}));
  // (0xD7C1 - 0xD7F7) * 1024 + 0xD83C is 0x3C: a '<' in disguise.
  EXPECT_EQ(decode(kUtf16Big, "\xD8\x3C\xD7\xC1"), (Chars{0x3C}));
}

TEST(Decoding, drops_a_surrogate_that_ends_the_file) {
  EXPECT_EQ(decode(kUtf16Big, std::string("\0a\xD8\x3D", 4)), (Chars{'a'}));
  EXPECT_EQ(decode(kUtf16Big, std::string("\0a\xDE\0\xDE", 5)), (Chars{'a'}));
}

TEST(Decoding, of_ucs_2_knows_no_surrogates) {
  EXPECT_EQ(decode(kUcs2Big, std::string("\xD8\x3D\xDE\x00\xD8\x00", 6)),
            (Chars{0xD83D, 0xDE00, 0xD800}));
}

TEST(Decoding, refuses_utf_8_and_shift_jis_and_the_unknown) {
  for (const Kind kind : {Kind::kUtf8, Kind::kShiftJis, Kind::kUnknown}) {
    RuleText text;
    text.encoding = kind;
    text.bytes = {'<', 0};
    EXPECT_FALSE(decodeToUcs4(text));
    EXPECT_TRUE(text.chars.empty());
  }
}

class ReadingRuleFiles : public RuleBaseTest {
 protected:
  // The characters of the file, or "refused".
  std::string read(const std::string& path, Kind defaultKind = Kind::kUtf16,
                   bool defaultBigEndian = false) {
    RuleText text;
    text.chars = {'o', 'l', 'd'};
    text.markers = {1};
    if (!readRuleText(path, defaultKind, defaultBigEndian, text)) {
      EXPECT_TRUE(text.chars.empty());
      EXPECT_TRUE(text.markers.empty());
      EXPECT_TRUE(text.bytes.empty());
      return "refused";
    }
    kind_ = text.encoding;
    bigEndian_ = text.bigEndian;
    return asciiOf(text);
  }

  Kind kind_ = Kind::kUnknown;
  bool bigEndian_ = false;
};

TEST_F(ReadingRuleFiles, works_in_every_encoding_and_byte_order) {
  for (const TextForm& form : kAllForms) {
    SCOPED_TRACE(form.label);
    directory_.writeRule("x.xml", "<charset/>", form);
    // The mark stays as a character; its low byte is FF.
    EXPECT_EQ(read("x.xml"), "\xFF <charset/>");
    EXPECT_EQ(kind_, form.kind);
    EXPECT_EQ(bigEndian_, form.bigEndian);
  }
}

TEST_F(ReadingRuleFiles, uses_the_defaults_without_a_name) {
  const std::string text = "<charset> of a length that is scanned </charset>";
  directory_.write("little.xml", little(text));
  directory_.write("big.xml", big(text));
  EXPECT_EQ(read("little.xml"), text);
  EXPECT_EQ(read("big.xml", Kind::kUtf16, true), text);
  EXPECT_EQ(read("big.xml", Kind::kUcs2, true), text);
  EXPECT_EQ(kind_, Kind::kUcs2);
  EXPECT_TRUE(bigEndian_);
  directory_.write("four.xml", encode(kUcs4Big, text));
  EXPECT_EQ(read("four.xml", Kind::kUcs4, true), text);
}

TEST_F(ReadingRuleFiles, takes_the_default_byte_order_even_against_the_mark) {
  // A mark without a name decides nothing.
  directory_.write("x.xml", kBigMark + little("<charset> of a length that is scanned </charset>"));
  EXPECT_EQ(read("x.xml").substr(1), "<charset> of a length that is scanned </charset>");
  EXPECT_FALSE(bigEndian_);
}

TEST_F(ReadingRuleFiles, ignores_the_directory_and_the_case_of_the_path) {
  directory_.writeRule("sub.xml", "<a>");
  for (const char* path : {"sub.xml", "SUB.XML", "/another/place/Sub.xml", "..\\..\\sub.xml",
                           "c:sub.xml", "\\\\server\\share\\sub.xml"}) {
    EXPECT_EQ(read(path).substr(1), " <a>") << path;
  }
}

TEST_F(ReadingRuleFiles, keeps_the_case_of_the_charset_path) {
  std::filesystem::create_directory(directory_.path("UPPER"));
  directory_.writeRule("UPPER/x.xml", "<a>");
  ScopedVariable setting("Charsetpath", directory_.path("UPPER/"));
  startProcess();
  EXPECT_EQ(read("X.xml").substr(1), " <a>");
  endProcess();
}

TEST_F(ReadingRuleFiles, refuses_what_is_missing_empty_or_no_file) {
  EXPECT_EQ(read("missing.xml"), "refused");
  EXPECT_EQ(read(""), "refused");
  directory_.write("empty.xml", "");
  EXPECT_EQ(read("empty.xml"), "refused");
  std::filesystem::create_directory(directory_.path("directory.xml"));
  EXPECT_EQ(read("directory.xml"), "refused");
}

TEST_F(ReadingRuleFiles, refuses_utf_8_and_shift_jis) {
  directory_.write("u.xml", "<?xml version=\"1.0\" encoding=\"utf-8\"?><charset/>");
  directory_.write("s.xml", "<?xml version=\"1.0\" encoding=\"shift_jis\"?><charset/>");
  EXPECT_EQ(read("u.xml"), "refused");
  EXPECT_EQ(read("s.xml"), "refused");
  directory_.writeRule("x.xml", "<a>");
  directory_.write("d.xml", little("<charset>"));
  EXPECT_EQ(read("d.xml", Kind::kUtf8), "refused") << "as a default too";
}

TEST_F(ReadingRuleFiles, reads_a_file_of_one_unit) {
  directory_.write("x.xml", std::string("a\0", 2));
  EXPECT_EQ(read("x.xml"), "a");
  directory_.write("x.xml", "a");
  EXPECT_EQ(read("x.xml"), "") << "a file with no whole unit is an empty text";
}

class SharedRuleFiles : public RuleBaseTest {
 protected:
  const RuleText* read(const std::string& path, Kind kind = Kind::kUtf16, bool bigEndian = false) {
    return files_.read(path, kind, bigEndian);
  }
  const RuleText* find(const std::string& path, Kind kind = Kind::kUtf16, bool bigEndian = false) {
    return files_.find(path, kind, bigEndian);
  }

  RuleFiles files_;
};

TEST_F(SharedRuleFiles, are_read_once_whatever_the_path_to_them) {
  directory_.writeRule("x.xml", "<a>");
  EXPECT_EQ(find("x.xml"), nullptr) << "not read yet";
  const RuleText* text = read("/another/place/X.xml");
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(asciiOf(*text).substr(1), " <a>");
  directory_.writeRule("x.xml", "<b>");
  for (int i = 0; i < 20; ++i) {
    directory_.writeRule(std::to_string(i), "<c>");
    EXPECT_NE(read(std::to_string(i)), nullptr);
  }
  EXPECT_EQ(read("x.xml"), text);
  EXPECT_EQ(find("x.XML"), text);
  EXPECT_EQ(asciiOf(*text).substr(1), " <a>");
}

TEST_F(SharedRuleFiles, are_read_for_each_of_the_defaults) {
  directory_.write("x.xml", little("<charset> of a length that is scanned </charset>"));
  const RuleText* text = read("x.xml");
  const RuleText* swapped = read("x.xml", Kind::kUtf16, true);
  ASSERT_NE(text, nullptr);
  ASSERT_NE(swapped, nullptr);
  EXPECT_EQ(text->chars[0], '<');
  EXPECT_EQ(swapped->chars[0], '<' * 0x100u);
  EXPECT_EQ(find("x.xml", Kind::kUcs2), nullptr);
  EXPECT_EQ(find("x.xml"), text);
}

TEST_F(SharedRuleFiles, that_cannot_be_read_are_tried_again) {
  EXPECT_EQ(read("x.xml"), nullptr);
  EXPECT_EQ(find("x.xml"), nullptr);
  directory_.writeRule("x.xml", "<a>");
  EXPECT_NE(read("x.xml"), nullptr);
}

}  // namespace
}  // namespace ksv::test
