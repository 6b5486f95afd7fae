// dtctText: the files are written out in the tests, their results too.
#include <gtest/gtest.h>

#include <cstring>

#include "ksv_detect.h"
#include "tests/detect/slow_detection.h"
#include "tests/detect/support.h"

namespace ksv_detect_tests {
namespace {

using namespace std::string_literals;

constexpr uint32_t kFailure = 0xFFFFFFFF;
constexpr size_t kChunk = 2048;
constexpr size_t kFourMebibytes = 4 * 1024 * 1024;

// Both the bits of an encoding made of bytes that won.
constexpr uint32_t kWon = 0x60000000;

class TextDetection : public testing::Test {
 protected:
  uint32_t detect(const std::string& bytes, const char* language = "English") const {
    return file_.detect(bytes, language);
  }
  TextFile file_;
};

std::string utf16le(const std::u16string& text) {
  std::string bytes;
  for (const char16_t unit : text) {
    bytes += static_cast<char>(unit);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}

std::string swapped(std::string bytes, size_t width) {
  for (size_t i = 0; i + width <= bytes.size(); i += width)
    std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                 bytes.begin() + static_cast<std::ptrdiff_t>(i + width));
  return bytes;
}

std::string ucs4le(const std::u16string& text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += utf16le({unit}) + "\0\0"s;
  return bytes;
}

TEST_F(TextDetection, fails_without_a_file_to_read) {
  EXPECT_EQ(dtctText(nullptr, "English"), kFailure);
  EXPECT_EQ(dtctText("", "English"), kFailure);
  EXPECT_EQ(dtctText((file_.path() + ".missing").c_str(), "English"), kFailure);
  EXPECT_EQ(dtctText(ksv::test::textOf(std::filesystem::temp_directory_path()).c_str(), "English"),
            kFailure);
  EXPECT_EQ(detect(""), kFailure);
}

TEST_F(TextDetection, leaves_no_file_open) {
  file_.write("text");
  dtctText(file_.path().c_str(), "English");
  const ptrdiff_t before = ksv::test::openDescriptors();
  for (int i = 0; i < 20; ++i) dtctText(file_.path().c_str(), "Japanese");
  file_.write("");
  for (int i = 0; i < 20; ++i) dtctText(file_.path().c_str(), "Japanese");
  EXPECT_EQ(ksv::test::openDescriptors(), before);
}

TEST_F(TextDetection, of_plain_ascii_is_what_the_language_prefers_else_utf8) {
  EXPECT_EQ(detect("plain text\n"), KSV_TEXT_UTF8 | kWon | KSV_TEXT_LF);
  EXPECT_EQ(detect("plain text\r\n", "Japanese"), KSV_TEXT_SHIFT_JIS | kWon | KSV_TEXT_CRLF);
  EXPECT_EQ(detect("plain text\r", "Simplified Chinese"),
            KSV_TEXT_SIMPLIFIED_CHINESE | kWon | KSV_TEXT_CR);
  EXPECT_EQ(detect("plain text", "Traditional Chinese"), KSV_TEXT_TRADITIONAL_CHINESE | kWon);
  EXPECT_EQ(detect("plain text", "Korean"), KSV_TEXT_KOREAN | kWon);
}

TEST_F(TextDetection, tells_the_first_line_end_only) {
  EXPECT_EQ(detect("a\r\nb\nc\nd\n"), KSV_TEXT_UTF8 | kWon | KSV_TEXT_CRLF);
  EXPECT_EQ(detect("a\nb\r\nc\r\n"), KSV_TEXT_UTF8 | kWon | KSV_TEXT_LF);
}

TEST_F(TextDetection, of_one_to_three_bytes) {
  EXPECT_EQ(detect("a"), KSV_TEXT_UTF8 | kWon);
  EXPECT_EQ(detect("\n"), KSV_TEXT_UTF8 | kWon | KSV_TEXT_LF);
  EXPECT_EQ(detect("\r\n"), KSV_TEXT_UTF8 | kWon | KSV_TEXT_CRLF);
  EXPECT_EQ(detect("\r"), KSV_TEXT_UTF8 | kWon | KSV_TEXT_CR);
  EXPECT_EQ(detect("\0"s), 0x60000001u);
  EXPECT_EQ(detect("\x80"), 0x60000001u);
  EXPECT_EQ(detect("\x1B"), 0x60000001u);
  EXPECT_EQ(detect("\xB1"), KSV_TEXT_SHIFT_JIS | kWon) << "half-width katakana";
  EXPECT_EQ(detect("a\0"s), KSV_TEXT_UTF16 | KSV_TEXT_SETTLED);
  EXPECT_EQ(detect("\xC3\xA9"), KSV_TEXT_UTF8 | kWon);
}

TEST_F(TextDetection, of_japanese_text_is_the_encoding_it_fits) {
  EXPECT_EQ(detect("\x93\xFA\x96\x7B\x8C\xEA\r\n", "Japanese"),
            KSV_TEXT_SHIFT_JIS | kWon | KSV_TEXT_CRLF);
  EXPECT_EQ(detect("\xB1\xB2\xB3\xB4\n", "Japanese"), KSV_TEXT_SHIFT_JIS | kWon | KSV_TEXT_LF)
      << "half-width katakana, and pairs of EUC-JP as well";
  EXPECT_EQ(detect("\xA4\xB3\xA4\xEC\xA4\xCF\xC6\xFC\xCB\xDC\xB8\xEC\n\xF4\xA6", "Japanese"),
            KSV_TEXT_EUC_JP | kWon | KSV_TEXT_LF);
  EXPECT_EQ(detect("\x1B$B\x46\x7C\x4B\x5C\x1B(B\n", "Japanese"),
            KSV_TEXT_ISO_2022_JP | kWon | KSV_TEXT_LF);
  EXPECT_EQ(detect("これは日本語です\n", "Japanese"), KSV_TEXT_UTF8 | kWon | KSV_TEXT_LF);
}

TEST_F(TextDetection, checks_the_codes_of_ShiftJis_where_utf8_fits_as_well) {
  // EB 80 and 81 61 are pairs of Shift_JIS, but it has no character EB80.
  EXPECT_EQ(detect("\xEB\x80\x81\x61", "Japanese"), KSV_TEXT_UTF8 | kWon);
  EXPECT_EQ(detect("\xE3\x81\x82\xE3\x81\x84", "Japanese"), KSV_TEXT_SHIFT_JIS | kWon)
      << "E381, 82E3 and 8184 it has";
  // C2 B1 are two half-width katakana, and codes that Shift_JIS has.
  EXPECT_EQ(detect("\xC2\xB1", "Japanese"), KSV_TEXT_SHIFT_JIS | kWon);
}

TEST_F(TextDetection, checks_the_codes_of_ShiftJis_from_where_the_chunk_began) {
  // Both fit the first chunk, which ends with a lead byte that the first check carries.
  // There is no code 8221, but 82A0.
  const std::string text = "!" + std::string(kChunk - 2, 'a') + "\x82\xA0" + "b";
  EXPECT_EQ(detect(text, "Japanese"), KSV_TEXT_SHIFT_JIS | kWon);
}

TEST_F(TextDetection, of_text_with_a_mark_is_settled_by_it) {
  EXPECT_EQ(detect("\xEF\xBB\xBFtext\n"), KSV_TEXT_UTF8 | KSV_TEXT_MARK | kWon | KSV_TEXT_LF);
  const std::string text16 = utf16le(u"日本\r\n語\u2028");
  EXPECT_EQ(detect("\xFF\xFE" + text16), KSV_TEXT_UTF16 | KSV_TEXT_MARK | KSV_TEXT_SETTLED |
                                             KSV_TEXT_CRLF | KSV_TEXT_LINE_SEPARATOR);
  EXPECT_EQ(detect("\xFE\xFF" + swapped(text16, 2)),
            KSV_TEXT_UTF16 | KSV_TEXT_MARK | kWon | KSV_TEXT_CRLF | KSV_TEXT_LINE_SEPARATOR);
  const std::string text32 = ucs4le(u"日本\n語\u2029");
  EXPECT_EQ(detect("\xFF\xFE\0\0"s + text32), KSV_TEXT_UCS4 | KSV_TEXT_MARK | KSV_TEXT_SETTLED |
                                                  KSV_TEXT_LF | KSV_TEXT_PARAGRAPH_SEPARATOR);
  EXPECT_EQ(detect("\0\0\xFE\xFF"s + swapped(text32, 4)),
            KSV_TEXT_UCS4 | KSV_TEXT_MARK | kWon | KSV_TEXT_LF | KSV_TEXT_PARAGRAPH_SEPARATOR);
  EXPECT_EQ(detect("\xEF\xBB\xBFplain", "Japanese"), KSV_TEXT_UTF8 | KSV_TEXT_MARK | kWon)
      << "whatever the language";
}

TEST_F(TextDetection, of_a_mark_alone_is_settled_by_the_scores) {
  EXPECT_EQ(detect("\xEF\xBB\xBF"), KSV_TEXT_UTF8 | kWon);
  EXPECT_EQ(detect("\xFF\xFE"), KSV_TEXT_UTF16 | KSV_TEXT_SETTLED);
  EXPECT_EQ(detect("\xFE\xFF"), KSV_TEXT_UTF16 | KSV_TEXT_SETTLED) << "FFFE is accepted as well";
  EXPECT_EQ(detect("\xFF\xFE\0\0"s), KSV_TEXT_UCS4 | KSV_TEXT_SETTLED);
  EXPECT_EQ(detect("\0\0\xFE\xFF"s), KSV_TEXT_UCS4 | kWon);
}

TEST_F(TextDetection, tries_the_mark_of_utf16_where_ucs4_does_not_fit) {
  // U+0000 behind the mark of UTF-16: one bad character of ten.
  const std::string text = utf16le(std::u16string(1, 0) + u"123456789");
  EXPECT_EQ(detect("\xFF\xFE" + text), KSV_TEXT_UTF16 | KSV_TEXT_MARK | KSV_TEXT_SETTLED);
}

TEST_F(TextDetection, looks_for_a_mark_of_utf16_behind_that_of_ucs4_or_utf8) {
  EXPECT_EQ(detect("\xEF\xBB\xBF\xFF\xFE\x61\x62\x63\x64\x65"), 0xC0000004u) << "6261 and 6463";
  EXPECT_EQ(detect("\xFF\xFE\0\0\xFE\xFF\x03\0"s), 0xE0000004u)
      << "3FFFE in UCS-4, and 0300 in UTF-16";
  EXPECT_EQ(detect("\0\0\xFE\xFF\xFF\xFE\x02\x50"s + repeated("\0\x02\x4F\x50"s, 36)), 0xC0000004u)
      << "one bad character of ten in UCS-4, none in UTF-16";
}

TEST_F(TextDetection, of_two_marks_whose_second_does_not_fit_is_settled_by_the_first) {
  EXPECT_EQ(detect("\xEF\xBB\xBF\xFE\xFF text of ASCII!\n"), 0xE0000002u | KSV_TEXT_LF)
      << "2074 is a character and 6578 too, but the last unit is cut";
  EXPECT_EQ(detect("\xEF\xBB\xBF\xEF\xBB\xBF text\n"), 0xE0000002u | KSV_TEXT_LF);
}

TEST_F(TextDetection, of_several_marks_tells_the_line_end_and_separators_of_the_last) {
  // U+2028 of UCS-4, and in UTF-16 behind its mark U+2028 and U+0000, nine good ones, LF.
  const std::string text = utf16le(u"\u2028" + std::u16string(1, 0) + u"abcdefghijklmnopq\n\u2029");
  EXPECT_EQ(detect("\xFF\xFE\0\0"s + "\xFF\xFE" + text) & ~KSV_TEXT_ENCODINGS,
            KSV_TEXT_MARK | KSV_TEXT_SETTLED | KSV_TEXT_LF | KSV_TEXT_LINE_SEPARATOR |
                KSV_TEXT_PARAGRAPH_SEPARATOR);
  EXPECT_EQ(detect("\xEF\xBB\xBF\xFE\xFF\n0\n"), 0xE0000004u)
      << "the line ends of UTF-8 are 0A30 in UTF-16";
}

TEST_F(TextDetection, with_a_mark_and_less_than_nine_good_characters_of_ten_goes_to_the_scores) {
  const std::string bad = "\xEF\xBB\xBF" + repeated("ab\x80", 300);
  EXPECT_EQ(detect(bad), slowDetect(bytesOf(bad), "english"));
  EXPECT_EQ(detect(bad) & KSV_TEXT_MARK, 0u);
}

TEST_F(TextDetection, without_a_mark_tells_unicode_by_its_characters) {
  EXPECT_EQ(detect(utf16le(u"日本語\r\n")), KSV_TEXT_UTF16 | KSV_TEXT_SETTLED | KSV_TEXT_CRLF);
  EXPECT_EQ(detect(swapped(utf16le(u"English text\n"), 2)) & ~KSV_TEXT_LF,
            KSV_TEXT_UTF16 | KSV_TEXT_EUC_JP_FIX)
      << "each letter behind a zero";
  EXPECT_EQ(detect(ucs4le(u"日本語\r\n")), KSV_TEXT_UCS4 | KSV_TEXT_SETTLED | KSV_TEXT_CRLF);
  EXPECT_EQ(detect(swapped(ucs4le(u"日本語\r\n"), 4)), KSV_TEXT_UCS4 | kWon | KSV_TEXT_CRLF);
}

TEST_F(TextDetection, counts_4EA6_and_FB3E_as_bad_in_utf16) {
  const std::string good = utf16le(u"\u4E00\u4E01\u4E03\u4E07\u4E08\u4E09\u4E0A\u4E0B\u4E0C");
  EXPECT_EQ(detect("\xFF\xFE" + good + utf16le(u"\u4EA6")) & KSV_TEXT_MARK, KSV_TEXT_MARK) << "90";
  EXPECT_EQ(detect("\xFF\xFE" + good.substr(2) + utf16le(u"\u4EA6")) & KSV_TEXT_MARK, 0u) << "88";
  EXPECT_EQ(detect("\xFF\xFE" + good.substr(2) + utf16le(u"\uFB3E")) & KSV_TEXT_MARK, 0u);
}

TEST_F(TextDetection, of_what_fits_nothing_is_undetermined) {
  EXPECT_EQ(detect(repeated("\x7F\xFF\x05\x06", 100)), 0x60000001u);
  EXPECT_EQ(detect(repeated("\x7F\xFF\x05\x06\n", 5000)), 0x60000001u) << "no line end either";
}

TEST_F(TextDetection, of_a_tie_tells_all_and_the_line_end_of_Iso2022Jp) {
  // Pairs that GBK, Korean and EUC-JP have, and Shift_JIS as katakana.
  const uint32_t result = detect(repeated("\xB0\xA1\xC4\xE3\n", 5000));
  EXPECT_EQ(
      result & KSV_TEXT_ENCODINGS,
      slowDetect(bytesOf(repeated("\xB0\xA1\xC4\xE3\n", 5000)), "english") & KSV_TEXT_ENCODINGS);
  EXPECT_NE(result & KSV_TEXT_SIMPLIFIED_CHINESE, 0u);
  EXPECT_NE(result & KSV_TEXT_KOREAN, 0u);
  EXPECT_EQ(result & ~KSV_TEXT_ENCODINGS, kWon | KSV_TEXT_LF);
}

TEST_F(TextDetection, of_a_tie_of_utf16_and_EucJpFix_tells_the_line_end_of_utf16) {
  EXPECT_EQ(detect("\0a\0b\0\n\0c"s), 0x84u | KSV_TEXT_LF);
  EXPECT_EQ(detect("\0a\0b\0\r\0\n"s), 0x84u | KSV_TEXT_CRLF);
  EXPECT_EQ(detect("\0a\0b\0\r"s), 0x84u | KSV_TEXT_CR);
  EXPECT_EQ(detect("\0a\0."s), 0x84u);
  EXPECT_EQ(detect("\0a\0b"s), KSV_TEXT_UTF16 | KSV_TEXT_SETTLED)
      << "6100 and 6200 are little-endian characters";
}

TEST_F(TextDetection, of_a_tie_of_utf16_and_EucJpFix_with_a_separator_tells_no_line_end) {
  std::string text = "\0\n"s;
  for (int i = 0; i < 300; ++i) text += "\0."s;
  // U+2028 is two bad bytes in EUC-JP-FIX, and E021 is bad in UTF-16: 99 for both.
  EXPECT_EQ(detect(text + "\x20\x28\xE0\x21"), 0x84u);
  EXPECT_EQ(detect(text + "\x20\x29\xE0\x21"), 0x84u);
  EXPECT_EQ(detect(text + "\x20\x2A\xE0\x21"), 0x84u | KSV_TEXT_LF);
}

// Kanji of EUC-JP in rows B0 to CE are Hangul in UTF-16, read as big-endian. As
// little-endian many are nothing. Row C8 is left out, where Big5 has little.
std::string kanjiFromRowB0(size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    const size_t row = 0xB0 + i % 30;
    text += static_cast<char>(row < 0xC8 ? row : row + 1);
    text += static_cast<char>(0xA1 + i % 94);
  }
  return text;
}

TEST_F(TextDetection, counts_the_second_order_of_utf16_in_a_tie_however_bad_it_is) {
  const std::string kanji = kanjiFromRowB0(1024) + "\n" + kanjiFromRowB0(500) + "\n";
  EXPECT_EQ(detect(kanji), 0x60001C40u) << "behind the LF the orders have changed places";
}

TEST_F(TextDetection, tells_the_line_end_of_big_endian_utf16_in_a_tie_however_bad_it_is) {
  const std::string pairs = repeated("\xA1\x4F", 600);
  EXPECT_EQ(detect(pairs + repeated("\xA1\x80", 20) + pairs + repeated("\0\n"s, 20)), 0x08000084u)
      << "4FA1 is good, A14F nothing";
}

TEST_F(TextDetection, counts_the_second_order_of_ucs4_in_a_tie_however_bad_it_is) {
  // 00028090 in big-endian UCS-4, and both units good in little-endian UTF-16. Some in
  // the other order, bad in both, make them a tie. Then the orders change places.
  const std::string little = repeated("\x80\x90\x02\0"s, 4 * 500);
  const std::string big = repeated("\0\x02\x80\x90"s, 4 * 509) + little.substr(0, 4 * 3);
  EXPECT_EQ(detect(big), 0x14u);
  EXPECT_EQ(detect(big + little), 0x60000010u) << "99 to 49 of a hundred";
}

TEST_F(TextDetection, reads_the_last_byte_of_EucJpFix) {
  const std::string text = repeated("\0\x61\xA4\xE0\0\n"s, 36);
  EXPECT_EQ(detect("\x80" + text + "\x42"), 0x68000080u) << "two bad single bytes";
  EXPECT_EQ(detect("\x80" + text + "\xA4"), 0x60000001u) << "a lead without its second";
  EXPECT_EQ(detect("\x80" + text + "\x1B"), 0x60000001u);
}

// A tie of Chinese, Korean and EUC-JP, until a pair that only one of them has.
const std::string kTie = "\xB0\xA1\xC4\xE3\xD0\xD0 ";
constexpr uint32_t kTied = KSV_TEXT_SIMPLIFIED_CHINESE | KSV_TEXT_TRADITIONAL_CHINESE |
                           KSV_TEXT_KOREAN | KSV_TEXT_SHIFT_JIS | KSV_TEXT_EUC_JP;

TEST_F(TextDetection, reads_a_tie_on_to_the_end_of_the_file) {
  const std::string tie = repeated(kTie, 7 * 4000);
  EXPECT_EQ(detect(tie), kTied | kWon);
  const std::string gbk = tie + "\x81\x40";
  EXPECT_EQ(detect(gbk) & KSV_TEXT_SIMPLIFIED_CHINESE, KSV_TEXT_SIMPLIFIED_CHINESE);
  EXPECT_EQ(detect(gbk) & KSV_TEXT_KOREAN, 0u);
  EXPECT_EQ(detect(gbk), slowDetect(bytesOf(gbk), "english"));
}

// The chunk that ends behind 4 MiB is the last one that is read.
TEST_F(TextDetection, reads_a_tie_on_to_four_mebibytes_and_a_chunk) {
  const std::string breaker = "\x81\x40\x81\x40";
  const auto withBreaker = [&](size_t at) {
    std::string text = repeated(kTie, kFourMebibytes + 3 * kChunk);
    return text.replace(at, breaker.size(), breaker);
  };
  const auto down = [](size_t at) { return at - at % kTie.size(); };
  for (const size_t at :
       {kFourMebibytes - kChunk, kFourMebibytes - 2, kFourMebibytes, kFourMebibytes + kChunk - 4}) {
    EXPECT_EQ(detect(withBreaker(down(at))),
              KSV_TEXT_SIMPLIFIED_CHINESE | KSV_TEXT_SHIFT_JIS | kWon)
        << at;
  }
  EXPECT_EQ(detect(withBreaker(down(kFourMebibytes + kChunk) + kTie.size())), kTied | kWon)
      << "unread";
}

TEST_F(TextDetection, of_sizes_around_four_mebibytes_is_what_slow_detection_finds) {
  for (const size_t size : {kFourMebibytes - 1, kFourMebibytes, kFourMebibytes + 1,
                            kFourMebibytes + kChunk, kFourMebibytes + kChunk + 1}) {
    std::string text = repeated("\xB0\xA1", size);
    text.back() = '\xB0';
    EXPECT_EQ(detect(text), slowDetect(bytesOf(text), "english")) << size;
  }
}

TEST_F(TextDetection, carries_a_character_of_every_kind_over_a_chunk_border) {
  std::mt19937 random(testSeed());
  for (const NamedAlphabet& named : alphabets()) {
    for (const std::string& character : named.characters) {
      const std::string filler = named.name.starts_with("U") && named.name != "UTF-8"
                                     ? named.characters[0]
                                     : kTie.substr(0, 2);
      for (size_t before = 0; before <= 8; ++before) {
        std::string text = repeated(filler, kChunk - 4 - before % 4);
        text.resize(kChunk - before, 'x');
        text += character + character + repeated(filler, 400);
        ASSERT_EQ(detect(text), slowDetect(bytesOf(text), "english"))
            << named.name << ", " << testing::PrintToString(character) << " " << before;
      }
    }
  }
}

TEST_F(TextDetection, tells_a_line_end_on_a_chunk_border) {
  for (const std::string& lineEnd : {"\r\n"s, "\r"s, "\n"s}) {
    for (size_t before = 0; before <= 4; ++before) {
      const std::string text =
          repeated(kTie, 2040) + std::string(8 - before, 'x') + lineEnd + repeated(kTie, 60);
      EXPECT_EQ(detect(text), slowDetect(bytesOf(text), "english")) << before;
      EXPECT_EQ(detect(text, "Korean"), slowDetect(bytesOf(text), "korean")) << before;
    }
  }
  // A tie tells what ISO-2022-JP sees while it is in the race: in the first chunk.
  const std::string late = repeated(kTie, 7 * 430) + "\n" + repeated(kTie, 30);
  EXPECT_EQ(detect(late), kTied | kWon);
}

TEST_F(TextDetection, of_a_file_that_ends_in_a_character_drops_that_chunk) {
  EXPECT_EQ(detect("abc\xB0") & KSV_TEXT_SIMPLIFIED_CHINESE, 0u);
  const std::string text = repeated(kTie, 7 * 300 + 1);
  EXPECT_EQ(detect(text), slowDetect(bytesOf(text), "english"));
}

TEST_F(TextDetection, takes_the_language_of_the_environment_for_none) {
  file_.write("plain");
  const std::string path = file_.path();
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    const ksv::test::ScopedVariable lang("LANG", "ja_JP.UTF-8");
    EXPECT_EQ(dtctText(path.c_str(), none), KSV_TEXT_SHIFT_JIS | kWon);
  }
  const ksv::test::ScopedVariable lang("LANG", "en_US.UTF-8");
  EXPECT_EQ(dtctText(path.c_str(), nullptr), KSV_TEXT_UTF8 | kWon);
}

}  // namespace
}  // namespace ksv_detect_tests
