// Texts in the Japanese charsets come out alike, whatever the size of the pieces that
// they are read in and whichever of the charsets they are in.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "in_process.h"

namespace ksv_cli_tests {
namespace {

const std::vector<std::string> kCharsets = {
    "Shift_JIS",  "WINDOWS31J", "Shift_JIS-2004", "EUC-JP",      "EUC-JP-MS", "EUC-JIS-2004",
    "EUC-JP-FIX", "OASYS_WIN",  "OASYS_ONLINE",   "ISO-2022-JP", "UTF-8",     "UTF-16BE"};

// Characters that all of them have and read back.
std::string randomText(std::mt19937& random, bool lineEnds) {
  static const std::vector<std::string> characters = {"a",  "Z",  "5",  "あ", "漢",  "ア",
                                                      "、", "か", "字", "ー", "\r\n"};
  std::string text;
  const size_t count = random() % 100;
  const size_t kinds = characters.size() - (lineEnds ? 0 : 1);
  for (size_t i = 0; i < count; ++i) text += characters[random() % kinds];
  return text;
}

TEST(JapaneseText, comes_out_alike_from_pieces_of_any_size) {
  std::mt19937 random(6226);
  for (int round = 0; round < 400; ++round) {
    const std::string& source = kCharsets[random() % kCharsets.size()];
    const std::string& target = kCharsets[random() % kCharsets.size()];
    // OASYS_ONLINE rejects line ends of one byte.
    const bool lineEnds = source != "OASYS_ONLINE" && target != "OASYS_ONLINE";
    const std::string text = randomText(random, lineEnds);
    const std::string given = encoded(source, text);
    const std::string whole = converting().inPieces(source, target, given, 4096).output;
    // Latin letters of JIS X 0201 come to ISO-2022-JP as such.
    if (target != "ISO-2022-JP") {
      ASSERT_EQ(whole, encoded(target, text)) << source << " to " << target;
    }
    ASSERT_EQ(converting().inPieces(target, "UTF-8", whole, 4096).output, text);
    for (size_t block = 16; block <= 64; block += 1 + random() % 7)
      ASSERT_EQ(converting().inPieces(source, target, given, block, nullptr,
                                      static_cast<unsigned>(random() % 3)),
                (Conversion{whole, ""}))
          << source << " to " << target << " in pieces of " << block << ": " << text;
  }
}

TEST(JapaneseText, goes_to_oasys_online_by_its_characters) {
  const std::string text = "Aｱ漢z";
  const std::string expected = encoded("OASYS_ONLINE", text);
  EXPECT_EQ(expected.size(), 8u);
  for (const std::string source : {"Shift_JIS", "WINDOWS31J", "Shift_JIS-2004", "EUC-JP",
                                   "EUC-JIS-2004", "EUC-JP-FIX", "OASYS_WIN", "OASYS_ONLINE"})
    EXPECT_EQ(converting().inPieces(source, "OASYS_ONLINE", encoded(source, text), 16),
              (Conversion{expected, ""}))
        << source;
}

}  // namespace
}  // namespace ksv_cli_tests
