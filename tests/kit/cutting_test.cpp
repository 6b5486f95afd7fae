// A leading piece is whole: converted by itself it gives the beginning of what the text gives.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit.h"

namespace ksv_kit_tests {
namespace {

size_t pieceOf(const char* charset, const std::string& text, size_t limit) {
  size_t piece = 1;
  ksv_error error;
  EXPECT_EQ(ksv_leading_piece(charset, text.data(), text.size(), limit, &piece, &error), KSV_OK)
      << error.message;
  return piece;
}

struct Sample {
  const char* charset;
  const char* utf8;
  size_t mostLost;  // bytes in front of a limit that no character fits in
};

constexpr char kJapanese[] =
    "ab\r\n\xE6\xBC\xA2\xE5\xAD\x97\xE3\x81\x8B"
    "c\xE3\x82\xA2\xE3\x80\x82\r\n\xE5\x9B\x9E"
    "d";
constexpr char kKorean[] =
    "ab\xEA\xB0\x80\xEB\x82\x98 c\r\n\xED\x95\x9C"
    "d";
constexpr char kChinese[] =
    "ab\xE4\xB8\xAD\xE6\x96\x87 c\r\n\xE5\xAD\x97"
    "d";
constexpr char kLatin[] = "ab\xC3\xA9\r\nc\xC3\xA8";
constexpr char kBeyond[] =
    "a\xF0\x9F\x98\x80"
    "b\xF0\xA0\x80\x8B\r\nc";

const Sample kSamples[] = {
    {"UTF-8", kJapanese, 2},      {"UTF-8", kBeyond, 3},       {"UTF-16LE", kJapanese, 3},
    {"UTF-16BE", kBeyond, 3},     {"UCS-4BE", kBeyond, 7},     {"Shift_JIS", kJapanese, 1},
    {"WINDOWS31J", kJapanese, 1}, {"EUC-JP", kJapanese, 1},    {"ISO-2022-JP", kJapanese, 7},
    {"GBK", kChinese, 1},         {"GB18030", kBeyond, 3},     {"GB18030", kChinese, 1},
    {"Big5", kChinese, 1},        {"EUC-TW", kChinese, 3},     {"EUC-KR", kKorean, 1},
    {"johab", kKorean, 1},        {"ISO-2022-KR", kKorean, 4}, {"ISO-2022-CN", kChinese, 5},
    {"IBM930", kJapanese, 3},     {"IBM1047", kLatin, 1},      {"windows-1252", kLatin, 1},
};

TEST(LeadingPiece, is_whole_by_itself_wherever_the_limit_is) {
  for (const auto& [charset, utf8, mostLost] : kSamples) {
    const Converted encoded = convert("UTF-8", charset, utf8);
    ASSERT_EQ(encoded.result, KSV_OK) << charset << ": " << encoded.message;
    const std::string& text = encoded.text;
    for (size_t limit = 0; limit <= text.size() + 1; ++limit) {
      const size_t piece = pieceOf(charset, text, limit);
      ASSERT_LE(piece, limit);
      EXPECT_LE(std::min(limit, text.size()) - piece, mostLost) << charset << " at " << limit;
      const Converted back = convert(charset, "UTF-8", text.substr(0, piece));
      ASSERT_EQ(back.result, KSV_OK) << charset << " at " << limit << ": " << back.message;
      EXPECT_EQ(std::string(utf8).substr(0, back.text.size()), back.text) << charset;
      EXPECT_FALSE(back.text.ends_with('\r') && std::string(utf8)[back.text.size()] == '\n')
          << charset << " at " << limit;
    }
    EXPECT_EQ(pieceOf(charset, text, text.size()), text.size());
  }
}

TEST(LeadingPiece, of_iso_2022_jp_has_no_escape_sequence_at_its_end) {
  const std::string text = "ab\x1B$B0!0\"\x1B(Bc";
  for (const auto& [limit, piece] : std::vector<std::pair<size_t, size_t>>{
           {2, 2}, {3, 2}, {5, 2}, {6, 2}, {7, 7}, {8, 7}, {9, 9}, {11, 9}, {12, 9}, {13, 13}})
    EXPECT_EQ(pieceOf("ISO-2022-JP", text, limit), piece) << limit;
}

TEST(LeadingPiece, counts_bytes_that_are_no_text_one_by_one) {
  EXPECT_EQ(pieceOf("UTF-8", "a\xFF\x80z", 2), 2u);
  EXPECT_EQ(pieceOf("UTF-8", "a\xE3\x81z", 3), 1u);
  EXPECT_EQ(pieceOf("UTF-8", "a\xE3zz", 3), 3u);
}

TEST(LeadingPiece, of_a_charset_that_is_not_there_is_an_error) {
  size_t piece = 1;
  ksv_error error;
  EXPECT_EQ(ksv_leading_piece("klingon", "a", 1, 1, &piece, &error), KSV_UNKNOWN_CHARSET);
  EXPECT_EQ(piece, 0u);
  EXPECT_EQ(ksv_leading_piece(nullptr, "a", 1, 1, &piece, &error), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_leading_piece("UTF-8", nullptr, 1, 1, &piece, &error), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_leading_piece("UTF-8", "a", 1, 1, nullptr, &error), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_leading_piece("UTF-8", nullptr, 0, 1, &piece, &error), KSV_OK);
}

}  // namespace
}  // namespace ksv_kit_tests
