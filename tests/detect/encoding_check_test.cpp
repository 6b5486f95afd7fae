// cconvChkEncode: the buffers are written out in the tests, with every field of their
// answers.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ksv_cconv.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

using namespace std::string_literals;

struct Answer {
  uint32_t result;
  std::string name;
  uint32_t declared;
  uint32_t mark;
  uint32_t bigEndian;
  uint32_t lineEnd;
  uint32_t resultClass;
  friend bool operator==(const Answer&, const Answer&) = default;
  friend void PrintTo(const Answer& a, std::ostream* out) {
    *out << a.result << " " << a.name << ", declared " << a.declared << ", mark " << a.mark
         << ", big-endian " << a.bigEndian << ", line end " << a.lineEnd << ", class "
         << a.resultClass;
  }
};

Answer check(const std::string& text, uint32_t position = 0) {
  EncodingCheckRecord record;
  std::memset(&record, 0xAA, sizeof record);
  record.input = reinterpret_cast<const uint8_t*>(text.data());
  record.position = position;
  record.end = static_cast<uint32_t>(text.size());
  const uint32_t result = cconvChkEncode(&record);
  EXPECT_EQ(record.position, position);
  EXPECT_EQ(record.end, text.size());
  return {result,           record.name,    record.declared,   record.mark,
          record.bigEndian, record.lineEnd, record.resultClass};
}

std::string nameOf(const std::string& text) { return check(text).name; }

const Answer kUnknown = {0, "unknown", 0, 0, 1, 0, 0};

TEST(EncodingCheck, of_nothing_is_unknown) {
  EXPECT_EQ(check(""), kUnknown);
  EXPECT_EQ(check("abc", 3), kUnknown);
  EXPECT_EQ(check("abc", 4), kUnknown) << "behind the end";
  EXPECT_EQ(check("abc", 0xFFFFFFFF), kUnknown);
  EXPECT_EQ(cconvChkEncode(nullptr), 0u);
  EncodingCheckRecord record{};
  record.end = 5;
  EXPECT_EQ(cconvChkEncode(&record), 0u) << "no input";
  EXPECT_STREQ(record.name, "unknown");
}

TEST(EncodingCheck, clears_the_whole_name) {
  EncodingCheckRecord record;
  std::memset(&record, 0xAA, sizeof record);
  record.input = reinterpret_cast<const uint8_t*>("plain");
  record.position = 0;
  record.end = 5;
  EXPECT_EQ(cconvChkEncode(&record), 1u);
  for (size_t i = std::strlen("ISO-646IRV"); i < sizeof record.name; ++i)
    EXPECT_EQ(record.name[i], '\0') << i;
}

TEST(EncodingCheck, takes_the_name_of_a_mark) {
  EXPECT_EQ(check("\xEF\xBB\xBFx"), (Answer{1, "UTF-8", 0, 1, 1, 0, 1}));
  EXPECT_EQ(check("\xEF\xBB\xBF"), (Answer{1, "UTF-8", 0, 1, 1, 0, 1}));
  EXPECT_EQ(check("\xFF\xFEx\0"s), (Answer{1, "UTF-16", 0, 1, 0, 0, 4098}));
  EXPECT_EQ(check("\xFE\xFF\0x"s), (Answer{1, "UTF-16", 0, 1, 1, 0, 4098}));
  EXPECT_EQ(check("\xFF\xFE"), (Answer{1, "UTF-16", 0, 1, 0, 0, 4098}));
  EXPECT_EQ(check("\xFF\xFE\0\0"s), (Answer{1, "ISO-10646-UCS-4", 0, 1, 0, 0, 4098}));
  EXPECT_EQ(check("\0\0\xFE\xFF"s), (Answer{1, "ISO-10646-UCS-4", 0, 1, 1, 0, 4098}));
  EXPECT_EQ(check("\xFF\xFE\0"s), (Answer{1, "UTF-16", 0, 1, 0, 0, 4098})) << "three bytes";
  EXPECT_EQ(check("\xFF\xFE\0\x01"s), (Answer{1, "UTF-16", 0, 1, 0, 0, 4098}));
  EXPECT_EQ(check("abc\xFF\xFEx\0"s, 3), (Answer{1, "UTF-16", 0, 1, 0, 0, 4098}));
}

TEST(EncodingCheck, takes_the_declared_encoding_in_either_quotation_marks) {
  const Answer declared = {1, "Shift_JIS", 1, 0, 1, 0, 1};
  EXPECT_EQ(check("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>"), declared);
  EXPECT_EQ(check("<?xml encoding='Shift_JIS'?>"), declared);
  EXPECT_EQ(check("<?XML ENCODING='Shift_JIS'?>"), declared);
  EXPECT_EQ(check("<?xml encoding='Shift_JIS\"?>"), declared) << "a mixture";
  EXPECT_EQ(check("<?xml encoding='anything at all'?>").name, "anything at all");
  EXPECT_EQ(check("<?Xml encoding='Shift_JIS'?>").declared, 0u);
  EXPECT_EQ(check("<?xml Encoding='Shift_JIS'?>").name, "UTF-8");
}

TEST(EncodingCheck, looks_for_the_declared_encoding_on_the_first_line) {
  EXPECT_EQ(nameOf("<?xml version='1.0'\nencoding='Shift_JIS'?>"), "UTF-8");
  EXPECT_EQ(nameOf("<?xml version='1.0'\rencoding='Shift_JIS'?>"), "UTF-8");
  EXPECT_EQ(nameOf("<?xml encoding=\n'Shift_JIS'?>"), "Shift_JIS") << "the value may stand below";
  EXPECT_EQ(nameOf("<?xml?> encoding 'x'"), "x") << "and behind the declaration";
}

TEST(EncodingCheck, of_a_declaration_without_a_value_is_that_of_its_width) {
  const std::string plain = "<?xml version='1.0'?> and more";
  EXPECT_EQ(check(plain), (Answer{1, "UTF-8", 1, 0, 1, 0, 1}));
  EXPECT_EQ(check(widened(plain, 2, false)), (Answer{1, "UTF-16", 1, 0, 0, 0, 4098}));
  EXPECT_EQ(check(widened(plain, 2, true)), (Answer{1, "UTF-16", 1, 0, 1, 0, 4098}));
  EXPECT_EQ(check(widened(plain, 4, false)), (Answer{1, "ISO-10646-UCS-4", 1, 0, 0, 0, 4098}));
  EXPECT_EQ(check(widened(plain, 4, true)), (Answer{1, "ISO-10646-UCS-4", 1, 0, 1, 0, 4098}));
  EXPECT_EQ(nameOf("<?xml encoding='Shift_JIS"), "UTF-8") << "not closed";
  EXPECT_EQ(nameOf("<?xml encoding=Shift_JIS?>"), "UTF-8") << "no quotation mark";
}

TEST(EncodingCheck, reads_the_declared_encoding_in_wide_units) {
  const std::string text = "<?xml version='1.0' encoding='ISO-10646-UCS-2'?>\r\n  ";
  for (const size_t width : {2, 4}) {
    for (const bool bigEndian : {false, true}) {
      EXPECT_EQ(check(widened(text, width, bigEndian)),
                (Answer{1, "ISO-10646-UCS-2", 1, 0, bigEndian, 1, 4098}))
          << width << bigEndian;
    }
  }
  std::string wide = widened("<?xml encoding='ab'", 2, false) + "  ";
  wide[wide.find('a') + 1] = '\x4E';
  EXPECT_EQ(nameOf(wide), "ab") << "the low byte of each unit";
}

TEST(EncodingCheck, lets_the_declaration_overrule_the_mark) {
  const std::string text = "<?xml encoding='Shift_JIS'?>";
  EXPECT_EQ(check("\xEF\xBB\xBF" + text), (Answer{1, "Shift_JIS", 1, 1, 1, 0, 1}));
  EXPECT_EQ(check("\xEF\xBB\xBF<?xml version='1.0'?>"), (Answer{1, "UTF-8", 1, 1, 1, 0, 1}));
  EXPECT_EQ(check("\xFF\xFE" + text), (Answer{1, "Shift_JIS", 1, 1, 0, 0, 1}));
  EXPECT_EQ(check("\xFF\xFE<?xml version='1.0'?>"), (Answer{1, "UTF-8", 1, 1, 0, 0, 1}));
  EXPECT_EQ(check("\xFE\xFF" + widened(text, 2, true)), (Answer{1, "Shift_JIS", 1, 1, 1, 0, 1}));
  EXPECT_EQ(check("\xFF\xFE" + widened(text, 2, false)), (Answer{1, "Shift_JIS", 1, 1, 0, 0, 1}));
}

TEST(EncodingCheck, looks_two_bytes_further_behind_a_mark) {
  EXPECT_EQ(check("\xEF\xBB\xBFxy<?xml encoding='Shift_JIS'?>").declared, 1u);
  EXPECT_EQ(check("\xEF\xBB\xBFx<?xml encoding='Shift_JIS'?>").declared, 0u);
  EXPECT_EQ(check("xy<?xml encoding='Shift_JIS'?>").declared, 0u);
}

TEST(EncodingCheck, takes_a_declaration_only_with_room_behind_it) {
  EXPECT_EQ(check("<?xml").declared, 0u);
  EXPECT_EQ(check("<?xml ").declared, 1u);
  EXPECT_EQ(check("\xEF\xBB\xBF<?xml").declared, 1u) << "the mark counts as room";
  EXPECT_EQ(check("\xEF\xBB\xBF<?xm").declared, 0u);
}

TEST(EncodingCheck, searches_the_encoding_from_the_first_byte_of_the_buffer) {
  EXPECT_EQ(check("x encoding='A' <?xml encoding='B'?>", 15).name, "A");
  EXPECT_EQ(check("encoding='A' <?xml encoding='B'?>", 13).name, "UTF-8")
      << "at offset 0 it counts as none";
  EXPECT_EQ(check("a\n <?xml encoding='B'?>", 3).name, "UTF-8") << "the first line has none";
}

TEST(EncodingCheck, leaves_a_byte_behind_the_word_encoding) {
  EXPECT_EQ(nameOf("<?xml encoding"), "UTF-8");
  const std::string text = "<?xml encoding''";
  EXPECT_EQ(check(text), (Answer{0, "unknown", 1, 0, 1, 0, 0})) << "an empty value is no name";
}

TEST(EncodingCheck, ignores_a_value_of_more_than_257_letters) {
  EXPECT_EQ(nameOf("<?xml encoding='" + std::string(257, 'x') + "'?>"), std::string(257, 'x'));
  EXPECT_EQ(nameOf("<?xml encoding='" + std::string(258, 'x') + "'?>"), "UTF-8");
  // Counted in bytes: 128 letters of two bytes have 256 between the marks.
  const auto wide = [](size_t letters) {
    return widened("<?xml encoding='" + std::string(letters, 'x') + "'?>", 2, false);
  };
  EXPECT_EQ(nameOf(wide(128)), std::string(128, 'x'));
  EXPECT_EQ(nameOf(wide(129)), "UTF-16");
}

TEST(EncodingCheck, names_plain_text_after_ISO_646) {
  EXPECT_EQ(check("plain text"), (Answer{1, "ISO-646IRV", 0, 0, 1, 0, 1}));
  EXPECT_EQ(nameOf("plain\ttext\r\n"), "ISO-646IRV");
}

TEST(EncodingCheck, names_text_after_its_scores) {
  EXPECT_EQ(check("これは日本語です"), (Answer{1, "UTF-8", 0, 0, 1, 0, 1}));
  EXPECT_EQ(nameOf("\x93\xFA\x96\x7B\x8C\xEA"), "WINDOWS31J");
  EXPECT_EQ(nameOf("\x1B$B\x46\x7C\x4B\x5C\x1B(B"), "ISO-2022-JP");
  EXPECT_EQ(nameOf("\xA4\xB3\xA4\xEC\xA4\xCF\x8F\xB0\xA1"), "EUC-JP");
  EXPECT_EQ(nameOf("\xB1\xB2"), "ISO-8859-1") << "katakana without a pair";
  EXPECT_EQ(check("\xE5\x65\x2C\x67\x9E\x8A\x41\x00"s), (Answer{1, "UTF-16", 0, 0, 0, 0, 4098}));
  EXPECT_EQ(check("\x65\xE5\x67\x2C\x8A\x9E\x00\x41"s), (Answer{1, "UTF-16", 0, 0, 1, 0, 4098}));
  EXPECT_EQ(check("\0\0\x65\xE5\0\0\x30\x42"s), (Answer{1, "ISO-10646-UCS-4", 0, 0, 1, 0, 4098}));
  EXPECT_EQ(check("\xE5\x65\0\0\x42\x30\0\0"s), (Answer{1, "ISO-10646-UCS-4", 0, 0, 0, 0, 4098}));
  EXPECT_EQ(nameOf("\0A\xB0\x21\xA4\xA2\0 "s), "EUC-JP-FIX");
}

TEST(EncodingCheck, of_bytes_that_fit_nothing_is_unknown) {
  EXPECT_EQ(check("\x80\x01\x02\x03\x04"), kUnknown);
  EXPECT_EQ(check("\0"s), kUnknown);
  EXPECT_EQ(check("\x1B"), kUnknown);
}

TEST(EncodingCheck, needs_seven_characters_of_ten) {
  EXPECT_EQ(nameOf("aaaaaaaa\x01\x01"), "ISO-646IRV") << "8 of 10";
  EXPECT_EQ(check("aaaaaaa\x01\x01\x01"), kUnknown) << "7 of 10 is not above the limit";
}

TEST(EncodingCheck, gives_up_three_encodings_at_a_NUL) {
  EXPECT_EQ(check("ab\0\x01"s), kUnknown);
  EXPECT_EQ(check("\xA4\xB3\xA4\xEC\xA4\xCF\0\0"s).name, "EUC-JP-FIX");
}

// Each text fits one of them only, and a byte in thirty would not change that.
TEST(EncodingCheck, gives_up_each_of_the_three_at_a_byte_that_it_never_has) {
  struct Fitting {
    const char* name;
    std::string text;
    std::string stops;
  };
  const Fitting fittings[] = {
      {"UTF-8", repeated("\xE3\x81\x82\xC3\xA9\xF0\x9F\x98\x80", 90), "\0\x1B"s},
      {"EUC-JP", repeated("\x8F\xB0\xFE", 90), "\0\x1B"s},
      {"WINDOWS31J", repeated("\x93\xFA\x96\x7B\x8C\xEA", 90), "\0\x1B\x7F"s},
  };
  for (const Fitting& fitting : fittings) {
    EXPECT_EQ(nameOf(fitting.text), fitting.name);
    EXPECT_EQ(nameOf(fitting.text + "\x01"), fitting.name) << "a bad byte";
    for (const char stop : fitting.stops) {
      EXPECT_EQ(check(fitting.text + stop), kUnknown) << fitting.name << " " << int{stop};
      EXPECT_EQ(check(stop + fitting.text), kUnknown) << fitting.name << " " << int{stop};
      EXPECT_EQ(check(fitting.text + stop + fitting.text), kUnknown) << fitting.name;
    }
  }
}

TEST(EncodingCheck, scores_two_kibibytes) {
  const std::string plain(2048, 'a');
  EXPECT_EQ(nameOf(plain + std::string(4000, '\x01')), "ISO-646IRV");
  EXPECT_EQ(nameOf(plain.substr(2) + "\0\0"s), "ISO-2022-JP") << "which takes a NUL for bad only";
  EXPECT_EQ(nameOf(plain + "\0\0"s), "ISO-646IRV");
  EXPECT_EQ(nameOf(plain.substr(2) + "あ"), "ISO-646IRV") << "cut there, it is not counted";
}

TEST(EncodingCheck, tells_the_most_frequent_line_end) {
  const auto lineEnd = [](const std::string& text) { return check(text).lineEnd; };
  EXPECT_EQ(lineEnd("a\r\nb\r\nc"), 1u);
  EXPECT_EQ(lineEnd("a\rb\rc"), 2u);
  EXPECT_EQ(lineEnd("a\nb\nc"), 3u);
  EXPECT_EQ(lineEnd("a\xE2\x80\xA8z"), 4u);
  EXPECT_EQ(lineEnd("a\xE2\x80\xA9z"), 5u);
  EXPECT_EQ(lineEnd("a\r\nb\nc\nd"), 3u);
  EXPECT_EQ(lineEnd("a\r\nb\nc"), 1u) << "as many of both";
  EXPECT_EQ(lineEnd("a\rb\nc"), 0u);
  EXPECT_EQ(lineEnd("a\n\rb"), 1u) << "LF CR is a pair";
  EXPECT_EQ(lineEnd("ab\n"), 0u) << "told by the unit behind it";
  EXPECT_EQ(lineEnd("ab\r"), 0u);
  EXPECT_EQ(lineEnd("a\n\n\nb"), 3u) << "the second is used up with the first";
}

TEST(EncodingCheck, tells_line_ends_of_Iso2022Jp_by_another_rule) {
  const std::string pair = "\x1B$B\x46\x7C\x1B(B";
  const auto lineEnd = [&](const std::string& text) { return check(pair + text).lineEnd; };
  EXPECT_EQ(lineEnd("\r\na\r\nb\r\nc\nd"), 3u) << "lone ones come first";
  EXPECT_EQ(lineEnd("\r\na\r\nb\rc"), 2u);
  EXPECT_EQ(lineEnd("\r\na\nb\rc"), 1u);
  EXPECT_EQ(lineEnd("a"), 0u);
}

TEST(EncodingCheck, counts_line_ends_in_units_of_the_charset) {
  EXPECT_EQ(check("\xFF\xFE" + widened("a\r\nb", 2, false)).lineEnd, 1u);
  EXPECT_EQ(check("\xFF\xFE\x61\0\x28\x20\x62\0"s).lineEnd, 4u);
  EXPECT_EQ(check("\xFE\xFF\0\x61\x20\x29\0\x62"s).lineEnd, 5u);
  EXPECT_EQ(check("\xFF\xFE\0\0"s + widened("a\nb", 4, false)).lineEnd, 3u);
  EXPECT_EQ(check("\0A\xB0\x21\0\n\xA4\xA2"s).lineEnd, 3u) << "EUC-JP-FIX";
  EXPECT_EQ(check("\xFF\xFE" + widened("<?xml encoding='x'?>\na", 2, false)).lineEnd, 3u)
      << "of the declaration's width";
}

}  // namespace
}  // namespace ksv_detect_tests
