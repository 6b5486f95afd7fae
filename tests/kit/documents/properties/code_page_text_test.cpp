#include "kit/documents/properties/code_page_text.h"

#include <gtest/gtest.h>

#include "tests/kit/documents/properties/made_set.h"

namespace ksv_kit::properties {
namespace {

using ksv::test::codePage;
using ksv::test::text;
using std::string_literals::operator""s;
using Notes = std::vector<std::string>;

TEST(CodePageText, is_read_in_every_code_page_of_the_directory) {
  const std::tuple<uint16_t, std::string, std::string> rows[] = {
      {1250, "\x9Elut\xFD", "žlutý"},
      {1251, "\xCF\xF0\xE8\xE2\xE5\xF2", "Привет"},
      {1252, "\x80\xE9", "€é"},
      {1253, "\xC1\xE8\xDE\xED\xE1", "Αθήνα"},
      {1254, "\xDDstanbul \xFE", "İstanbul ş"},
      {1255, "\xF9\xEC\xE5\xED", "שלום"},
      {1256, "\xE3\xD1\xCD\xC8\xC7", "مرحبا"},
      {1257, "R\xEEga \xF0", "Rīga š"},
      {1258, "Vi\xEA\xF2t", "Vi\u00EA\u0323t"},
      {874, "\xCA\xC7\xD1\xCA\xB4\xD5", "สวัสดี"},
      {932, "\x95\x5C\x5C", "表\\"},
      {936, "\xC4\xE3\xBA\xC3", "你好"},
      {949, "\xC7\xD1\xB1\xDB", "한글"},
      {950, "\xA7\x41\xA6\x6E", "你好"},
      {1361, "\xD0\x65\x8B\x69", "한글"},
      {10000, "caf\x8E", "café"},
      {10001, "\x95\x5C", "表"},
      {10007, "\x80\xE1", "Аб"},
      {20866, "\xF0\xD2\xC9", "При"},
      {28592, "\xBE", "ž"},
      {65001, "表é", "表é"},
  };
  for (const auto& [page, bytes, expected] : rows) {
    const PropertySet set = readSummary({codePage(page), text(2, bytes)});
    EXPECT_EQ(textOf(set, 2), expected) << page;
    EXPECT_EQ(notesOf(set, 2), Notes()) << page;
  }
}

TEST(CodePageText, is_utf_16_where_that_is_declared) {
  const PropertySet set =
      readSummary({codePage(1200), typed(2, kLpstr, counted("T\0i\0\x68\x88\0\0"s)),
                   typed(3, kLpstr, counted("\x3D\xD8\0\xDE\0\0"s)),
                   typed(4, kLpstr, counted("\x6E\x6E\x56\x6E\0\0"s))});
  EXPECT_EQ(textOf(set, 2), "Ti表");
  EXPECT_EQ(textOf(set, 3), "😀");
  EXPECT_EQ(textOf(set, 4), "湮湖");
  EXPECT_EQ(notesOf(set, 4), Notes());
}

TEST(CodePageText, of_single_bytes_that_is_declared_utf_16_is_noticed) {
  const PropertySet set =
      readSummary({codePage(1200), text(2, "A title"), text(4, "caf\xE9 au lait")});
  EXPECT_EQ(textOf(set, 2), "A title");
  EXPECT_EQ(textOf(set, 4), "café au lait");
  EXPECT_EQ(notesOf(set, 4),
            Notes{"code page 1200 is declared, and the text is read as windows-1252"});
}

TEST(CodePageText, of_utf_16_that_is_declared_to_be_bytes_is_noticed) {
  const PropertySet set =
      readSummary({codePage(1252), typed(2, kLpstr, counted("T\0i\0t\0l\0e\0\0\0"s))});
  EXPECT_EQ(textOf(set, 2), "Title");
  EXPECT_EQ(notesOf(set, 2), Notes{"code page 1252 is declared, and the text is UTF-16"});
}

TEST(CodePageText, in_japanese_under_1252_is_noticed) {
  const PropertySet set =
      readSummary({codePage(1252), text(2, "\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x95\xB6\x8F\x91"),
                   text(3, "\x95\x5C\x91\xE8\x82\xCC\x90\xE0\x96\xBE"), text(4, "Writer")});
  EXPECT_EQ(textOf(set, 2), "日本語の文書");
  EXPECT_EQ(textOf(set, 3), "表題の説明");
  ASSERT_EQ(notesOf(set, 2).size(), 1u);
  EXPECT_EQ(notesOf(set, 2)[0].substr(0, 48), "code page 1252 is declared, and the text is read");
  EXPECT_EQ(notesOf(set, 4), Notes());
}

TEST(CodePageText, in_utf_8_under_1252_is_noticed) {
  const PropertySet set = readSummary({codePage(1252), text(2, "Übergrößen für Männer")});
  EXPECT_EQ(textOf(set, 2), "Übergrößen für Männer");
  EXPECT_EQ(notesOf(set, 2), Notes{"code page 1252 is declared, and the text is read as UTF-8"});
}

TEST(CodePageText, that_a_declaration_allows_is_left_to_it) {
  const std::pair<uint16_t, std::string> rows[] = {
      {1252,
       "Gr\xF6\xDF"
       "e"},
      {1252, "It\x92s \x93quoted\x94 \x85"},
      {1252, "d\xE9j\xE0 vu, \xE9t\xE9, No\xEBl"},
      {1251, "\xCE\xF2\xF7\xB8\xF2 \xE7\xE0 \xE3\xEE\xE4"},
      {1253, "\xC1\xE8\xDE\xED\xE1"},
      {932, "\xB1\xB2\xB3"},
      {950, "\xA4\xA4\xA4\xE5"},
      {1252, "\xC9\xC9"}};
  for (const auto& [page, bytes] : rows)
    EXPECT_EQ(notesOf(readSummary({codePage(page), text(2, bytes)}), 2), Notes()) << page << bytes;
}

TEST(CodePageText, without_a_declaration_is_found_out) {
  const PropertySet set = readSummary({text(2, "\x95\x5C"), text(3, "ASCII")});
  EXPECT_EQ(textOf(set, 2), "表");
  EXPECT_EQ(notesOf(set, 2), Notes{"no code page is declared, and the text is read as WINDOWS31J"});
  EXPECT_EQ(notesOf(set, 3), Notes());
  EXPECT_EQ(textOf(readSummary({text(2, "\xE9t\xE9")}), 2), "été");
}

TEST(CodePageText, of_an_unknown_code_page_is_ascii_and_marks) {
  const PropertySet set = readSummary({codePage(29001), text(2, "a\xE9z")});
  EXPECT_EQ(textOf(set, 2), "a\uFFFDz");
  EXPECT_EQ(propertyOf(set, 2).value.bytes, "a\xE9z\0"s);
  EXPECT_EQ(notesOf(set, 2),
            Notes{"code page 29001 is declared, which is not known: only ASCII is read"});
}

TEST(CodePageText, that_is_none_is_shown_and_told) {
  const PropertySet set = readSummary({codePage(932), text(2,
                                                           "\x95\x5C\xFF"
                                                           "a")});
  EXPECT_EQ(textOf(set, 2), "表\uFFFDa");
  EXPECT_EQ(notesOf(set, 2), Notes{"holds bytes that are no text in WINDOWS31J"});
}

TEST(CodePageText, is_encoded_where_the_code_page_has_all_of_it) {
  EXPECT_EQ(encodedText(1252, "é€"), "\xE9\x80");
  EXPECT_EQ(encodedText(1252, "表"), std::nullopt);
  EXPECT_EQ(encodedText(932, "表"), "\x95\x5C");
  EXPECT_EQ(encodedText(1200, "表a"),
            "\x68\x88"
            "a\0"s);
  EXPECT_EQ(encodedText(65001, "表"), "表");
  EXPECT_EQ(encodedText(29001, "a"), std::nullopt);
  EXPECT_EQ(terminatedText(1252, "a"), "a\0"s);
  EXPECT_EQ(terminatedText(1200, "a"), "a\0\0\0"s);
}

}  // namespace
}  // namespace ksv_kit::properties
