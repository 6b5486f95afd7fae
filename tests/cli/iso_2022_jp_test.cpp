// ISO-2022-JP: escape sequences, half-width katakana, and what is written.

#include <gtest/gtest.h>

#include <algorithm>

#include "command.h"
#include "in_process.h"
#include "kit/text/iso_2022_check.h"

namespace ksv_cli_tests {
namespace {

using ksv_kit::Iso2022Scanner;
using ksv_kit::ScanEnd;
using ksv_kit::ScanResult;

const Adjustment kSkipping = [](ksv_cli::ConversionSettings& settings) {
  settings.skipInvalid = true;
};

Conversion toUtf8(const std::string& text, size_t block = 16, const Adjustment& adjust = nullptr) {
  return converting().inPieces("ISO-2022-JP", "UTF-8", text, block, adjust);
}

std::string at(const std::string& reason, size_t offset) {
  return reason + " at byte offset " + std::to_string(offset);
}

ScanResult scanned(const std::string& text) {
  return Iso2022Scanner().scan(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

void expectBad(const std::string& text, size_t wellFormed, ScanEnd end, size_t badLength) {
  const ScanResult result = scanned(text);
  EXPECT_EQ(result.wellFormed, wellFormed) << text;
  EXPECT_EQ(result.end, end) << text;
  EXPECT_EQ(result.badLength, badLength) << text;
}

TEST(Iso2022Check, takes_the_known_sets) {
  for (const std::string text :
       {"", "abc\x7F", "\x1B$B$\"\r\n\t$$\x1B(Bz", "\x1B$@0!\x1B(J\\", "\x1B(I1 \xB1\n\x1B(B",
        "\x1B$(Q$\"\x1B$(P!!\x1B(B", "\x1B$B\x1B(B"})
    EXPECT_EQ(scanned(text).end, ScanEnd::kAll) << text;
}

TEST(Iso2022Check, tells_an_unknown_escape_sequence_from_a_cut_one) {
  expectBad("ab\x1B", 2, ScanEnd::kIncomplete, 1);
  expectBad("ab\x1B$(", 2, ScanEnd::kIncomplete, 3);
  expectBad("ab\x1B.Axy", 2, ScanEnd::kInvalid, 3);
  expectBad("ab\x1B$(Dxy", 2, ScanEnd::kInvalid, 4);
  expectBad("ab\x1B\n", 2, ScanEnd::kInvalid, 1);
  expectBad("ab\x1B$(\n", 2, ScanEnd::kInvalid, 3);
}

TEST(Iso2022Check, tells_bytes_that_the_set_does_not_have) {
  expectBad("a\xB1", 1, ScanEnd::kInvalid, 1);
  expectBad("\x1B$B$\"\xA4\xA2", 5, ScanEnd::kInvalid, 1);
  expectBad("\x1B$B$\" ", 5, ScanEnd::kInvalid, 1);
  expectBad("\x1B$B$\"$\n", 5, ScanEnd::kInvalid, 1);
  expectBad("\x1B$B$\"$\x1B(B", 5, ScanEnd::kInvalid, 1);
  expectBad("\x1B$B$\"$", 5, ScanEnd::kIncomplete, 1);
  expectBad("\x1B(I1`", 4, ScanEnd::kInvalid, 1);
}

TEST(Iso2022JpText, with_an_unknown_escape_sequence_is_bad_there_wherever_a_border_falls) {
  for (const std::string escape : {"\x1B.A", "\x1B$A", "\x1B&@", "\x1B-F", "\x1B$(D"})
    for (size_t lead = 0; lead < 60; ++lead) {
      const std::string before(lead, 'x');
      const std::string text = before + escape + "y\x1B$B$\"\x1B(Bz";
      ASSERT_EQ(toUtf8(text), (Conversion{before, at("invalid ISO-2022-JP (0x1B)", lead)}));
      ASSERT_EQ(toUtf8(text, 16, kSkipping), (Conversion{before + "yあz", ""}));
    }
}

TEST(Iso2022JpText, with_half_a_pair_is_bad_at_that_byte) {
  for (size_t lead = 0; lead < 60; ++lead) {
    std::string before = "\x1B$B";
    std::string expected;
    for (size_t i = 0; i < lead; ++i) {
      before += "$\"";
      expected += "あ";
    }
    const std::string text = before + "$\x1B(Bxyz";
    ASSERT_EQ(toUtf8(text),
              (Conversion{expected, at("invalid ISO-2022-JP (0x24)", before.size())}));
    ASSERT_EQ(toUtf8(text, 16, kSkipping), (Conversion{expected + "xyz", ""}));
  }
}

TEST(Iso2022JpText, that_ends_inside_something_is_named_there) {
  const std::string cut = "the text ends inside a ISO-2022-JP character";
  EXPECT_EQ(toUtf8("ab\x1B"), (Conversion{"ab", at(cut, 2)}));
  EXPECT_EQ(toUtf8("ab\x1B$"), (Conversion{"ab", at(cut, 2)}));
  EXPECT_EQ(toUtf8("\x1B$B$\"$"), (Conversion{"あ", at(cut, 5)}));
  EXPECT_EQ(toUtf8("ab\x1B$", 16, kSkipping), (Conversion{"ab", ""}));
  EXPECT_EQ(toUtf8("ab\x1B$B"), (Conversion{"ab", ""}));
}

TEST(Iso2022JpText, names_a_code_without_a_character_and_a_lacking_one) {
  for (size_t lead = 0; lead < 60; ++lead) {
    const std::string before(lead, 'x');
    ASSERT_EQ(toUtf8(before + "\x1B$B)!\x1B(B"),
              (Conversion{before, at("the code 0x2921 is not in ISO-2022-JP", lead + 3)}));
    ASSERT_EQ(converting().inPieces("ISO-2022-JP", "ISO-8859-1", before + "\x1B$B$\"\x1B(B", 16),
              (Conversion{before, at("U+3042 is not in ISO-8859-1", lead + 3)}));
  }
}

TEST(Iso2022JpText, has_half_width_katakana_for_every_target) {
  const std::string text = "a\x1B(I1A\xB1\x1B(Bb";
  EXPECT_EQ(toUtf8(text).output, "aｱﾁｱb");
  for (const std::string target :
       {"Shift_JIS", "WINDOWS31J", "Shift_JIS-2004", "EUC-JP", "EUC-JIS-2004", "EUC-JP-FIX",
        "EUC-JP-MS", "OASYS_WIN", "OASYS_ONLINE", "UTF-16BE"}) {
    const Conversion result = converting().inPieces("ISO-2022-JP", target, text, 16);
    EXPECT_EQ(result, (Conversion{encoded(target, "aｱﾁｱb"), ""})) << target;
  }
  EXPECT_EQ(converting().inPieces("ISO-2022-JP", "Shift_JIS", text, 16).output,
            bytes({'a', 0xB1, 0xC1, 0xB1, 'b'}));
  EXPECT_EQ(converting().inPieces("ISO-2022-JP", "ISO-2022-JP", text, 16).output,
            "\x1B(Ba\x1B$B%\"%A%\"\x1B(Bb");
}

TEST(Iso2022JpText, keeps_its_offsets_on_the_way_through_utf8) {
  for (size_t lead = 0; lead < 60; ++lead) {
    std::string before = "\x1B(I";
    std::string expected;
    for (size_t i = 0; i < lead; ++i) {
      before += "1";
      expected += '\xB1';
    }
    const std::string plain = before + "\x1B$B";
    const Conversion unknown =
        converting().inPieces("ISO-2022-JP", "Shift_JIS", before + "\x1B.A", 16);
    ASSERT_EQ(unknown, (Conversion{expected, at("invalid ISO-2022-JP (0x1B)", before.size())}));
    const Conversion missing =
        converting().inPieces("ISO-2022-JP", "Shift_JIS", plain + ")!" + "\x1B(B", 16);
    ASSERT_EQ(missing,
              (Conversion{expected, at("the code 0x2921 is not in ISO-2022-JP", plain.size())}));
  }
}

// Escape sequences hold until the next one, in plane 2 as well.
TEST(Iso2022Jp2004Text, is_read_as_others_write_it) {
  const auto read = [](const std::string& text, size_t block) {
    return converting().inPieces("ISO-2022-JP-2004", "UTF-8", text, block);
  };
  for (size_t lead = 0; lead < 40; ++lead) {
    const std::string before(lead, 'x');
    const std::string text = before + "\x1B$(P!!!!!!\n!!\x1B$(Q$\"$\"\x1B(Ba\x1B$B$\"\x1B(B!";
    for (const size_t block : {1u, 2u, 5u, 16u, 4096u})
      ASSERT_EQ(read(text, block), (Conversion{before + "𠂉𠂉𠂉\n𠂉ああaあ!", ""}));
  }
}

TEST(Iso2022Jp2004Text, names_the_offsets_of_the_file) {
  for (size_t lead = 0; lead < 40; ++lead) {
    std::string before = "\x1B$(P!!";
    std::string expected = "𠂉";
    for (size_t i = 0; i < lead; ++i) {
      before += "!!";
      expected += "𠂉";
    }
    const auto result = [&](const std::string& bad, const std::string& target) {
      return converting().inPieces("ISO-2022-JP-2004", target, before + bad, 16);
    };
    ASSERT_EQ(result("\x1B.A", "UTF-8"),
              (Conversion{expected, at("invalid ISO-2022-JP-2004 (0x1B)", before.size())}));
    ASSERT_EQ(result("!\n", "UTF-8"),
              (Conversion{expected, at("invalid ISO-2022-JP-2004 (0x21)", before.size())}));
    ASSERT_EQ(result("", "Shift_JIS"), (Conversion{"", at("U+20089 is not in Shift_JIS", 4)}));
  }
}

TEST(Iso2022Jp2004Text, is_written_as_others_read_it) {
  EXPECT_EQ(encoded("ISO-2022-JP-2004", "あaいb\nう"),
            "\x1B$(Q$\"\x1B(Ba\x1B$(Q$$\x1B(Bb\n\x1B$(Q$&\x1B(B");
  const std::string text = "あ𠀋𠂉か゚AいB\r\n漢𠂉z";
  const std::string written = encoded("ISO-2022-JP-2004", text);
  for (size_t block = 1; block < 40; ++block) {
    EXPECT_EQ(converting().inPieces("ISO-2022-JP-2004", "UTF-8", written, block),
              (Conversion{text, ""}));
    EXPECT_EQ(converting().inPieces("UTF-8", "ISO-2022-JP-2004", text, block).output, written);
  }
}

TEST(Iso2022JpText, is_closed_and_stays_empty_when_it_is) {
  EXPECT_EQ(encoded("ISO-2022-JP", "日本"), "\x1B$BF|K\\\x1B(B");
  EXPECT_EQ(encoded("ISO-2022-JP", "日本\n"), "\x1B$BF|K\\\x1B(B\n");
  EXPECT_EQ(encoded("ISO-2022-JP", "abc"), "\x1B(Babc");
  for (const std::string source : {"UTF-8", "Shift_JIS", "ISO-2022-JP", "UTF-7"})
    for (const std::string target : {"ISO-2022-JP", "ISO-2022-JP-KANA", "ISO-2022-JP-2004"})
      EXPECT_EQ(converting().inPieces(source, target, "", 16), (Conversion{"", ""}));
}

// Blocks of plain characters are passed over at once: what breaks one is found wherever it is.
TEST(Iso2022Scan, finds_what_breaks_a_run_at_every_place) {
  for (const std::string& begin : {std::string("\x1B(B"), std::string("\x1B$B")}) {
    const bool hasPairs = begin[1] == '$';
    for (size_t place = 0; place < 40; ++place) {
      for (int byte = 0; byte < 256; ++byte) {
        std::string text = begin + std::string(40, '!') + begin;
        text[begin.size() + place] = static_cast<char>(byte);
        ksv_kit::Iso2022Scanner whole;
        const auto found = whole.scan(reinterpret_cast<const uint8_t*>(text.data()), text.size());
        // Character by character: a piece is never long enough for a block.
        ksv_kit::Iso2022Scanner stepping;
        size_t at = 0;
        while (at < text.size()) {
          const size_t size =
              std::min<size_t>(text.size() - at, hasPairs && text[at] != 0x1B ? 2 : 3);
          const auto one = stepping.scan(reinterpret_cast<const uint8_t*>(text.data()) + at, size);
          at += one.wellFormed;
          if (one.end == ksv_kit::ScanEnd::kInvalid || one.wellFormed == 0) break;
        }
        ASSERT_EQ(found.wellFormed, at) << begin << ' ' << place << ' ' << byte;
      }
    }
  }
}

}  // namespace
}  // namespace ksv_cli_tests
