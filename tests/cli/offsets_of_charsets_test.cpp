// The offsets of characters that cannot be converted, for the charsets made of bytes
// and pairs beyond Shift_JIS.

#include <gtest/gtest.h>

#include "command.h"
#include "in_process.h"
#include "offset_sweep.h"

namespace ksv_cli_tests {
namespace {

class BadBytesOf : public testing::TestWithParam<BadText> {};

TEST_P(BadBytesOf, a_charset_are_named_at_every_place_around_a_border) {
  expectBadBytesNamed(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    EachDecoder, BadBytesOf,
    testing::Values(
        BadText{"EUC-JP", "あ", bytes({0x80}), "invalid EUC-JP (0x80)"},
        BadText{"EUC-JP", "ｱ", bytes({0xA4, 0x20}), "invalid EUC-JP (0xA4)"},
        BadText{"EUC-JP", "丂", bytes({0x8F, 0xB0, 0x41}), "invalid EUC-JP (0x8F)"},
        BadText{"EUC-JP", "aあ", bytes({0x8E, 0x41}), "invalid EUC-JP (0x8E)"},
        BadText{"EUC-JP", "あ", bytes({0x7F}), "invalid EUC-JP (0x7F)"},
        BadText{"EUC-JP", "丂", bytes({0xA9, 0xA1}), "the code 0x2921 is not in EUC-JP"},
        BadText{"EUC-JIS-2004", "か゚", bytes({0xA4, 0x41}), "invalid EUC-JIS-2004 (0xA4)"},
        BadText{"EUC-JIS-2004", "𠀋", bytes({0x8F, 0xA1, 0x20}), "invalid EUC-JIS-2004 (0x8F)"},
        BadText{"EUC-JP-FIX", "あ", bytes({0x00, 0x90}), "invalid EUC-JP-FIX (0x00)"},
        BadText{"EUC-JP-FIX", "丂", bytes({0x41, 0x41}), "invalid EUC-JP-FIX (0x41)"},
        BadText{"EUC-JP-MS", "①", bytes({0xA4, 0x20, 0x20}), "invalid EUC-JP-MS (0xA4)"},
        BadText{"EUC-JP-MS", "髙", bytes({0xFF, 0x20, 0x20}), "invalid EUC-JP-MS (0xFF)"},
        BadText{"OASYS_WIN", "あ", bytes({0x81, 0x7F}), "invalid OASYS_WIN (0x81)"},
        BadText{"OASYS_ONLINE", "あ", bytes({0x0A, 0x41}), "invalid OASYS_ONLINE (0x0A)"},
        BadText{"ChineseGBK", "中", bytes({0xFF, 0x41}), "invalid ChineseGBK (0xFF)"},
        BadText{"ChineseBIG5", "中", bytes({0x80, 0x41}), "invalid ChineseBIG5 (0x80)"},
        BadText{"Big5-HKSCS", "中", bytes({0xFF, 0x41}), "invalid Big5-HKSCS (0xFF)"},
        BadText{"GB18030", "中", bytes({0xFF, 0x41, 0x41, 0x41}), "invalid GB18030 (0xFF)"},
        BadText{"GB18030", "😀", bytes({0x81, 0x20, 0x41, 0x41}), "invalid GB18030 (0x81)"},
        BadText{"KoreanKSC", "中", bytes({0xFF, 0x41}), "invalid KoreanKSC (0xFF)"},
        BadText{"ISO-2022-JP", "あ", bytes({0x1B, '.', 'A'}), "invalid ISO-2022-JP (0x1B)"},
        BadText{"ISO-2022-JP", "aあ", bytes({0x1B, 'x'}), "invalid ISO-2022-JP (0x1B)"},
        BadText{"ISO-2022-JP", "aあ", bytes({0xA4}), "invalid ISO-2022-JP (0xA4)"},
        BadText{"ISO-2022-JP-2004", "あ", bytes({0x1B, '$', 'A'}),
                "invalid ISO-2022-JP-2004 (0x1B)"}));

class LackingCharactersOf : public testing::TestWithParam<LackingText> {};

TEST_P(LackingCharactersOf, a_target_are_named_at_every_place_around_a_border) {
  expectLackingCharacterNamed(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    EachSource, LackingCharactersOf,
    testing::Values(
        LackingText{"EUC-JP", "あ", "丂", "Shift_JIS", "U+4E02 is not in Shift_JIS"},
        LackingText{"EUC-JP", "ｱ", "丂", "Shift_JIS", "U+4E02 is not in Shift_JIS"},
        LackingText{"EUC-JP-FIX", "ｱあ", "丂", "Shift_JIS", "U+4E02 is not in Shift_JIS"},
        LackingText{"EUC-JIS-2004", "か゚", "𠀋", "EUC-JP", "U+2000B is not in EUC-JP"},
        LackingText{"EUC-JP-MS", "あ", "①", "EUC-JP", "U+2460 is not in EUC-JP"},
        LackingText{"GB18030", "中", "😀", "ChineseGBK", "U+1F600 is not in ChineseGBK"},
        LackingText{"UTF-8", "あ", "😀", "ISO-2022-JP", "U+1F600 is not in ISO-2022-JP"},
        LackingText{"UTF-16LE", "か゚", "é", "ISO-2022-JP", "U+00E9 is not in ISO-2022-JP"},
        // Through UTF-8:
        LackingText{"EUC-JP", "ｱあ", "丂", "OASYS_ONLINE", "U+4E02 is not in OASYS_ONLINE"},
        LackingText{"Shift_JIS-2004", "か", "𠀋", "OASYS_ONLINE",
                    "U+2000B is not in OASYS_ONLINE"}));

// B9 begins a pair that the line end does not end: it alone is left out.
TEST(OffsetOfLackingCharacter, is_told_behind_bytes_that_are_left_out) {
  const Adjustment skipping = [](ksv_cli::ConversionSettings& settings) {
    settings.skipInvalid = true;
  };
  const std::string text = bytes({'a', 0xB9, '\n', 0x8F, 0xB0, 0xA1});
  for (const size_t block : {1u, 2u, 3u, 16u})
    EXPECT_EQ(converting().inPieces("EUC-JP", "Shift_JIS", text, block, skipping),
              (Conversion{"a\n", "U+4E02 is not in Shift_JIS at byte offset 3"}));
}

TEST(TruncatedTextOf, every_charset_is_named_at_the_first_byte_of_its_last_character) {
  for (const std::string charset :
       {"EUC-JP", "EUC-JIS-2004", "EUC-JP-FIX", "EUC-JP-MS", "OASYS_WIN", "OASYS_ONLINE",
        "ChineseGBK", "GB18030", "ChineseBIG5", "Big5-HKSCS", "KoreanKSC", "EUC-KR"})
    expectTruncatedCharacterNamed(charset);
}

}  // namespace
}  // namespace ksv_cli_tests
