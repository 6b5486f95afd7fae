// In which charset a text is read that -f does not name, and when it is refused.

#include "cli/text/charset_judge.h"

#include <optional>
#include <string>
#include <vector>

#include "cli/system/failure.h"
#include "cli/text/text_conversion.h"
#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

using ksv_cli::CharsetJudge;
using ksv_cli::JudgedText;
using ksv_cli::Language;
using ksv_cli::TextLanguage;
using ksv_kit::CharsetNames;

// Texts of the languages: the opening of a novel in the public domain, and sentences that
// were made for this.
struct Sample {
  TextLanguage language;
  const char* text;
  std::vector<std::string> charsets;
};
const std::vector<Sample>& samples() {
  static const std::vector<Sample> all = {
      {Language::kJapanese,
       "山路を登りながら、こう考えた。智に働けば角が立つ。情に棹させば流される。意地を通せば窮屈だ"
       "。"
       "とかくに人の世は住みにくい。住みにくさが高じると、安い所へ引き越したくなる。"
       "どこへ越しても住みにくいと悟った時、詩が生れて、画が出来る。ファイルを開いて、テキストを保"
       "存します。",
       {"WINDOWS31J", "EUC-JP", "UTF-8"}},
      {Language::kSimplifiedChinese,
       "今天天气很好，我们打算去公园散步。他把这本书从头到尾看了一遍，觉得非常有意思。"
       "请在打开文件之前先保存您的工作，否则所有没有保存的内容都会丢失。"
       "这个程序可以把一种编码的文本转换成另一种编码，而且不会改变文本的意思。",
       {"ChineseGBK", "UTF-8"}},
      {Language::kTraditionalChinese,
       "今天天氣很好，我們打算去公園散步。他把這本書從頭到尾看了一遍，覺得非常有意思。"
       "請在開啟檔案之前先儲存您的工作，否則所有沒有儲存的內容都會遺失。"
       "這個程式可以把一種編碼的文字轉換成另一種編碼，而且不會改變文字的意思。",
       {"ChineseBIG5", "UTF-8"}},
      {Language::kKorean,
       "오늘은 날씨가 아주 좋아서 우리는 공원으로 산책을 갔습니다. 그는 이 책을 처음부터 끝까지 "
       "읽었고 "
       "매우 재미있다고 생각했습니다. 파일을 열기 전에 작업한 내용을 먼저 저장하십시오. "
       "이 프로그램은 글을 다른 문자 인코딩으로 바꾸지만 그 뜻은 바꾸지 않습니다.",
       {"KoreanKSC", "UTF-8"}},
      {std::nullopt,
       "Сегодня очень хорошая погода, и мы собираемся погулять в парке. Он прочитал эту книгу от "
       "начала до конца и нашёл её очень интересной. Перед тем как открыть файл, сохраните свою "
       "работу, иначе всё, что не сохранено, будет потеряно.",
       {"KOI8-R", "windows-1251", "ISO-8859-5", "UTF-8"}},
      {std::nullopt,
       "Heute ist schönes Wetter, und wir möchten später über die Brücke in den Park gehen. Er hat "
       "das Büchlein von Anfang bis Ende gelesen und fand es außerordentlich schön. Natürlich "
       "müssen Änderungen vor dem Öffnen größerer Dateien gesichert werden.",
       {"ISO-8859-1", "windows-1252", "UTF-8"}},
      {std::nullopt,
       "วันนี้อากาศดีมากเราจึงจะไปเดินเล่นที่สวนสาธารณะ เขาอ่านหนังสือเล่มนี้ตั้งแต่ต้นจนจบและเห็นว่าน่าสนใจมาก "
       "โปรดบันทึกงานของคุณก่อนเปิดแฟ้ม",
       {"TIS-620", "UTF-8"}},
  };
  return all;
}

class TextSink : public ksv_cli::ByteSink {
 public:
  void write(const uint8_t* bytes, size_t size) override {
    text.append(reinterpret_cast<const char*>(bytes), size);
  }
  std::string text;
};

class CharsetOfText : public CommandTest {
 protected:
  CharsetOfText() : names_(converting().charsets()) {}

  // The text as UTF-8, read as it was judged; none when it was refused.
  std::optional<std::string> read(const std::string& text, TextLanguage language,
                                  bool guess = false) {
    write("text", text);
    const CharsetJudge judge(names_, language, guess);
    try {
      ksv_cli::RereadableText opened(path("text"));
      const JudgedText judged = judge.judge(opened);
      ksv_cli::ConversionSettings settings;
      settings.source = judged.chosen.charset;
      settings.target = *names_.find("UTF-8");
      TextSink sink;
      ksv_cli::convertText(settings, *judged.source, sink);
      reason_ = judged.chosen.reason;
      return sink.text;
    } catch (const ksv_cli::Failure& failure) {
      reason_ = failure.what();
      return std::nullopt;
    }
  }

  std::string charsetOf(const std::string& text, TextLanguage language = std::nullopt) {
    read(text, language);
    return reason_;
  }

  struct Tally {
    int right = 0;
    int refused = 0;
  };

  // Judges pieces of so many bytes, from each fourth character on.
  Tally judgePieces(const Sample& sample, const std::string& charset, TextLanguage language,
                    size_t size) {
    Tally tally;
    const std::vector<std::string> characters = charactersOf(sample.text);
    for (size_t begin = 0; begin < characters.size(); begin += 4) {
      std::string text;
      std::string coded;
      for (size_t i = begin; i < characters.size(); ++i) {
        const std::string longer = coded + encoded(charset, characters[i]);
        if (longer.size() > size) break;
        coded = longer;
        text += characters[i];
      }
      if (coded.size() + 3 < size) break;
      if (text == coded && charset != "UTF-8") continue;  // ASCII alone
      const std::optional<std::string> got = read(coded, language);
      EXPECT_EQ(got.value_or(text), text) << charset << ": " << reason_;
      ++(got ? tally.right : tally.refused);
    }
    return tally;
  }

  static std::vector<std::string> charactersOf(const std::string& utf8) {
    std::vector<std::string> characters;
    for (const char c : utf8)
      if ((static_cast<uint8_t>(c) & 0xC0) == 0x80)
        characters.back() += c;
      else
        characters.emplace_back(1, c);
    return characters;
  }

  CharsetNames names_;
  std::string reason_;
};

// Whatever language is named, a text of 32 bytes comes out as itself or is refused.
TEST_F(CharsetOfText, is_never_taken_for_another_one) {
  for (const Sample& sample : samples())
    for (const std::string& charset : sample.charsets)
      for (const TextLanguage& language :
           {TextLanguage(), TextLanguage(Language::kJapanese), TextLanguage(Language::kKorean),
            TextLanguage(Language::kSimplifiedChinese), sample.language})
        judgePieces(sample, charset, language, 32);
}

TEST_F(CharsetOfText, is_found_where_its_language_is_known) {
  for (const Sample& sample : samples())
    for (const std::string& charset : sample.charsets) {
      if (!sample.language) continue;
      for (const size_t size : {16u, 32u, 64u}) {
        const Tally tally = judgePieces(sample, charset, sample.language, size);
        EXPECT_GT(tally.right, 10);
        EXPECT_EQ(tally.refused, 0) << charset << " " << size;
      }
    }
}

TEST_F(CharsetOfText, is_mostly_found_without_a_language) {
  for (const Sample& sample : samples())
    for (const std::string& charset : sample.charsets) {
      if (!sample.language) continue;
      const Tally tally = judgePieces(sample, charset, std::nullopt, 64);
      EXPECT_LE(20 * tally.refused, tally.right) << charset << ": " << tally.refused;
    }
}

TEST_F(CharsetOfText, of_one_byte_a_character_is_found_in_a_whole_text) {
  for (const Sample& sample : samples())
    for (const std::string& charset : sample.charsets) {
      if (sample.language) continue;
      EXPECT_EQ(read(encoded(charset, sample.text), std::nullopt), sample.text)
          << charset << ": " << reason_;
      // Nor is it taken for something else where another language is said.
      const std::string coded = encoded(charset, sample.text);
      EXPECT_EQ(read(coded, Language::kJapanese).value_or(sample.text), sample.text) << reason_;
    }
}

TEST_F(CharsetOfText, is_what_its_mark_says) {
  EXPECT_EQ(charsetOf("\xEF\xBB\xBF\x82\xA0"), "invalid UTF-8 (0x82) at byte offset 3");
  EXPECT_EQ(charsetOf(bytes({0xFE, 0xFF, 0x65, 0xE5})),
            "read as UTF-16BE: it begins with a byte-order mark");
  EXPECT_EQ(charsetOf(bytes({0xFF, 0xFE, 0, 0, 0xE5, 0x65, 0, 0})),
            "read as UTF-32LE: it begins with a byte-order mark");
}

TEST_F(CharsetOfText, is_what_it_declares_if_all_of_it_is_valid_so) {
  const std::string html = "<html><meta charset='Shift_JIS'><p>";
  EXPECT_EQ(charsetOf(html + "\xB1\xB2").find("read as WINDOWS31J, which holds Shift_JIS: "), 0u)
      << reason_;
  EXPECT_EQ(read(html + "\x87\x40", std::nullopt), html + "①");
  EXPECT_EQ(charsetOf("<?xml version=\"1.0\" encoding=\"KOI8-R\"?>\xC1"),
            "read as KOI8-R: an XML declaration says so, and its bytes are that");
  // Not all of it is valid so.
  EXPECT_EQ(charsetOf("<?xml version=\"1.0\" encoding=\"US-ASCII\"?><a>日本語です</a>"),
            "read as UTF-8: all of its bytes are UTF-8");
  // Read as bytes, it cannot be in units of two.
  EXPECT_EQ(charsetOf("<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>é</a>\n"),
            "read as UTF-8: all of its bytes are UTF-8");
}

TEST_F(CharsetOfText, with_escape_sequences_is_mail) {
  const std::string mail =
      "read as CP50220, which holds ISO-2022-JP: it has the escape sequences of ISO-2022-JP";
  EXPECT_EQ(charsetOf("a\x1B$B$\"\x1B(Bb"), mail);
  EXPECT_EQ(read("\x1B$B-!\x1B(B", std::nullopt), "①");
  EXPECT_EQ(charsetOf("\x1B$(Q$\"\x1B(B"),
            "read as ISO-2022-JP-2004: it has the escape sequences of ISO-2022-JP-2004");
  // Damaged mail is told where it is damaged.
  EXPECT_EQ(charsetOf("\x1B$B$\"$\x1B(B"), "invalid CP50220 (0x24) at byte offset 5");
  // What a terminal writes is no mail.
  EXPECT_EQ(charsetOf("\x1B[1mbold\x1B(B\x1B[m\n"),
            "read as UTF-8, which holds ISO-646IRV: all of its bytes are ASCII");
}

TEST_F(CharsetOfText, of_ascii_alone_is_ascii) {
  EXPECT_EQ(charsetOf("plain text\r\n", Language::kJapanese),

            "read as UTF-8, which holds ISO-646IRV: all of its bytes are ASCII");
}

TEST_F(CharsetOfText, with_a_NUL_is_no_UTF_16_for_that) {
  const std::string text = encoded("WINDOWS31J", "これは日本語の文章です。");
  const std::string nul(1, '\0');
  for (const TextLanguage& language : {TextLanguage(), TextLanguage(Language::kJapanese)}) {
    EXPECT_EQ(read(text + nul + nul, language), "これは日本語の文章です。" + nul + nul) << reason_;
    EXPECT_EQ(read(nul + text + nul, language), nul + "これは日本語の文章です。" + nul) << reason_;
  }
}

// Control codes that texts do not have do not make it something else.
TEST_F(CharsetOfText, with_odd_controls_is_what_it_was) {
  const std::string nul(1, '\0');
  for (const std::string odd : {"\x01", "\x7F", "\x02\x03"}) {
    EXPECT_EQ(read("abc" + odd + "def\n", std::nullopt), "abc" + odd + "def\n") << reason_;
    EXPECT_EQ(read("日本語" + odd + "です\n", std::nullopt), "日本語" + odd + "です\n") << reason_;
  }
  EXPECT_EQ(read("a line\n" + nul + "another line\n" + nul, std::nullopt),
            "a line\n" + nul + "another line\n" + nul)
      << reason_;
}

TEST_F(CharsetOfText, in_UTF_16_without_a_mark_is_found_by_its_blanks) {
  for (const std::string charset : {"UTF-16LE", "UTF-16BE"})
    for (const std::string text :
         {"plain English text\n", "これは日本語の 文章です。\n", "Привет, мир\n"})
      EXPECT_EQ(read(converting().inPieces("UTF-8", charset, text, 64).output, std::nullopt), text)
          << charset << ": " << reason_;
}

// Of two bytes in a text of one screen nothing is known; UTF-8 by chance is not believed.
TEST_F(CharsetOfText, that_is_UTF_8_by_chance_is_refused) {
  for (const TextLanguage& language :
       {TextLanguage(), TextLanguage(Language::kSimplifiedChinese)}) {
    EXPECT_EQ(read("pager\n\xD1\xA1", language), std::nullopt) << reason_;  // 选
    EXPECT_EQ(read("only <\xE1\xBE\xA1\xE0\xA1\xA8>", language), std::nullopt)
        << reason_;  // แพกเกจ
    EXPECT_EQ(read("caf\xC3\xA9 au lait", language), "café au lait") << reason_;
    for (const std::string sign :
         {"©", "°", "µ", "×", "é", "…", "—", "’", "→", "€", "日", "한", "あ", "。"})
      EXPECT_EQ(read("It says (" + sign + ") here.", language), "It says (" + sign + ") here.")
          << reason_;
  }
}

TEST_F(CharsetOfText, is_guessed_where_that_is_asked_for) {
  const std::string text = "\xB1\xB2";  // a character or two in many charsets
  EXPECT_EQ(read(text, std::nullopt), std::nullopt);
  EXPECT_NE(read(text, std::nullopt, true), std::nullopt);
  EXPECT_EQ(read(encoded("EUC-JP", "日本"), Language::kJapanese), "日本");
}

TEST_F(CharsetOfText, holds_the_characters_of_vendors) {
  EXPECT_EQ(read(bytes({0xAD, 0xA1, 0xA4, 0xF2, 0xC6, 0xC9, 0xA4, 0xE0}), Language::kJapanese),
            "①を読む")
      << reason_;
}

// The characters behind the first 4 MiB count like those in front.
TEST_F(CharsetOfText, is_judged_by_all_of_it) {
  const std::string text(5 * 1024 * 1024, 'a');
  EXPECT_EQ(charsetOf(text + encoded("WINDOWS31J", "これは日本語の文章です。\n")),
            "read as WINDOWS31J, which holds Shift_JIS: its characters are those of text in ja");
  EXPECT_EQ(read(text + "これは日本語の文章です。\xFF", std::nullopt), std::nullopt) << reason_;
}

class ConvertJudged : public CommandTest {
 protected:
  const std::string shiftJis_ = encoded("WINDOWS31J", "これは日本語の文章です。\r\n");
  const std::string unclear_ = "\xB1\xB2";  // a character or two in many charsets
};

TEST_F(ConvertJudged, takes_the_language_of_the_option_before_that_of_the_user) {
  setEnvironment("LANG", "ko_KR.UTF-8");
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--detect-language", "ja"}, unclear_).out, "渦");
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--detect-language", "any"}, unclear_).status, 1);
  setEnvironment("LC_ALL", "ja_JP.UTF-8");
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8"}, unclear_).out, "渦");
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--detect-language", "fr"}, unclear_).status, 2);
}

TEST_F(ConvertJudged, leaves_a_file_that_is_not_clear_as_it_is) {
  setEnvironment("LANG", "C");
  write("a", unclear_);
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--in-place", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("ksv: a: may be "), 0u) << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
  EXPECT_EQ(read("a"), unclear_);
  EXPECT_EQ(files(), (std::vector<std::string>{"a"}));
}

// 16 bytes of Japanese in UTF-8 under a Japanese LANG were taken for Shift_JIS once.
TEST_F(ConvertJudged, never_takes_short_utf8_for_ShiftJis) {
  setEnvironment("LANG", "ja_JP.UTF-8");
  write("a", "は、次の");
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--in-place", "a"}).status, 0);
  EXPECT_EQ(read("a"), "は、次の");
}

TEST_F(ConvertJudged, reads_the_sample_of_the_documents_without_a_language) {
  setEnvironment("LANG", "C");
  write("a", shiftJis_);
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "a"});
  EXPECT_EQ(outcome.out, "これは日本語の文章です。\r\n") << outcome.err;
}

TEST_F(ConvertJudged, detects_as_it_always_did_where_that_is_asked_for) {
  setEnvironment("LANG", "ja_JP.UTF-8");
  write("a", bytes({0xC6, 0xFC, 0xCB, 0xDC, 0xA4, 0xB3, 0xA4, 0xEC, 0xF4, 0xA6}));
  EXPECT_EQ(ksv({"convert", "--classic", "-t", "UTF-8", "a"}).err,
            "ksv: a: read as EUC-JP: its bytes fit best\n");
  setEnvironment("LANG", "en_US.UTF-8");
  write("b", bytes({0xB0, 0xA1, 0xC4, 0xE3, 0xD0, 0xD0, ' '}));
  EXPECT_EQ(ksv({"convert", "--classic", "-t", "UTF-8", "b"}).err,
            "ksv: b: may be EUC-JP, Shift_JIS, ChineseGBK, ChineseBIG5 or KoreanKSC; --from "
            "names one of them\n");
  EXPECT_EQ(ksv({"convert", "--classic", "--guess", "-t", "UTF-8", "b"}).status, 2);
}

// More than is kept in memory, from a pipe.
TEST_F(ConvertJudged, reads_a_long_pipe_as_a_whole) {
  setEnvironment("LANG", "C");
  const std::string ascii(6 * 1024 * 1024, 'a');
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "-o", "out"}, ascii + shiftJis_);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(read("out") == ascii + "これは日本語の文章です。\r\n");
}

}  // namespace
}  // namespace ksv_cli_tests
