// What a text is written in: its charset and language, how sure that is, and why.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "judge_texts.h"
#include "kit.h"

namespace ksv_kit_tests {
namespace {

struct DetectionDeleter {
  void operator()(ksv_detection* detection) const { ksv_detection_free(detection); }
};
using Detection = std::unique_ptr<ksv_detection, DetectionDeleter>;
struct DetectorDeleter {
  void operator()(ksv_detector* detector) const { ksv_detector_free(detector); }
};
using Detector = std::unique_ptr<ksv_detector, DetectorDeleter>;

Detection detect(std::string_view text, const ksv_hints* hints = nullptr) {
  ksv_detection* detection = nullptr;
  ksv_error error;
  EXPECT_EQ(ksv_detect(text.data(), text.size(), hints, &detection, &error), KSV_OK)
      << error.message;
  return Detection(detection);
}

std::string named(const char* name) { return name == nullptr ? "(null)" : name; }

// The first guess: "charset, read as, language".
std::string firstOf(const Detection& detection) {
  const ksv_guess* const guess = ksv_detection_guess(detection.get(), 0);
  if (guess == nullptr) return "none";
  return named(guess->charset) + ", " + named(guess->decode_as) + ", " + named(guess->language);
}

std::string charsetOf(const Detection& detection) {
  const ksv_guess* const guess = ksv_detection_guess(detection.get(), 0);
  return guess == nullptr ? "none" : guess->charset;
}

std::string charsetOf(std::string_view text, const ksv_hints* hints = nullptr) {
  return charsetOf(detect(text, hints));
}

ksv_text_facts factsOf(const Detection& detection) {
  ksv_text_facts facts;
  ksv_detection_facts(detection.get(), &facts);
  return facts;
}

std::string in(const char* charset, std::string_view utf8) {
  const Converted converted = convert("UTF-8", charset, utf8);
  EXPECT_EQ(converted.result, KSV_OK) << charset << ": " << converted.message;
  return converted.text;
}

std::vector<std::string> words(const char* list) {
  std::istringstream stream(list);
  std::vector<std::string> all;
  for (std::string word; stream >> word;) all.push_back(word);
  return all;
}

// "Kusamakura" begins so: while I walked up a mountain path, I thought.
constexpr char kJapaneseText[] =
    "山路を登りながら、こう考えた。智に働けば角が立つ。情に棹させば流される。"
    "意地を通せば窮屈だ。とかくに人の世は住みにくい。\n";

// Everything that is told of a text, to be compared.
std::string allOf(const Detection& detection) {
  std::ostringstream all;
  const ksv_text_facts facts = factsOf(detection);
  all << facts.content << ' ' << facts.settled << ' ' << facts.bytes << ' '
      << named(facts.misread_as) << '\n';
  for (size_t i = 0; i < ksv_detection_count(detection.get()); ++i) {
    const ksv_guess& guess = *ksv_detection_guess(detection.get(), i);
    all << guess.charset << '|' << named(guess.decode_as) << '|' << guess.language << '|'
        << guess.reason << '|' << guess.confidence << '|' << guess.invalid_offset << '|'
        << guess.line_end << '|' << guess.mark_length << '\n';
  }
  return all.str();
}

Detector detector(const ksv_hints* hints = nullptr) {
  ksv_detector* made = nullptr;
  ksv_error error;
  EXPECT_EQ(ksv_detector_new(hints, &made, &error), KSV_OK) << error.message;
  return Detector(made);
}

Detection verdict(const Detector& detector, bool complete) {
  ksv_detection* detection = nullptr;
  ksv_error error;
  EXPECT_EQ(ksv_detector_verdict(detector.get(), complete ? 1 : 0, &detection, &error), KSV_OK)
      << error.message;
  return Detection(detection);
}

// Fed in pieces, the sizes of which the function says.
template <typename Size>
Detection detectInPieces(const std::string& text, Size nextSize) {
  const Detector fed = detector();
  for (size_t at = 0; at < text.size();) {
    const size_t count = std::min<size_t>(nextSize(), text.size() - at);
    int settled = 0;
    ksv_error error;
    EXPECT_EQ(ksv_detector_feed(fed.get(), text.data() + at, count, &settled, &error), KSV_OK);
    at += count;
  }
  return verdict(fed, true);
}

std::string repeated(std::string_view text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) all += text;
  return all;
}

// ---- Charsets and languages ----

TEST(Judge, FindsTheCharsetAndTheLanguageOfAParagraph) {
  for (const WrittenText& written : kWrittenTexts)
    for (const std::string& charset : words(written.charsets)) {
      const std::string bytes = in(charset.c_str(), written.utf8);
      const Detection detection = detect(bytes);
      const ksv_guess* const guess = ksv_detection_guess(detection.get(), 0);
      ASSERT_NE(guess, nullptr) << charset;
      ASSERT_NE(guess->decode_as, nullptr) << charset;
      EXPECT_STREQ(guess->language, written.language) << charset;
      EXPECT_EQ(convert(guess->decode_as, "UTF-8", bytes).text, written.utf8)
          << charset << " was taken for " << guess->charset;
      EXPECT_GT(guess->confidence, 0.9) << charset << " in " << written.language;
      EXPECT_EQ(guess->invalid_offset, KSV_NO_OFFSET) << charset;
    }
}

// What is plainly made of pairs is not read by single bytes: that would be wrong if it were of
// them.
TEST(Judge, TakesLongTextsOfSingleBytesForNoPairs) {
  for (const WrittenText& written : kWrittenTexts)
    for (const std::string& charset : words(written.charsets)) {
      const std::string once = in(charset.c_str(), written.utf8);
      if (charset.starts_with("UTF") || charset.starts_with("ISO-2022")) continue;
      std::string bytes;
      for (size_t times = 0; times < 12; ++times) bytes += once + "\n";
      const Detection detection = detect(bytes);
      const ksv_guess* const guess = ksv_detection_guess(detection.get(), 0);
      ASSERT_NE(guess, nullptr) << charset;
      EXPECT_EQ(convert(guess->decode_as, "UTF-8", bytes).text,
                repeated(std::string(written.utf8) + "\n", 12))
          << charset << " was taken for " << guess->charset;
    }
}

TEST(Judge, NamesTheNarrowestCharsetThatHoldsTheText) {
  const std::string ja = in("Shift_JIS", kJapaneseText);
  EXPECT_EQ(firstOf(detect(ja)), "Shift_JIS, WINDOWS31J, ja");
  EXPECT_EQ(firstOf(detect(ja + "\x87\x40")), "WINDOWS31J, WINDOWS31J, ja");  // circled one
  const std::string euc = in("EUC-JP", kJapaneseText);
  EXPECT_EQ(firstOf(detect(euc)), "EUC-JP, EUC-JP-MS, ja");
  EXPECT_EQ(firstOf(detect(euc + "\xAD\xA1")), "EUC-JP-MS, EUC-JP-MS, ja");

  const std::string zh = in("ChineseGBK", kWrittenTexts[1].utf8);
  EXPECT_EQ(firstOf(detect(zh)), "GB2312, ChineseGBK, zh-CN");
  EXPECT_EQ(firstOf(detect(zh + "\x81\x40")), "ChineseGBK, ChineseGBK, zh-CN");
  EXPECT_EQ(firstOf(detect(zh + "\x81\x39\xEF\x30")), "GB18030, GB18030, zh-CN");

  const std::string ko = in("EUC-KR", kWrittenTexts[3].utf8);
  EXPECT_EQ(firstOf(detect(ko)), "EUC-KR, KoreanKSC, ko");
  EXPECT_EQ(firstOf(detect(ko + "\x8C\x63")), "KoreanKSC, KoreanKSC, ko");

  const std::string de = in("ISO-8859-1", kWrittenTexts[4].utf8);
  EXPECT_EQ(firstOf(detect(de)), "ISO-8859-1, windows-1252, de");
  EXPECT_EQ(firstOf(detect("\x84" + de + "\x93")), "windows-1252, windows-1252, de");
}

TEST(Judge, CallsTextsOfAsciiOnlyThat) {
  EXPECT_EQ(firstOf(detect("All human beings are born free and equal in dignity and rights.\n")),
            "ISO-646IRV, UTF-8, en");
  // A word or two say nothing of a language.
  EXPECT_EQ(firstOf(detect("plain\n")), "ISO-646IRV, UTF-8, ");
}

TEST(Judge, LooksAtAllOfATextForWhatIsNoAscii) {
  const std::string ascii =
      repeated("# a line of a program, with no sign of anything else\n", 4000);
  ASSERT_GT(ascii.size(), 200000u);
  EXPECT_EQ(charsetOf(ascii), "ISO-646IRV");
  EXPECT_EQ(charsetOf(ascii + in("Shift_JIS", kJapaneseText)), "Shift_JIS");
  EXPECT_EQ(charsetOf(ascii + in("EUC-JP", kJapaneseText) + ascii), "EUC-JP");
  EXPECT_EQ(charsetOf(ascii + kJapaneseText), "UTF-8");
  EXPECT_EQ(charsetOf(ascii + in("ISO-2022-JP", kJapaneseText)), "ISO-2022-JP");
}

TEST(Judge, ReadsLongLinesInPiecesThatEndBetweenCharacters) {
  std::string sentences = kJapaneseText;
  sentences.back() = ' ';
  for (const char* const charset : {"Shift_JIS", "EUC-JP", "ChineseGBK", "UTF-8"}) {
    const std::string line = in(charset, repeated(sentences, 300));
    ASSERT_EQ(line.find('\n'), std::string::npos);
    const std::string pages = "x" + line + "\n" + line;  // each byte of a character at each cut
    for (const std::string& text : {line, pages}) {
      EXPECT_EQ(charsetOf(text), charset);
      const Detection detection = detectInPieces(text, [] { return 1 << 20; });
      EXPECT_EQ(ksv_detection_guess(detection.get(), 0)->invalid_offset, KSV_NO_OFFSET) << charset;
    }
  }
}

TEST(Judge, IsAskedForTheLanguageOfAsciiInLongerTexts) {
  const std::string text = repeated(
      "All human beings are born free and equal in dignity and rights.\n"
      "They are endowed with reason and conscience.\n",
      40);
  EXPECT_EQ(firstOf(detect(text)), "ISO-646IRV, UTF-8, en");
  // The beginning is asked.
  EXPECT_EQ(firstOf(detect(text + repeated("Alle Menschen sind frei und gleich geboren.\n", 200))),
            "ISO-646IRV, UTF-8, en");
}

// One letter of another script between blanks is a sign of this one.
TEST(Judge, TakesSignsAmongLatinLettersForNoLettersOfAnotherScript) {
  EXPECT_EQ(charsetOf("\xABMetatu\xBB moduan ez dagoenean, \xABGehitu\xBB\n"), "ISO-8859-1");
  EXPECT_EQ(charsetOf("Once a key has been pressed \x97 and only then \x97 it starts.\n"),
            "windows-1252");
  EXPECT_EQ(charsetOf("He said \x93no\x94, and didn\x92t come; \x93why\x94, she said.\n"),
            "windows-1252");
}

TEST(Judge, KnowsEscapedCharsetsByTheirEscapesAlsoWhereNobodyCanReadThem) {
  EXPECT_EQ(firstOf(detect("\x1B$B;3O)\x1B(B")), "ISO-2022-JP, CP50220, ja");
  EXPECT_EQ(firstOf(detect("\x1B$(O;3O)\x1B(B")), "ISO-2022-JP-2004, ISO-2022-JP-2004, ja");
  EXPECT_EQ(firstOf(detect("\x1B$)C\n\x0E\x30\x21\x0F\n")), "ISO-2022-KR, ISO-2022-KR, ko");
  EXPECT_EQ(firstOf(detect("\x1B$)A\x0E\x3B\x3B\x0F\n")), "ISO-2022-CN, ISO-2022-CN, zh-CN");
  EXPECT_EQ(firstOf(detect("\x1B$)E\x0E\x3B\x3B\x0F\n")), "ISO-2022-CN-EXT, (null), zh-CN");
  EXPECT_EQ(firstOf(detect("\x1B$A;;\x1B(B \x1B$B;3\x1B(B")), "ISO-2022-JP-2, (null), ja");
  // A terminal's colours are no charset.
  EXPECT_EQ(charsetOf("\x1B[31mred\x1B[0m\n"), "ISO-646IRV");
}

TEST(Judge, TakesPlusSignsAndTildesForNoRunsWithoutText) {
  EXPECT_EQ(charsetOf("a+b-c, x+=1; ~{not a run\n"), "ISO-646IRV");
  EXPECT_EQ(charsetOf("+MEowTDBP- and so on\n"), "UTF-7");  // three hiragana
  EXPECT_EQ(firstOf(detect("~{HKHKIz6x5DWTSI#,~}\n")), "HZ-GB-2312, HZ-GB-2312, zh-CN");
}

// ---- Marks and units ----

TEST(Judge, KnowsByteOrderMarks) {
  const auto told = [](std::string_view bytes) {
    const Detection detection = detect(bytes);
    const ksv_guess& guess = *ksv_detection_guess(detection.get(), 0);
    return std::tuple(std::string(guess.charset), guess.mark_length);
  };
  EXPECT_EQ(told("\xEF\xBB\xBF"
                 "a"),
            std::tuple("UTF-8", 3u));
  EXPECT_EQ(told({"\xFF\xFE"
                  "a\0",
                  4}),
            std::tuple("UTF-16LE", 2u));
  EXPECT_EQ(told({"\xFE\xFF\0a", 4}), std::tuple("UTF-16BE", 2u));
  EXPECT_EQ(told({"\xFF\xFE\0\0"
                  "a\0\0\0",
                  8}),
            std::tuple("UTF-32LE", 4u));
  EXPECT_EQ(told({"\0\0\xFE\xFF\0\0\0a", 8}), std::tuple("UTF-32BE", 4u));
  EXPECT_EQ(told("\x84\x31\x95\x33"
                 "a"),
            std::tuple("GB18030", 4u));
}

TEST(Judge, FindsUnitsWithoutMarkOrNul) {
  const std::string text = in("UTF-16LE", "今までずっとやって、まだできないだと？フ");
  ASSERT_EQ(text.find('\0'), std::string::npos);
  EXPECT_EQ(firstOf(detect(text)), "UTF-16LE, UTF-16LE, ja");
  EXPECT_EQ(firstOf(detect(in("UTF-16BE", "今までずっとやって、まだできないだと？フ"))),
            "UTF-16BE, UTF-16BE, ja");
  // Letters of ASCII that look like units.
  EXPECT_EQ(charsetOf("Bush hid the facts"), "ISO-646IRV");
  EXPECT_EQ(charsetOf("d41d8cd98f00b204e9800998ecf8427e"), "ISO-646IRV");
  // Halves of hiragana, when the zeros come first.
  EXPECT_EQ(charsetOf("0D0F0B0G0D0J0K0D"), "ISO-646IRV");
  EXPECT_EQ(charsetOf("0D0A0D0A0C0A0D0A"), "ISO-646IRV");
  // "Thai", whose second bytes are the control code SO.
  EXPECT_EQ(charsetOf("\x44\x0E\x17\x0E\x22\x0E\x44\x0E\x17\x0E\x22\x0E"), "UTF-16LE");
}

TEST(Judge, TakesBytesBetweenNulsForNoUnits) {
  EXPECT_NE(charsetOf({"a line\n\0another line\n\0", 21}), "UTF-16LE");
  EXPECT_NE(charsetOf(in("Shift_JIS", "これは日本語の文章です。") + std::string(2, '\0')),
            "UTF-16BE");
}

// ---- What is no text ----

TEST(Judge, SaysOfEmptyAndBinaryFilesWhatTheyAre) {
  EXPECT_EQ(factsOf(detect("")).content, KSV_CONTENT_EMPTY);
  EXPECT_EQ(factsOf(detect("\x89PNG\r\n\x1A\nIHDR")).content, KSV_CONTENT_BINARY);
  EXPECT_EQ(factsOf(detect({"\x7F"
                            "ELF\x02\x01\x01\0\0\0\0\0",
                            12}))
                .content,
            KSV_CONTENT_BINARY);
  std::mt19937 random(5);
  std::string noise(5000, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  const Detection detection = detect(noise);
  EXPECT_EQ(factsOf(detection).content, KSV_CONTENT_BINARY);
  EXPECT_EQ(ksv_detection_count(detection.get()), 0u);
  EXPECT_EQ(ksv_detection_guess(detection.get(), 0), nullptr);
  EXPECT_EQ(factsOf(detect("OggSpots and wOFF are words\n")).content, KSV_CONTENT_TEXT);
}

TEST(Judge, TellsHowLinesEnd) {
  const auto lineEndOf = [](std::string_view text) {
    return ksv_detection_guess(detect(text).get(), 0)->line_end;
  };
  EXPECT_EQ(lineEndOf("a"), KSV_LINE_ENDS_NONE);
  EXPECT_EQ(lineEndOf("a\nb\n"), KSV_LINE_ENDS_LF);
  EXPECT_EQ(lineEndOf("a\r\nb\r\n"), KSV_LINE_ENDS_CRLF);
  EXPECT_EQ(lineEndOf("a\rb\r"), KSV_LINE_ENDS_CR);
  EXPECT_EQ(lineEndOf("a\r\nb\n"), KSV_LINE_ENDS_MIXED);
  EXPECT_EQ(lineEndOf("a\rb\n"), KSV_LINE_ENDS_MIXED);
  // The CR at the end of one block of a text, the LF at the beginning of the next.
  EXPECT_EQ(lineEndOf(std::string(4095, 'a') + "\r\n"), KSV_LINE_ENDS_CRLF);
  EXPECT_EQ(lineEndOf(std::string(127, 'a') + "\r\n" + std::string(200, 'b')), KSV_LINE_ENDS_CRLF);
  EXPECT_EQ(lineEndOf(in("UTF-16BE", "a line\r\nand another one\r\n")), KSV_LINE_ENDS_CRLF);
}

// ---- What is known beforehand ----

TEST(Judge, FollowsWhatATextDeclaresWhereItsBytesAllowIt) {
  const std::string a = "\xB1\xB2";  // two half-width katakana, or many other things
  for (const char* const declaration :
       {"<?xml version='1.0' encoding='Shift_JIS'?>", "<meta charset=\"shift_jis\">",
        "@charset \"Shift_JIS\";", "Content-Type: text/plain; charset=shift_jis\n\n",
        "msgid \"\"\n\"Content-Type: text/plain; charset=SHIFT_JIS\\n\"\n",
        "# -*- coding: shift_jis-unix -*-\n", "/* vim: set fileencoding=shift_jis : */\n"})
    EXPECT_EQ(charsetOf(declaration + a), "Shift_JIS") << declaration;
  EXPECT_NE(charsetOf("<p>Shift_JIS</p>" + a), "Shift_JIS");
  EXPECT_NE(charsetOf("it said content-type: text/plain; charset=shift_jis\n" + a), "Shift_JIS");
  EXPECT_EQ(charsetOf("<meta charset=shift_jis>" + std::string(kJapaneseText)), "UTF-8");
}

TEST(Judge, TakesHints) {
  const std::string bytes = "\xB1\xB2";
  ksv_hints hints = KSV_HINTS_INIT;
  hints.declared = "KOI8-R";
  EXPECT_EQ(charsetOf(bytes, &hints), "KOI8-R");
  hints = KSV_HINTS_INIT;
  hints.charsets = "EUC-KR, windows-1251";
  EXPECT_EQ(charsetOf(in("KOI8-R", "Все люди рождаются"), &hints), "windows-1251");
  hints.charsets = "UTF-8";
  EXPECT_EQ(factsOf(detect(bytes, &hints)).content, KSV_CONTENT_UNKNOWN);
  hints = KSV_HINTS_INIT;
  hints.languages = "el";
  EXPECT_EQ(charsetOf("\xE1\xE2\xE3", &hints), "windows-1253");
  hints.languages = "th";
  EXPECT_EQ(charsetOf("\xE1\xE2\xE3", &hints), "TIS-620");
  hints = KSV_HINTS_INIT;
  hints.file_name = "/tmp/el.cp1253.po/he.iso-8859-8.txt";
  EXPECT_EQ(charsetOf("\xE1\xE2\xE3", &hints), "ISO-8859-8");
  hints.file_name = "no.such-charset.xx";
  EXPECT_EQ(charsetOf("abc", &hints), "ISO-646IRV");
}

// ---- Damage ----

TEST(Judge, TellsWhereADamagedTextIsNone) {
  const std::string once = in("Shift_JIS", kJapaneseText);
  std::string bytes = repeated(once, 4);
  const size_t at = 2 * once.size();
  bytes[at] = '\x82';
  bytes[at + 1] = '\x20';
  for (const Detection& detection : {detect(bytes), detectInPieces(bytes, [] { return 100; })}) {
    const ksv_guess& guess = *ksv_detection_guess(detection.get(), 0);
    EXPECT_STREQ(guess.decode_as, "WINDOWS31J");
    EXPECT_EQ(guess.invalid_offset, at);
  }
  std::string utf8 = repeated(kJapaneseText, 3);
  utf8[300] = '\xFF';  // the third byte of a character
  const Detection detection = detect(utf8);
  EXPECT_STREQ(ksv_detection_guess(detection.get(), 0)->charset, "UTF-8");
  EXPECT_EQ(ksv_detection_guess(detection.get(), 0)->invalid_offset, 298u);
}

// Lines of ASCII are not kept; places behind them are those of the text all the same.
TEST(Judge, TellsWhereADamagedTextIsNoneBehindLinesThatTellNothing) {
  const std::string ascii = repeated("# a line of a program, with no sign of anything else\n", 300);
  const std::string once = in("Shift_JIS", kJapaneseText);
  std::string bytes = ascii + repeated(once, 2) + ascii + repeated(once, 2);
  const size_t at = 2 * ascii.size() + 3 * once.size() + 10;
  bytes[at] = '\x82';
  bytes[at + 1] = '\x20';
  for (const Detection& detection : {detect(bytes), detectInPieces(bytes, [] { return 5000; })}) {
    const ksv_guess& guess = *ksv_detection_guess(detection.get(), 0);
    EXPECT_STREQ(guess.decode_as, "WINDOWS31J");
    EXPECT_EQ(guess.invalid_offset, at);
  }
}

TEST(Judge, TakesABrokenCharacterAtTheEndForNoUtf8) {
  EXPECT_EQ(charsetOf("Datentr\xE4"), "ISO-8859-1");
  EXPECT_EQ(charsetOf("Le style utilis\xE9"), "ISO-8859-1");
  // Where the text is not complete it may be one.
  const Detector fed = detector();
  ASSERT_EQ(ksv_detector_feed(fed.get(), "\xE5\xB1\xB1\xE8\xB7\xAF\xE3", 7, nullptr, nullptr),
            KSV_OK);
  EXPECT_EQ(charsetOf(verdict(fed, false)), "UTF-8");
  // Also where nothing else is above ASCII.
  for (const std::string text : {"abc\xC3\xA9 \xC3", "\xE3\x81", "\xC3\x83\xC2", "a\n\xF0\x9F"}) {
    const Detector other = detector();
    ASSERT_EQ(ksv_detector_feed(other.get(), text.data(), text.size(), nullptr, nullptr), KSV_OK);
    EXPECT_EQ(charsetOf(verdict(other, false)), "UTF-8");
  }
}

// ---- Streams ----

TEST(Judge, FindsTheSameHoweverATextIsCut) {
  std::mt19937 random(11);
  for (const char* const charset : {"Shift_JIS", "EUC-JP", "UTF-8", "UTF-16LE", "ISO-2022-JP"}) {
    std::string text = in(charset, repeated(kJapaneseText, 60));
    if (*charset != 'U') text += repeated("ascii only\n", 500);
    const std::string whole = allOf(detectInPieces(text, [&] { return text.size(); }));
    EXPECT_EQ(allOf(detectInPieces(text, [] { return 1; })), whole) << charset;
    EXPECT_EQ(allOf(detectInPieces(text, [] { return 4097; })), whole) << charset;
    for (int i = 0; i < 20; ++i)
      EXPECT_EQ(allOf(detectInPieces(text, [&] { return 1 + random() % 700; })), whole) << charset;
  }
}

TEST(Judge, IsSettledAfterSomeKilobytesAndNotByAscii) {
  const std::string japanese = repeated(in("EUC-JP", kJapaneseText), 400);
  const Detector fed = detector();
  int settled = 0;
  ASSERT_EQ(ksv_detector_feed(fed.get(), japanese.data(), 1000, &settled, nullptr), KSV_OK);
  EXPECT_EQ(settled, 0);
  ASSERT_EQ(ksv_detector_feed(fed.get(), japanese.data() + 1000, 15000, &settled, nullptr), KSV_OK);
  EXPECT_EQ(settled, 1);
  const Detection detection = verdict(fed, false);
  EXPECT_EQ(charsetOf(detection), "EUC-JP");
  EXPECT_EQ(factsOf(detection).settled, 1);
  EXPECT_LT(factsOf(detection).bytes, 16000u);

  const std::string ascii(100000, 'a');
  const Detector other = detector();
  ASSERT_EQ(ksv_detector_feed(other.get(), ascii.data(), ascii.size(), &settled, nullptr), KSV_OK);
  EXPECT_EQ(settled, 0);
}

TEST(Judge, IsNotSettledWhereItIsNotSure) {
  std::mt19937 random(17);
  for (int i = 0; i < 60; ++i) {
    std::string text;
    while (text.size() < 9000) {
      text += static_cast<char>(0xA1 + random() % 94);
      if (random() % (3 + static_cast<unsigned>(i) % 9) == 0) text += "word ";
    }
    const Detector fed = detector();
    int settled = 0;
    ASSERT_EQ(ksv_detector_feed(fed.get(), text.data(), text.size(), &settled, nullptr), KSV_OK);
    const Detection detection = verdict(fed, false);
    const ksv_guess* const guess = ksv_detection_guess(detection.get(), 0);
    const bool isSure = guess == nullptr || guess->confidence >= 0.999;
    EXPECT_LE(settled, isSure ? 1 : 0);
  }
}

TEST(Judge, StaysWithItsGuessWhenMoreOfTheTextFollows) {
  for (const WrittenText& written : kWrittenTexts)
    for (const std::string& charset : words(written.charsets)) {
      if (charset == "ISO-2022-KR") continue;
      const std::string once = in(charset.c_str(), std::string(written.utf8) + "\n");
      const std::string first = charsetOf(once);
      for (const size_t times : {3, 20, 200})
        EXPECT_EQ(charsetOf(repeated(once, times)), first) << charset << ' ' << written.language;
    }
}

TEST(Judge, ReadsFiles) {
  const std::string path = testing::TempDir() + "ksv_judge_test.txt";
  const std::string bytes = in("KOI8-R", kWrittenTexts[11].utf8);
  std::ofstream(path, std::ios::binary) << bytes;
  ksv_detection* detection = nullptr;
  ksv_error error;
  EXPECT_EQ(ksv_detect_file(path.c_str(), nullptr, &detection, &error), KSV_OK) << error.message;
  EXPECT_EQ(firstOf(Detection(detection)), "KOI8-R, KOI8-R, ru");
  ASSERT_EQ(std::remove(path.c_str()), 0);
  EXPECT_EQ(ksv_detect_file(path.c_str(), nullptr, &detection, &error), KSV_SYSTEM);
  EXPECT_EQ(detection, nullptr);
  EXPECT_NE(std::string(error.message).find("ksv_judge_test.txt"), std::string::npos);
}

TEST(Judge, RefusesWhatIsNoArgument) {
  ksv_detection* detection = nullptr;
  EXPECT_EQ(ksv_detect(nullptr, 1, nullptr, &detection, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_detect("a", 1, nullptr, nullptr, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_detect_file(nullptr, nullptr, &detection, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_detector_new(nullptr, nullptr, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_detector_feed(nullptr, "a", 1, nullptr, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_detector_verdict(nullptr, 1, &detection, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_segments("a", 1, nullptr, nullptr, nullptr, nullptr), KSV_BAD_ARGUMENT);
  EXPECT_EQ(ksv_repair(nullptr, "a", 1, nullptr, nullptr, nullptr, nullptr), KSV_BAD_ARGUMENT);
  ksv_detection_free(nullptr);
  ksv_detector_free(nullptr);
  EXPECT_EQ(ksv_detection_count(nullptr), 0u);
}

TEST(Judge, ConfidencesFallDownTheRanking) {
  const Detection detection = detect("caf\xE9 \x82t\x82");
  double before = 1;
  for (size_t i = 0; i < ksv_detection_count(detection.get()); ++i) {
    const double confidence = ksv_detection_guess(detection.get(), i)->confidence;
    EXPECT_LE(confidence, before);
    EXPECT_GT(confidence, 0);
    before = confidence;
  }
  EXPECT_GT(ksv_detection_count(detection.get()), 1u);
}

// ---- Segments ----

struct Part {
  uint64_t offset;
  uint64_t length;
  std::string charset;
  bool operator==(const Part&) const = default;
};

void PrintTo(const Part& part, std::ostream* out) {
  *out << part.charset << " at " << part.offset << ", " << part.length << " bytes";
}

std::vector<Part> partsOf(std::string_view text) {
  ksv_segment* segments = nullptr;
  size_t count = 0;
  ksv_error error;
  EXPECT_EQ(ksv_segments(text.data(), text.size(), nullptr, &segments, &count, &error), KSV_OK)
      << error.message;
  std::vector<Part> parts;
  for (size_t i = 0; i < count; ++i)
    parts.push_back({segments[i].offset, segments[i].length, named(segments[i].charset)});
  ksv_free(segments);
  return parts;
}

TEST(Segments, FindsWhereATextChangesItsCharset) {
  const std::string utf8 = repeated(kJapaneseText, 2);
  const std::string sjis = in("Shift_JIS", utf8);
  const std::string euc = in("EUC-JP", utf8);
  const std::string ascii = "Date: today\nSubject: none\n";
  EXPECT_EQ(
      partsOf(utf8 + ascii + sjis + ascii + euc),
      (std::vector<Part>{{0, utf8.size() + ascii.size(), "UTF-8"},
                         {utf8.size() + ascii.size(), sjis.size() + ascii.size(), "Shift_JIS"},
                         {utf8.size() + 2 * ascii.size() + sjis.size(), euc.size(), "EUC-JP"}}));
  const std::string russian = in("windows-1251", kWrittenTexts[11].utf8) + "\n";
  EXPECT_EQ(partsOf(ascii + utf8 + russian),
            (std::vector<Part>{{0, ascii.size() + utf8.size(), "UTF-8"},
                               {ascii.size() + utf8.size(), russian.size(), "windows-1251"}}));
}

TEST(Segments, AreOneForATextInOneCharset) {
  for (const WrittenText& written : kWrittenTexts)
    for (const std::string& charset : words(written.charsets)) {
      const std::string text = repeated(in(charset.c_str(), std::string(written.utf8) + "\n"), 3);
      EXPECT_EQ(partsOf(text), (std::vector<Part>{{0, text.size(), charsetOf(text)}})) << charset;
    }
  EXPECT_EQ(partsOf(""), std::vector<Part>());
  EXPECT_EQ(partsOf("ascii\n"), (std::vector<Part>{{0, 6, "ISO-646IRV"}}));
}

// A word says less than a line, and what follows it is in the same charset.
TEST(Segments, AreOneForListsOfWords) {
  for (const char* const charset : {"windows-1251", "KOI8-R", "IBM866", "ISO-8859-5"}) {
    std::string list = in(charset, kWrittenTexts[11].utf8);
    std::replace(list.begin(), list.end(), ' ', '\n');
    EXPECT_EQ(partsOf(list), (std::vector<Part>{{0, list.size(), charset}}));
  }
  std::string polish = in("ISO-8859-2", kWrittenTexts[6].utf8);
  std::replace(polish.begin(), polish.end(), ' ', '\n');
  EXPECT_EQ(partsOf(polish), (std::vector<Part>{{0, polish.size(), "ISO-8859-2"}}));
}

TEST(Segments, HoldTheWholeTextWhateverItIs) {
  std::mt19937 random(3);
  for (int i = 0; i < 300; ++i) {
    std::string text;
    for (size_t lines = random() % 12; lines > 0; --lines) {
      const WrittenText& written = kWrittenTexts[random() % std::size(kWrittenTexts)];
      const std::vector<std::string> charsets = words(written.charsets);
      text +=
          in(charsets[random() % charsets.size()].c_str(), written.utf8).substr(0, random() % 90);
      if (random() % 4 != 0) text += '\n';
    }
    uint64_t end = 0;
    for (const Part& part : partsOf(text)) {
      EXPECT_EQ(part.offset, end);
      EXPECT_GT(part.length, 0u);
      end += part.length;
    }
    EXPECT_EQ(end, text.size());
  }
}

// ---- Texts that were written as UTF-8 twice ----

struct Repaired {
  std::string text;
  ksv_repair_counts counts;
};

Repaired repair(const std::string& text, const char* misreadAs = nullptr) {
  char* output = nullptr;
  size_t length = 0;
  Repaired repaired{};
  ksv_error error;
  EXPECT_EQ(
      ksv_repair(misreadAs, text.data(), text.size(), &output, &length, &repaired.counts, &error),
      KSV_OK)
      << error.message;
  if (output != nullptr) repaired.text.assign(output, length);
  ksv_free(output);
  return repaired;
}

TEST(Repair, UndoesUtf8ThatWasTakenForAnotherCharset) {
  const std::string german = "Würde und Brüderlichkeit\nGewissen\nÄrger, Öl und Übermut\n";
  const std::string misread = convert("ISO-8859-1", "UTF-8", german).text;
  EXPECT_STREQ(factsOf(detect(misread)).misread_as, "windows-1252");
  const Repaired repaired = repair(misread);
  EXPECT_EQ(repaired.text, german);
  EXPECT_EQ(repaired.counts.repaired, 2u);
  EXPECT_EQ(repaired.counts.lost + repaired.counts.ambiguous, 0u);
  EXPECT_EQ(repaired.counts.first_left, KSV_NO_OFFSET);

  // As code page 932, in which all of these bytes are characters.
  const std::string japanese = "ソフトの山\n";
  const Converted asShiftJis = convert("WINDOWS31J", "UTF-8", japanese);
  ASSERT_EQ(asShiftJis.result, KSV_OK) << asShiftJis.message;
  EXPECT_EQ(repair(asShiftJis.text, "Shift_JIS").text, japanese);
}

TEST(Repair, LeavesTextsAloneThatAreWhatTheyAre) {
  for (const WrittenText& written : kWrittenTexts) {
    EXPECT_EQ(factsOf(detect(written.utf8)).misread_as, nullptr) << written.language;
    const Repaired repaired = repair(written.utf8);
    EXPECT_EQ(repaired.text, written.utf8) << written.language;
    EXPECT_EQ(repaired.counts.repaired, 0u);
    EXPECT_EQ(repaired.counts.misread_as, nullptr);
  }
}

TEST(Repair, CountsLinesThatLostBytesOnTheWay) {
  // "Würde" and "Öl", taken for Latin-1, and U+FFFD in the place of the second byte of the last
  // one.
  const std::string text =
      "W\xC3\x83\xC2\xBCrde und G\xC3\x83\xC2\xBCte, \xC3\x83\xEF\xBF\xBDl\nplain\n";
  const Repaired repaired = repair(text);
  EXPECT_EQ(repaired.text, text);
  EXPECT_EQ(repaired.counts.repaired, 0u);
  EXPECT_EQ(repaired.counts.lost, 1u);
  EXPECT_EQ(repaired.counts.first_left, 0u);
  EXPECT_EQ(repaired.counts.first_left_line, 1u);
}

// D0 9E in windows-1252 and D0 B8 in ISO-8859-15: two letters of Russian, one as likely as the
// other.
TEST(Repair, LeavesLinesAloneThatMayHaveBeenTwoThings) {
  const std::string text = "\xC3\x90\xC5\xBE\n";
  const Repaired left = repair(text);
  EXPECT_EQ(left.text, text);
  EXPECT_EQ(left.counts.ambiguous, 1u);
  EXPECT_EQ(left.counts.repaired, 0u);
  EXPECT_EQ(left.counts.first_left, 0u);
  EXPECT_EQ(repair(text, "windows-1252").text, "\xD0\x9E\n");
  EXPECT_EQ(repair(text, "ISO-8859-15").text, "\xD0\xB8\n");
  // A longer line shows which it was: "straße, müde".
  EXPECT_EQ(repair("stra\xC3\x83\xC5\xB8"
                   "e, m\xC3\x83\xC2\xBC"
                   "de\n")
                .text,
            "straße, müde\n");
}

TEST(Repair, RefusesWhatIsNoUtf8AndWhatNamesNoCharset) {
  char* output = nullptr;
  size_t length = 0;
  ksv_error error;
  EXPECT_EQ(ksv_repair(nullptr, "ab\xFF", 3, &output, &length, nullptr, &error), KSV_INVALID);
  EXPECT_EQ(error.offset, 2u);
  EXPECT_EQ(ksv_repair("no such", "ab", 2, &output, &length, nullptr, &error), KSV_UNKNOWN_CHARSET);
  EXPECT_EQ(output, nullptr);
}

}  // namespace
}  // namespace ksv_kit_tests
