// The result does not depend on the size of the pieces that a text is read in.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "command.h"
#include "in_process.h"
#include "ksv_cconv.h"

namespace ksv_cli_tests {
namespace {

using ksv_cli::ConversionSettings;

const std::vector<std::string> kAllCharsets = {"Shift_JIS", "WINDOWS31J", "Shift_JIS-2004",
                                               "UTF-8",     "UTF-16LE",   "UTF-16BE",
                                               "UCS-2LE",   "UCS-4BE"};

// Characters that are in every charset, with marks and bases that may combine.
std::string randomText(std::mt19937& random, bool combining) {
  static const std::vector<std::string> plain = {"a",  "Z",  "5",  " ",    "あ", "漢", "ア", "ｱ",
                                                 "、", "\r", "\n", "\r\n", "か", "字", "ー"};
  static const std::vector<std::string> marks = {"か",     "カ",     "\u309A", "\u309A", "æ",
                                                 "\u0300", "\u0301", "ə",      "\u02E5", "\u02E9",
                                                 "\u02E5", "\u02E9", "ツ",     "a",      "漢"};
  const std::vector<std::string>& characters = combining ? marks : plain;
  std::string text;
  const size_t count = random() % 120;
  for (size_t i = 0; i < count; ++i) text += characters[random() % characters.size()];
  return text;
}

// Every third conversion reads as much as it asks for.
unsigned shortReads(std::mt19937& random) { return static_cast<unsigned>(random() % 3); }

std::string shown(const std::string& text) {
  std::string hexadecimal;
  for (const char c : text) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", static_cast<uint8_t>(c));
    hexadecimal += digits;
  }
  return hexadecimal;
}

TEST(Pieces, of_any_size_give_what_one_call_gives) {
  std::mt19937 random(19560314);
  for (int round = 0; round < 300; ++round) {
    const std::string& source = kAllCharsets[random() % kAllCharsets.size()];
    const std::string& target = kAllCharsets[random() % kAllCharsets.size()];
    const std::string text = encoded(source, randomText(random, false));
    const std::string expected = converting().atOnce(source, target, text);
    for (size_t block = 16; block <= 64; block += 1 + random() % 7)
      ASSERT_EQ(converting().inPieces(source, target, text, block, nullptr, shortReads(random)),
                (Conversion{expected, ""}))
          << source << " to " << target << " in pieces of " << block << ": " << shown(text);
  }
}

TEST(Pieces, do_not_tear_a_base_from_its_mark) {
  std::mt19937 random(19790401);
  const std::vector<std::string> sources = {"UTF-8", "UTF-16LE", "UTF-16BE"};
  const std::vector<std::string> targets = {"Shift_JIS-2004", "UTF-8", "UTF-16LE", "UCS-4BE"};
  // Not every mark is in every target on its own.
  const Adjustment replacing = [](ConversionSettings& settings) {
    settings.options.replaceUnmappable = 1;
  };
  for (int round = 0; round < 600; ++round) {
    const std::string& source = sources[random() % sources.size()];
    const std::string& target = targets[random() % targets.size()];
    const std::string text = encoded(source, randomText(random, true));
    const std::string expected = converting().atOnce(source, target, text, replacing);
    ASSERT_FALSE(expected.empty() && !text.empty()) << source << " to " << target;
    for (size_t block = 16; block <= 64; block += 1 + random() % 5)
      ASSERT_EQ(converting().inPieces(source, target, text, block, replacing, shortReads(random)),
                (Conversion{expected, ""}))
          << source << " to " << target << " in pieces of " << block << ": " << shown(text);
  }
}

TEST(Pieces, of_tone_letters_only_are_paired_alike) {
  std::string text;
  for (int i = 0; i < 301; ++i) text += i % 2 == 0 ? "\u02E9" : "\u02E5";
  const std::string expected = converting().atOnce("UTF-8", "Shift_JIS-2004", text);
  ASSERT_FALSE(expected.empty());
  for (size_t block = 16; block <= 64; ++block)
    ASSERT_EQ(converting().inPieces("UTF-8", "Shift_JIS-2004", text, block).output, expected);
}

TEST(Pieces, make_one_line_end_of_cr_lf_across_a_border) {
  const struct {
    uint32_t form;
    const char* end;
  } forms[] = {{KSV_NEWLINE_LF, "\n"}, {KSV_NEWLINE_CR, "\r"}, {KSV_NEWLINE_CRLF, "\r\n"}};
  for (const auto& form : forms)
    for (const std::string& source : kAllCharsets)
      for (size_t lead = 0; lead < 40; ++lead) {
        const std::string text = encoded(source, std::string(lead, 'x') + "\r\n\r\n\r\ry\nz\r\n");
        const Adjustment newlines = [&](ConversionSettings& settings) {
          settings.options.convertNewlines = 1;
          settings.options.newlineForm = form.form;
        };
        const std::string end = form.end;
        ASSERT_EQ(converting().inPieces(source, "UTF-8", text, 16, newlines).output,
                  std::string(lead, 'x') + end + end + end + end + "y" + end + "z" + end)
            << source << " " << lead;
      }
}

TEST(Pieces, skip_the_same_invalid_bytes_wherever_they_are_cut) {
  std::mt19937 random(19970630);
  const Adjustment skipping = [](ConversionSettings& settings) { settings.skipInvalid = true; };
  for (int round = 0; round < 400; ++round) {
    const std::string& source = kAllCharsets[random() % kAllCharsets.size()];
    std::string text = encoded(source, randomText(random, false));
    for (size_t damage = random() % 6; damage > 0 && !text.empty(); --damage)
      text[random() % text.size()] = static_cast<char>(random());
    const Conversion whole = converting().inPieces(source, "UTF-8", text, 65536, skipping);
    ASSERT_EQ(whole.failure, "") << source << ": " << shown(text);
    for (size_t block = 16; block <= 64; block += 1 + random() % 7)
      ASSERT_EQ(converting().inPieces(source, "UTF-8", text, block, skipping, shortReads(random)),
                whole)
          << source << " in pieces of " << block << ": " << shown(text);
  }
}

TEST(Pieces, fail_at_the_same_byte_wherever_they_are_cut) {
  std::mt19937 random(20021027);
  for (int round = 0; round < 400; ++round) {
    const std::string& source = kAllCharsets[random() % kAllCharsets.size()];
    const std::string& target = kAllCharsets[random() % kAllCharsets.size()];
    std::string text = encoded(source, randomText(random, false));
    if (!text.empty()) text[random() % text.size()] = static_cast<char>(random());
    const Conversion whole = converting().inPieces(source, target, text, 65536);
    for (size_t block = 16; block <= 64; block += 1 + random() % 7)
      ASSERT_EQ(converting().inPieces(source, target, text, block, nullptr, shortReads(random)),
                whole)
          << source << " to " << target << " in pieces of " << block << ": " << shown(text);
  }
}

TEST(Pieces, name_offsets_behind_skipped_bytes_in_the_file) {
  const Adjustment skipping = [](ConversionSettings& settings) { settings.skipInvalid = true; };
  for (size_t lead = 0; lead < 40; ++lead) {
    const std::string text = "\xFF" + std::string(lead, 'x') +
                             "\xE3\x81"
                             "é"
                             "😀";
    for (const size_t block : {16u, 4096u})
      ASSERT_EQ(converting().inPieces("UTF-8", "Shift_JIS-2004", text, block, skipping).failure,
                "U+1F600 is not in Shift_JIS-2004 at byte offset " + std::to_string(lead + 5));
  }
}

TEST(Pieces, of_nothing_but_invalid_bytes_give_nothing) {
  const Adjustment skipping = [](ConversionSettings& settings) { settings.skipInvalid = true; };
  const std::string text(300000, '\xFF');
  EXPECT_EQ(converting().inPieces("UTF-8", "UTF-8", text, 262144, skipping), (Conversion{}));
  EXPECT_EQ(converting().inPieces("Shift_JIS", "UTF-8", text, 262144, skipping), (Conversion{}));
}

TEST(Pieces, announce_a_language_once) {
  const Adjustment japanese = [](ConversionSettings& settings) {
    settings.language = "ja";
    settings.options.defaultLanguage[0] = 'x';
  };
  const std::string text(100, 'a');
  for (size_t block = 16; block <= 64; ++block)
    EXPECT_EQ(converting().inPieces("UTF-8", "UTF-8", text, block, japanese).output,
              "\U000E0001\U000E006A\U000E0061" + text);
}

TEST(Pieces, write_references_that_fill_the_output_again_and_again) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "😀";
  const Adjustment references = [](ConversionSettings& settings) {
    settings.options.supplementaryMode = 1;
  };
  const Conversion whole = converting().inPieces("UTF-8", "UCS-2LE", text, 65536, references);
  EXPECT_EQ(whole.output.size(), 2000u * 2 * std::string("&#x1F600;").size());
  EXPECT_EQ(converting().inPieces("UTF-8", "UCS-2LE", text, 16, references), whole);
}

class PieceSizes : public CommandTest {};

TEST_F(PieceSizes, can_be_set_on_the_command_line) {
  std::string text;
  for (int i = 0; i < 100; ++i) text += "漢字か゚な\r\n";
  const Outcome whole = ksv({"convert", "-f", "utf8", "-t", "Shift_JIS-2004"}, text);
  EXPECT_EQ(whole.status, 0);
  for (const std::string size : {"16", "17", "31", "64"})
    EXPECT_EQ(
        ksv({"convert", "-f", "utf8", "-t", "Shift_JIS-2004", "--block-size", size}, text).out,
        whole.out);
}

}  // namespace
}  // namespace ksv_cli_tests
