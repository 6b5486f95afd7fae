// ISO-2022-JP as mail has it: the rows of vendors, and what is written.

#include <string>

#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

Conversion fromMail(const std::string& text, size_t block = 4096) {
  return converting().inPieces("CP50220", "UTF-8", text, block);
}

std::string toMail(const std::string& text) {
  const Conversion mail = converting().inPieces("UTF-8", "CP50220", text, 4096);
  EXPECT_EQ(mail.failure, "");
  return mail.output;
}

// The bytes of Windows-31J for a row and a cell of JIS X 0208.
std::string shiftJisOf(int row, int cell) {
  const int lead = 0x81 + (row - 0x21) / 2;
  const bool isSecond = (row - 0x21) % 2 != 0;
  const int trail = isSecond ? cell + 0x7E : cell + (cell < 0x60 ? 0x1F : 0x20);
  return bytes({lead < 0xA0 ? lead : lead + 0x40, trail});
}

TEST(Cp50220, reads_every_pair_as_code_page_932_does) {
  int characters = 0;
  for (int row = 0x21; row <= 0x7E; ++row)
    for (int cell = 0x21; cell <= 0x7E; ++cell) {
      const Conversion windows =
          converting().inPieces("WINDOWS31J", "UTF-8", shiftJisOf(row, cell), 64);
      const std::string pair = bytes({row, cell});
      for (const std::string designation : {"\x1B$B", "\x1B$@"}) {
        const Conversion mail = fromMail(designation + pair + "\x1B(B");
        ASSERT_EQ(mail.output, windows.output) << row << " " << cell;
      }
      if (windows.failure.empty()) ++characters;
    }
  EXPECT_EQ(characters, 6879 + 83 + 374);
}

TEST(Cp50220, writes_the_rows_of_vendors_behind_the_sequence_of_JIS_X_0208) {
  EXPECT_EQ(toMail("①"), "\x1B$B-!\x1B(B");
  EXPECT_EQ(toMail("あ①纊"), "\x1B$B$\"-!y!\x1B(B");
  EXPECT_EQ(toMail("≒"), "\x1B$B\"b\x1B(B");
  EXPECT_EQ(toMail("ｶﾞ"), "\x1B$B%+!+\x1B(B");
  EXPECT_EQ(converting().inPieces("UTF-8", "ISO-2022-JP", "①", 64).failure,
            "U+2460 is not in ISO-2022-JP at byte offset 0");
  EXPECT_EQ(converting().inPieces("WINDOWS31J", "CP50220", "\x87@\xFA\\\xED@\x82\xA0", 64).output,
            "\x1B$B-!y!y!$\"\x1B(B");
  EXPECT_EQ(converting().inPieces("UTF-8", "CP50220", "é", 64).failure,
            "U+00E9 is not in CP50220 at byte offset 0");
}

TEST(Cp50220, gives_vendors_rows_only_to_charsets_that_have_them) {
  const std::string mail = "\x1B$B$\"-!\x1B(B";
  const auto to = [&](const std::string& target) {
    return converting().inPieces("CP50220", target, mail, 64);
  };
  EXPECT_EQ(to("WINDOWS31J").output, "\x82\xA0\x87@");
  EXPECT_EQ(to("EUC-JP-MS").output, "\xA4\xA2\xAD\xA1");
  EXPECT_EQ(to("CP50220").output, mail);
  for (const std::string target : {"Shift_JIS", "EUC-JP", "ISO-2022-JP"})
    EXPECT_EQ(to(target).failure, "U+2460 is not in " + target + " at byte offset 5");
}

TEST(Cp50220, names_itself_where_it_lacks_a_code) {
  EXPECT_EQ(fromMail("\x1B$B$\")!\x1B(B"),
            (Conversion{"あ", "the code 0x2921 is not in CP50220 at byte offset 5"}));
  EXPECT_EQ(converting().inPieces("ISO-2022-JP", "UTF-8", "\x1B$B-!\x1B(B", 64).failure,
            "the code 0x2D21 is not in ISO-2022-JP at byte offset 3");
}

TEST(Cp50220, reads_katakana_behind_SO_and_behind_its_escape_sequence) {
  for (const size_t block : {1u, 2u, 3u, 16u}) {
    EXPECT_EQ(fromMail("a\x0E"
                       "12\x0F"
                       "b",
                       block)
                  .output,
              "aｱｲb");
    EXPECT_EQ(fromMail("\x1B$B$\"\x0E"
                       "1\x0F$$\x1B(B",
                       block)
                  .output,
              "あｱい");
    EXPECT_EQ(fromMail("\x0E"
                       "1\x1B$B$\"\x1B(Bz",
                       block)
                  .output,
              "ｱあz");
    EXPECT_EQ(fromMail("\x1B(I12\xB3\x1B(B", block).output, "ｱｲｳ");
    EXPECT_EQ(fromMail("a\x0E"
                       "1\x80",
                       block),
              (Conversion{"aｱ", "invalid CP50220 (0x80) at byte offset 3"}));
  }
  EXPECT_EQ(converting()
                .inPieces("CP50220", "Shift_JIS",
                          "a\x0E"
                          "12\x0F"
                          "b",
                          16)
                .output,
            "a\xB1\xB2"
            "b");
}

class Cp50220Names : public CommandTest {};

TEST_F(Cp50220Names, are_those_that_mail_uses) {
  for (const std::string name :
       {"cp50220", "CP50221", "csCP50220", "csISO2022JP", "windows-50221", "cp50222"}) {
    EXPECT_EQ(ksv({"convert", "-f", name, "-t", "UTF-8"}, "\x1B$B-!\x1B(B").out, "①") << name;
    EXPECT_EQ(ksv({"convert", "-f", "UTF-8", "-t", name}, "①ｱ").out, "\x1B$B-!%\"\x1B(B") << name;
  }
  EXPECT_EQ(ksv({"cut", "-c", "cp50220", "-n", "5"}, "\x1B$B$\"$$\x1B(B").out, "\x1B$B$\"");
}

// U+001B in a text would begin an escape sequence where it is read back.
TEST_F(Cp50220Names, do_not_let_an_ESC_of_the_text_through) {
  for (const std::string target : {"ISO-2022-JP", "CP50220", "ISO-2022-JP-2004"}) {
    const auto convert = [&](const std::string& source, const std::string& text) {
      return converting().inPieces(source, target, text, 16);
    };
    const std::string reason = "U+001B is not in " + target + " at byte offset ";
    for (const std::string source : {"UTF-8", "Shift_JIS", "EUC-JP"})
      EXPECT_EQ(convert(source, "ab\x1B$B$\"").failure, reason + "2") << source;
    EXPECT_EQ(convert("UTF-16LE", bytes({'a', 0, 0x1B, 0})).failure, reason + "2");
    EXPECT_EQ(convert("UTF-16BE", bytes({0x5F, 0x1B, 0, 0x1B})).failure, reason + "2");
    EXPECT_EQ(convert("EUC-JP-FIX", bytes({0, 'a', 0, 0x1B})).failure, reason + "2");
  }
  const Outcome outcome = ksv({"convert", "-f", "UTF-8", "-t", "ISO-2022-JP", "--unmappable",
                               "replace", "--replacement", "?"},
                              "あ\x1B[0mい\x1B");
  EXPECT_EQ(outcome.out, "\x1B$B$\"\x1B(B?[0m\x1B$B$$\x1B(B?");
  EXPECT_EQ(outcome.err, "ksv: standard input: 0 invalid bytes skipped, 2 characters replaced\n");
  EXPECT_EQ(ksv({"convert", "-f", "UTF-8", "-t", "ISO-2022-JP", "--unmappable", "replace",
                 "--replacement", "?", "--newline", "lf"},
                "a\r\x1B\nb")
                .out,
            "\x1B(Ba\n?\nb");
  // Four bytes decide that the first three are no character.
  EXPECT_EQ(converting()
                .inPieces("GB18030", "ISO-2022-JP",
                          "a\x81"
                          "0\x1B"
                          "b",
                          16,
                          [](ksv_cli::ConversionSettings& settings) {
                            settings.skipInvalid = true;
                            settings.options.replaceUnmappable = 1;
                            settings.options.narrowReplacement = '?';
                          })
                .output,
            "\x1B(Ba0?b");
  // As half of a pair it is invalid, and then a character.
  EXPECT_EQ(ksv({"convert", "-f", "Shift_JIS", "-t", "ISO-2022-JP", "--invalid", "skip",
                 "--unmappable", "replace", "--replacement", "?"},
                "a\x82\x1B"
                "b")
                .err,
            "ksv: standard input: 1 invalid byte skipped, 1 character replaced\n");
}

}  // namespace
}  // namespace ksv_cli_tests
