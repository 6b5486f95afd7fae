// Whatever the bytes are, and wherever borders fall, a text gives the same output and
// the same complaint at the same offset.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "in_process.h"

namespace ksv_cli_tests {
namespace {

struct Way {
  const char* source;
  const char* target;
  std::vector<std::string> parts;  // of which texts are made, beside random bytes
};

void PrintTo(const Way& way, std::ostream* out) { *out << way.source << " to " << way.target; }

const std::vector<std::string> kEucParts = {"a",        "\xA4\xA2",     "\x8E\xB1", "\x8F\xB0\xA1",
                                            "\xA9\xA1", "\x8F\xA1\xA1", "\xAD\xA1", "\r\n",
                                            "\xA4\xF7"};
const std::vector<std::string> kMailParts = {"a",       "\x1B$B",  "\x1B(B", "\x1B(I", "\x1B(J",
                                             "\x1B$(Q", "\x1B$(P", "\x1B.A", "$\"",    "!!",
                                             "1",       ")!",      "\n"};
const std::vector<std::string> kGbParts = {
    "a", "\xD6\xD0", "\x94\x39\xFC\x36", "\x81\x30\x81\x30", "\x80", "\n"};
const std::vector<std::string> kShiftParts = {"a",        "\x82\xA0", "\xB1",
                                              "\x85\x40", "\xF0\x40", "\n"};
const std::vector<std::string> kUtf7Parts = {"a", "+MEI-", "+", "-",  "MEIwRDBG", "2D3eAA",
                                             "E", "~",     " ", "\n", "+2D0-"};
const std::vector<std::string> kHzParts = {"a",   "~{", "~}", "VP", "ND", "~~",
                                           "~\n", "~",  "\n", "W~", " "};

class RandomBytes : public testing::TestWithParam<Way> {};

std::string randomText(std::mt19937& random, const std::vector<std::string>& parts) {
  std::string text;
  const size_t count = random() % 50;
  const unsigned rareness = random() % 2 == 0 ? 5 : 40;
  for (size_t i = 0; i < count; ++i) {
    if (random() % rareness == 0)
      text += static_cast<char>(random());
    else
      text += parts[random() % parts.size()];
  }
  return text;
}

std::string shown(const std::string& text) {
  std::string hexadecimal;
  for (const char c : text) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", static_cast<uint8_t>(c));
    hexadecimal += digits;
  }
  return hexadecimal;
}

TEST_P(RandomBytes, give_the_same_in_pieces_of_any_size) {
  const Way& way = GetParam();
  std::mt19937 random(2022);
  for (int round = 0; round < 300; ++round) {
    const std::string text = randomText(random, way.parts);
    const Adjustment adjust = [round](ksv_cli::ConversionSettings& settings) {
      settings.skipInvalid = round % 3 != 0;
      settings.options.replaceUnmappable = round % 3 == 2;
    };
    const Conversion expected =
        converting().inPieces(way.source, way.target, text, 64 * 1024, adjust);
    for (const size_t block : {1u, 2u, 3u, 5u, 16u, 17u, 29u})
      ASSERT_EQ(converting().inPieces(way.source, way.target, text, block, adjust), expected)
          << "in pieces of " << block << ": " << shown(text);
  }
}

INSTANTIATE_TEST_SUITE_P(
    EachSource, RandomBytes,
    testing::Values(
        Way{"EUC-JP", "UTF-8", kEucParts}, Way{"EUC-JIS-2004", "UTF-8", kEucParts},
        Way{"EUC-JP-FIX", "UTF-8", kEucParts}, Way{"EUC-JP-MS", "UTF-8", kEucParts},
        Way{"EUC-JP", "Shift_JIS", kEucParts}, Way{"EUC-JIS-2004", "OASYS_ONLINE", kEucParts},
        Way{"ISO-2022-JP", "UTF-8", kMailParts}, Way{"ISO-2022-JP", "Shift_JIS", kMailParts},
        Way{"ISO-2022-JP", "ISO-2022-JP", kMailParts}, Way{"ISO-2022-JP-2004", "UTF-8", kMailParts},
        Way{"ISO-2022-JP-2004", "ISO-2022-JP-2004", kMailParts},
        Way{"OASYS_WIN", "UTF-8", kShiftParts}, Way{"OASYS_ONLINE", "UTF-8", kShiftParts},
        Way{"WINDOWS31J", "OASYS_ONLINE", kShiftParts}, Way{"GB18030", "UTF-8", kGbParts},
        Way{"ChineseGBK", "Shift_JIS", kGbParts}, Way{"KoreanKSC", "UTF-8", kGbParts},
        Way{"UTF-7", "UTF-8", kUtf7Parts}, Way{"UTF-7", "Shift_JIS", kUtf7Parts},
        Way{"HZ-GB-2312", "UTF-8", kHzParts}, Way{"HZ-GB-2312", "ISO-8859-1", kHzParts}));

}  // namespace
}  // namespace ksv_cli_tests
