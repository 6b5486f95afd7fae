// Texts, names and values that are seldom met, as the parts of the command see them.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "cli/system/escapes.h"
#include "cli/system/failure.h"
#include "cli/system/files.h"
#include "cli/system/streams.h"
#include "cli/text/charset_judge.h"
#include "cli/text/detection.h"
#include "command.h"
#include "in_process.h"
#include "kit/charsets/name_matching.h"
#include "kit/judge/declared_charset.h"
#include "kit/text/resynchronisation.h"
#include "ksv_detect.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

using ksv_cli::Detection;
using ksv_cli::Language;
using ksv_kit::ByteOrder;
using ksv_kit::CharsetNames;

TEST(RareDeclaration, is_none_unless_it_is_whole) {
  for (const char* text :
       {"<meta charset", "<meta charset>", "<meta charset=>", "<meta charset='utf-8>",
        "<meta charset x>", "<metacharset=utf-8>", "<!-- <meta charset=utf-8>",
        "<?xmlencoding='a'?>", "<?xml encoding='a'", "<?xml version='1.0'?>",
        "<?xml encoding=utf-8?>", "<?xml encoding?>", "<?xml encoding='utf-8?>"}) {
    EXPECT_EQ(ksv_kit::judge::declaredInMarkup(text), std::nullopt) << text;
  }
}

TEST(RareDeclaration, is_the_first_that_names_something) {
  EXPECT_EQ(ksv_kit::judge::declaredInMarkup("<meta charset='' charset = KOI8-R >"), "koi8-r");
  EXPECT_EQ(ksv_kit::judge::declaredInMarkup("<meta charset x charset=a;b>"), "a");
  EXPECT_EQ(ksv_kit::judge::declaredInMarkup("<!-- <meta charset=a> --><meta\tcharset=\"b\">"),
            "b");
  EXPECT_EQ(ksv_kit::judge::declaredInMarkup("<?xml version='1.0' encoding = 'c'?>"), "c");
}

TEST(RareLanguage, has_the_names_of_detection) {
  EXPECT_EQ(ksv_cli::textLanguageNamed("ja"), Language::kJapanese);
  EXPECT_EQ(ksv_cli::textLanguageNamed("zh-cn"), Language::kSimplifiedChinese);
  EXPECT_EQ(ksv_cli::textLanguageNamed("zh-tw"), Language::kTraditionalChinese);
  EXPECT_EQ(ksv_cli::textLanguageNamed("ko"), Language::kKorean);
  EXPECT_EQ(ksv_cli::textLanguageNamed("en"), std::nullopt);
}

// The environment of the user, as it was before when the object goes.
class UsersLocale {
 public:
  UsersLocale() {
    for (const char* name : kNames) before_.push_back(ksv::test::variable(name));
  }
  ~UsersLocale() {
    for (size_t i = 0; i < before_.size(); ++i) ksv::test::setVariable(kNames[i], before_[i]);
  }

  ksv_cli::TextLanguage languageOf(const char* all, const char* type, const char* language) const {
    const char* values[] = {all, type, language};
    for (size_t i = 0; i < std::size(kNames); ++i) ksv::test::setVariable(kNames[i], values[i]);
    return ksv_cli::textLanguageOfUser();
  }

 private:
  static constexpr const char* kNames[] = {"LC_ALL", "LC_CTYPE", "LANG"};
  std::vector<std::optional<std::string>> before_;
};

TEST(RareLanguage, of_the_user_is_that_of_the_first_variable_that_is_set) {
  const UsersLocale users;
  EXPECT_EQ(users.languageOf("", "", "ja_JP.UTF-8"), Language::kJapanese);
  EXPECT_EQ(users.languageOf("", "ko", "ja_JP"), Language::kKorean);
  EXPECT_EQ(users.languageOf("C", "ko_KR", "ja_JP"), std::nullopt);
  EXPECT_EQ(users.languageOf("", "", ""), std::nullopt);
}

TEST(RareLanguage, of_Chinese_is_told_by_the_place) {
  const UsersLocale users;
  for (const char* place : {"zh_TW", "zh_HK.UTF-8", "zh_MO@x", "zh_Hant", "zh_Hant_TW"})
    EXPECT_EQ(users.languageOf("", "", place), Language::kTraditionalChinese) << place;
  for (const char* place : {"zh_CN.GB18030", "zh_SG", "zh_Hans-CN"})
    EXPECT_EQ(users.languageOf("", "", place), Language::kSimplifiedChinese) << place;
  for (const char* place : {"zh", "zh_XX", "jam", "korean", "zh_CNX"})
    EXPECT_EQ(users.languageOf("", "", place), std::nullopt) << place;
}

const CharsetNames& names() {
  static const CharsetNames all({"utf-8", "utf-16", "iso-10646-ucs-4", "shift_jis", "windows31j",
                                 "euc-jp-fix", "oasys_online", "euc-jp", "gb18030", "koreanksc"});
  return all;
}

size_t badLength(const char* charset, const std::string& text, bool atEnd = false) {
  return ksv_kit::badSequenceLength(names().find(charset).value(),
                                    reinterpret_cast<const uint8_t*>(text.data()), text.size(),
                                    atEnd);
}

TEST(RareBadSequence, is_a_unit_where_characters_are_units) {
  EXPECT_EQ(badLength("iso-10646-ucs-4", "abcdef"), 4u);
  EXPECT_EQ(badLength("iso-10646-ucs-4", "abc"), 0u) << "more may come";
  EXPECT_EQ(badLength("iso-10646-ucs-4", "abc", true), 3u);
  EXPECT_EQ(badLength("euc-jp-fix", "\xB0\xA1\xB0"), 2u);
  EXPECT_EQ(badLength("euc-jp-fix", "\xB0"), 0u);
  EXPECT_EQ(badLength("oasys_online", "\x30\x40\x30"), 2u);
  EXPECT_EQ(badLength("oasys_online", "\x0A\x40\x30"), 1u) << "a line end stands alone";
}

TEST(RareBadSequence, of_UTF8_has_all_bytes_that_only_go_on) {
  EXPECT_EQ(badLength("utf-8", "\xFF\x80"), 2u);
  EXPECT_EQ(badLength("utf-8", "\xE3\x81\x41"), 2u);
  EXPECT_EQ(badLength("utf-8", "\xE3"), 1u);
  EXPECT_EQ(badLength("utf-8", "\xF0\x9F\x98\x41"), 3u);
  EXPECT_EQ(badLength("utf-8", "\x80\x80"), 2u);
}

TEST(RareBadSequence, goes_as_far_as_its_lead_byte_asks) {
  EXPECT_EQ(badLength("euc-jp", "\x8F\xB0\xA1"), 3u);
  EXPECT_EQ(badLength("euc-jp", "\x8F\xB0\x41"), 2u);
  EXPECT_EQ(badLength("euc-jp", "\x8F\xB0"), 0u);
  EXPECT_EQ(badLength("euc-jp", "\x8F\xB0", true), 2u);
  EXPECT_EQ(badLength("euc-jp", "\x8F\x90\xA1"), 2u);
  EXPECT_EQ(badLength("euc-jp", "\x80\xA1"), 1u);
  EXPECT_EQ(badLength("gb18030", "\x81\x30\x81\x30"), 4u);
  EXPECT_EQ(badLength("gb18030", "\x81\x30\x81\x41"), 1u);
  EXPECT_EQ(badLength("gb18030", "\x81\x30\x41"), 1u);
  EXPECT_EQ(badLength("gb18030", "\x81\x30\x81"), 0u);
  EXPECT_EQ(badLength("gb18030", "\x81\x30", true), 1u);
  EXPECT_EQ(badLength("gb18030", "\x81\x40"), 2u);
  EXPECT_EQ(badLength("koreanksc", "\x81\x41"), 2u);
  EXPECT_EQ(badLength("koreanksc", "\x81\x7A"), 2u);
  EXPECT_EQ(badLength("koreanksc", "\x81\x5B"), 1u);
  EXPECT_EQ(badLength("shift_jis", "\x81"), 0u);
  EXPECT_EQ(badLength("shift_jis", "\x81", true), 1u);
}

// The reason for which a text is read as it is, or cannot be.
std::string chosen(uint32_t word, const CharsetNames& all, bool isEmpty = false) {
  try {
    const auto source = ksv_cli::chooseSource({nullptr, Detection{word}, isEmpty}, all);
    const ByteOrder order = source.charset.order;
    return source.reason + (order == ByteOrder::kBig      ? ", big"
                            : order == ByteOrder::kLittle ? ", little"
                                                          : "");
  } catch (const ksv_cli::Failure& failure) {
    return failure.what();
  }
}

TEST(RareDetection, tells_why_a_text_is_read_as_it_is) {
  EXPECT_EQ(chosen(KSV_TEXT_SHIFT_JIS, names()),
            "read as WINDOWS31J, which holds Shift_JIS: its bytes fit best");
  EXPECT_EQ(chosen(KSV_TEXT_SHIFT_JIS, CharsetNames({"shift_jis"})),
            "read as Shift_JIS: its bytes fit best");
  EXPECT_EQ(chosen(KSV_TEXT_UTF16 | KSV_TEXT_MARK, names()),
            "read as UTF-16: it begins with a byte-order mark, little-endian, little");
  EXPECT_EQ(chosen(KSV_TEXT_UCS4 | KSV_TEXT_BIG_ENDIAN, names()),
            "read as ISO-10646-UCS-4: its bytes fit best, big-endian, big");
  EXPECT_EQ(chosen(0, names(), true), "read as UTF-8: it is empty");
}

TEST(RareDetection, tells_why_a_text_cannot_be_read) {
  EXPECT_EQ(chosen(0, names()), "no charset fits its bytes; --from names one");
  EXPECT_EQ(chosen(KSV_TEXT_EUC_JP | KSV_TEXT_KOREAN | KSV_TEXT_SIMPLIFIED_CHINESE, names()),
            "may be EUC-JP, ChineseGBK or KoreanKSC; --from names one of them");
  EXPECT_EQ(chosen(KSV_TEXT_UTF8, CharsetNames({"utf-16"})),
            "is UTF-8, which the charset directory does not have");
}

TEST(RareDetection, has_the_line_ends_and_separators_of_its_word) {
  EXPECT_STREQ(Detection{KSV_TEXT_CR}.lineEnd(), "cr");
  EXPECT_STREQ(Detection{KSV_TEXT_LF}.lineEnd(), "lf");
  EXPECT_STREQ(Detection{KSV_TEXT_CRLF}.lineEnd(), "crlf");
  EXPECT_EQ(Detection{0}.lineEnd(), nullptr);
  EXPECT_EQ(Detection{KSV_TEXT_LINE_SEPARATOR | KSV_TEXT_PARAGRAPH_SEPARATOR}.separators(),
            (std::vector<std::string>{"U+2028", "U+2029"}));
  EXPECT_EQ(Detection{KSV_TEXT_UTF8}.byteOrder(), nullptr);
}

TEST(RareNames, are_near_only_while_something_of_them_is_left) {
  EXPECT_EQ(ksv_kit::nearestNames("x", {"y"}), std::vector<std::string>());
  EXPECT_EQ(ksv_kit::nearestNames("utf-8", {"utf8", "UTF-8", "utf-7"}),
            (std::vector<std::string>{"utf8", "utf-7"}))
      << "two spellings are one name";
  EXPECT_EQ(ksv_kit::nearestNames("iso88591", {"iso88592", "iso88593", "iso88594", "iso88595"}),
            (std::vector<std::string>{"iso88592", "iso88593", "iso88594"}));
}

TEST(RareNames, keep_what_is_no_late_control) {
  using ksv_cli::Backslash;
  EXPECT_EQ(ksv_cli::escaped("\xC2\x85|\xC2\xA0|\xC2|\xC2"
                             "A|\x7F\\",
                             Backslash::kStays),
            "\\u0085|\xC2\xA0|\xC2|\xC2"
            "A|\\x7F\\");
  EXPECT_EQ(ksv_cli::escaped("\\", Backslash::kIsDoubled), "\\\\");
}

TEST(RareFiles, are_the_same_where_all_that_tells_them_apart_is) {
  using ksv_cli::platform::FileKind;
  ksv_cli::platform::FileFacts file;
  EXPECT_FALSE(file.isSameFileAs(file)) << "there is none";
  file.kind = FileKind::kRegular;
  EXPECT_TRUE(file.isSameFileAs(file) && file.isSameTextAs(file));
  auto other = file;
  other.kind = FileKind::kOther;
  EXPECT_FALSE(file.isSameFileAs(other));
  other = file;
  other.device = 1;
  EXPECT_FALSE(file.isSameFileAs(other));
  other = file;
  other.number = 1;
  EXPECT_FALSE(file.isSameFileAs(other) || file.isSameTextAs(other));
  other = file;
  other.size = 1;
  EXPECT_TRUE(file.isSameFileAs(other));
  EXPECT_FALSE(file.isSameTextAs(other));
  other = file;
  other.writeTime = 1;
  EXPECT_FALSE(file.isSameTextAs(other));
}

// In a directory of few charsets, whose names are all that is asked for here.
class RareJudgement : public CommandTest {
 protected:
  // How a text is read, or why it is not.
  std::string judged(const std::vector<std::string>& charsets, const std::string& text) const {
    converting();  // the charsets of the build tree are loaded
    const CharsetNames few(charsets);
    write("text", text);
    try {
      ksv_cli::RereadableText opened(path("text"));
      return ksv_cli::CharsetJudge(few, std::nullopt, false).judge(opened).chosen.reason;
    } catch (const ksv_cli::Failure& failure) {
      return failure.what();
    }
  }
};

TEST_F(RareJudgement, needs_the_charset_of_what_it_finds) {
  EXPECT_EQ(judged({"shift_jis"}, ""), "is empty, and the charset directory does not have UTF-8");
  EXPECT_EQ(judged({"utf-8"}, ""), "read as UTF-8: it is empty");
  const std::string marked =
      "\xEF\xBB\xBF"
      "a";
  EXPECT_NE(judged({"utf-8"}, marked).find("byte-order mark"), std::string::npos);
  EXPECT_EQ(judged({"shift_jis"}, marked).find("byte-order mark"), std::string::npos);
}

TEST_F(RareJudgement, takes_a_declaration_for_what_it_knows_only) {
  const std::string declared = "<meta charset=koi8-r>\xE1\xE2\xE3 \xC1\xC2\xC3 \xC4\xC5\xC6\n";
  EXPECT_EQ(judged({"utf-8", "koi8-r"}, declared).find("read as KOI8-R: "), 0u);
  EXPECT_EQ(judged({"utf-8", "iso-8859-1"}, declared).find("read as "), std::string::npos);
  EXPECT_EQ(judged({"utf-8", "utf-16"}, "<meta charset=utf-16>\xFF\n").find("it declares"),
            std::string::npos)
      << "text in UTF-16 could not be read so far";
}

TEST_F(RareJudgement, of_options_that_contradict_each_other_is_wrong_usage) {
  write("a", "text");
  const auto wrong = [&](const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"convert", "-t", "utf-16le"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Outcome outcome = ksv(arguments, "");
    EXPECT_EQ(outcome.out, "");
    return std::to_string(outcome.status) + " " + outcome.err;
  };
  const std::string usage = " (see 'ksv convert --help')\n";
  EXPECT_EQ(wrong({"--classic", "--guess", "a"}),
            "2 ksv: convert: --classic goes with neither --guess nor --detect-language" + usage);
  EXPECT_EQ(wrong({"--classic", "--detect-language", "ja", "a"}),
            "2 ksv: convert: --classic goes with neither --guess nor --detect-language" + usage);
  EXPECT_EQ(wrong({"--byte-order", "big", "a"}),
            "2 ksv: convert: --byte-order big contradicts the charset utf-16le" + usage);
  EXPECT_EQ(
      wrong({"--language", "a\xC3\xA9", "a"}),
      "2 ksv: convert: --language takes a name in printable ASCII, at most 259 characters" + usage);
  EXPECT_EQ(ksv({"convert", "-f", "utf-8", "-t", "utf-16le", "--byte-order", "little", "a"}).out,
            std::string("t\0e\0x\0t\0", 8));
}

}  // namespace
}  // namespace ksv_cli_tests
