#include <gtest/gtest.h>

#include "kit/charsets/charset_names.h"
#include "kit/charsets/name_matching.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

using ksv_kit::ByteOrder;
using ksv_kit::CharsetKind;
using ksv_kit::CharsetNames;
using ksv_kit::UnicodeForm;

const std::vector<std::string> kDirectory = {"utf-8",           "utf-16",    "iso-10646-ucs-2",
                                             "iso-10646-ucs-4", "shift_jis", "windows31j",
                                             "shift_jis-2004",  "example"};

std::string resolved(const std::string& name) {
  const auto choice = CharsetNames(kDirectory).find(name);
  if (!choice) return "unknown";
  return choice->display + (choice->order == ByteOrder::kLittle ? " little"
                            : choice->order == ByteOrder::kBig  ? " big"
                                                                : "");
}

TEST(CharsetNames, finds_names_and_aliases_without_regard_to_case) {
  EXPECT_EQ(resolved("Shift_JIS"), "Shift_JIS");
  EXPECT_EQ(resolved("SHIFT_jis"), "Shift_JIS");
  EXPECT_EQ(resolved("sjis"), "Shift_JIS");
  EXPECT_EQ(resolved("x-SJIS"), "Shift_JIS");
  EXPECT_EQ(resolved("MS_Kanji"), "Shift_JIS");
  EXPECT_EQ(resolved("CP932"), "WINDOWS31J");
  EXPECT_EQ(resolved("Windows-31J"), "WINDOWS31J");
  EXPECT_EQ(resolved("ms932"), "WINDOWS31J");
  EXPECT_EQ(resolved("Shift_JISX0213"), "Shift_JIS-2004");
  EXPECT_EQ(resolved("unicode-1-1-utf-8"), "UTF-8");
  EXPECT_EQ(resolved("utf8"), "UTF-8");
  EXPECT_EQ(resolved("EXAMPLE"), "example");
}

TEST(CharsetNames, gives_the_byte_order_that_an_alias_fixes) {
  EXPECT_EQ(resolved("UTF-16"), "UTF-16");
  EXPECT_EQ(resolved("UTF-16LE"), "UTF-16 little");
  EXPECT_EQ(resolved("utf-16be"), "UTF-16 big");
  EXPECT_EQ(resolved("UTF-32"), "ISO-10646-UCS-4");
  EXPECT_EQ(resolved("utf-32BE"), "ISO-10646-UCS-4 big");
  EXPECT_EQ(resolved("UCS-2"), "ISO-10646-UCS-2");
  EXPECT_EQ(resolved("ucs-2le"), "ISO-10646-UCS-2 little");
}

TEST(CharsetNames, knows_only_what_the_directory_holds) {
  EXPECT_EQ(resolved("utf-7"), "unknown");
  EXPECT_EQ(resolved(""), "unknown");
  EXPECT_EQ(resolved(std::string(1000, 'x')), "unknown");
  EXPECT_FALSE(CharsetNames({"utf-8"}).find("sjis").has_value());
}

const std::vector<std::string> kMail = {"utf-8",       "iso-10646-ucs-4",  "chinesegbk",
                                        "iso-2022-jp", "iso-2022-jp-kana", "shift_jis"};

TEST(CharsetNames, finds_what_can_only_be_read_for_a_source_only) {
  const CharsetNames names(kMail);
  for (const std::string name : {"UTF-7", "utf7", "csUTF7", "cp65000"}) {
    EXPECT_FALSE(names.find(name).has_value()) << name;
    ASSERT_TRUE(names.findSource(name).has_value()) << name;
    EXPECT_EQ(names.findSource(name)->name, "UTF-7");
    EXPECT_EQ(names.findSource(name)->kind, CharsetKind::kUtf7);
  }
  EXPECT_EQ(names.findSource("hz")->name, "HZ-GB-2312");
  EXPECT_EQ(names.findSource("hz-gb-2312")->kind, CharsetKind::kHz);
  EXPECT_FALSE(CharsetNames({"utf-8"}).findSource("utf-7").has_value());
  EXPECT_FALSE(CharsetNames({"utf-8"}).findSource("hz").has_value());
  const std::vector<ksv_kit::CharsetListing> listings = names.list();
  ASSERT_EQ(listings.size(), kMail.size() + 2);
  for (size_t i = 0; i < listings.size(); ++i)
    EXPECT_EQ(listings[i].sourceOnly, i >= kMail.size()) << listings[i].display;
}

TEST(CharsetNames, reads_iso_2022_jp_with_half_width_katakana) {
  const CharsetNames names(kMail);
  EXPECT_EQ(names.find("iso-2022-jp")->name, "iso-2022-jp");
  EXPECT_EQ(names.findSource("iso2022jp")->name, "iso-2022-jp-kana");
  EXPECT_EQ(names.findSource("iso2022jp")->display, "ISO-2022-JP");
  EXPECT_EQ(names.findSource("ISO-2022-JP")->kind, CharsetKind::kIso2022);
  EXPECT_EQ(names.findSource("sjis")->name, "shift_jis");
  EXPECT_EQ(CharsetNames({"iso-2022-jp"}).findSource("iso-2022-jp")->name, "iso-2022-jp");
}

// What the charset directory of the build makes of a name.
std::string shipped(const std::string& name) {
  static const CharsetNames names(converting().charsets());
  const auto choice = names.findSource(name);
  return choice ? choice->display : "unknown";
}

TEST(CharsetNames, are_those_of_iana_and_of_the_web) {
  const std::pair<const char*, std::vector<std::string>> charsets[] = {
      {"ISO-646IRV", {"us-ascii", "ascii", "ANSI_X3.4-1968", "csASCII"}},
      {"ISO-8859-1", {"iso-8859-1", "latin1", "L1", "ISO_8859-1:1987", "IBM819"}},
      {"windows-1252", {"windows-1252", "cp1252", "x-cp1252"}},
      {"ISO-8859-9", {"iso-8859-9", "latin5"}},
      {"windows-1254", {"windows-1254", "cp1254"}},
      {"ISO-8859-8", {"hebrew", "visual", "iso-8859-8-i", "csISO88598I", "logical"}},
      {"ISO-8859-11", {"iso-8859-11", "iso885911"}},
      {"TIS-620", {"tis-620"}},
      {"windows-874", {"dos-874", "cp874"}},
      {"ISO-8859-15", {"iso-8859-15", "latin-9", "l9"}},
      {"KOI8-R", {"koi8", "koi", "cskoi8r"}},
      {"KOI8-U", {"koi8-u", "koi8-ru"}},
      {"IBM866", {"866", "cp866"}},
      {"macintosh", {"mac", "x-mac-roman"}},
      {"x-mac-cyrillic", {"x-mac-cyrillic", "x-mac-ukrainian"}},
      {"EUC-JP", {"euc-jp", "x-euc-jp", "eucJP", "csEUCPkdFmtJapanese"}},
      {"EUC-JP-MS", {"cp51932", "windows-51932", "eucJP-ms"}},
      {"EUC-JP-FIX", {"csEUCFixWidJapanese"}},
      {"EUC-JIS-2004", {"euc-jisx0213", "euc_jis_2004"}},
      {"ISO-2022-JP", {"iso-2022-jp", "jis"}},
      {"CP50220", {"csiso2022jp", "cp50220", "cp50221", "cscp50220", "cp50222"}},
      {"ISO-2022-JP-KANA", {"iso-2022-jp-kana"}},
      {"ISO-2022-JP-2004", {"iso2022_jp_2004"}},
      {"ChineseGBK", {"gbk", "cp936", "gb2312", "chinese", "x-gbk", "csGB2312"}},
      {"GB18030", {"gb18030", "csGB18030"}},
      {"ChineseBIG5", {"big5", "cp950", "cn-big5", "x-x-big5"}},
      {"Big5-HKSCS", {"big5-hkscs", "big5hkscs"}},
      {"EUC-KR", {"euc-kr", "csEUCKR"}},
      {"KoreanKSC", {"cp949", "ks_c_5601-1987", "windows-949", "korean"}},
      {"HZ-GB-2312", {"hz-gb-2312", "hz"}},
      {"ISO-2022-KR", {"iso-2022-kr", "csiso2022kr"}},
      {"IBM930", {"ibm930", "cp930"}},
      {"unknown", {"x-user-defined", "replacement"}},
  };
  for (const auto& [charset, names] : charsets)
    for (const std::string& name : names) EXPECT_EQ(shipped(name), charset) << name;
}

TEST(CharsetNames, are_found_without_regard_to_punctuation_and_leading_zeros) {
  for (const std::string name : {"Shift-JIS", "shift jis", "S.H.I.F.T_JIS", "shiftjis", "x sjis"})
    EXPECT_EQ(resolved(name), "Shift_JIS") << name;
  for (const std::string name : {"u.t.f-008", "UTF_8", "utf 08", "(utf8)"})
    EXPECT_EQ(resolved(name), "UTF-8") << name;
  EXPECT_EQ(resolved("utf16-le"), "UTF-16 little");
  for (const std::string name : {"utf-80", "ut8", "utf-8-0", "-_.", "日本"})
    EXPECT_EQ(resolved(name), "unknown") << name;
  EXPECT_EQ(CharsetNames(kMail).findSource("UTF_07")->name, "UTF-7");
}

TEST(CharsetNames, fold_into_letters_and_digits) {
  EXPECT_EQ(ksv_kit::foldedName("ISO_8859-01:1987"), "iso8859011987");
  EXPECT_EQ(ksv_kit::foldedName("KOI8-R"), "koi8r");
  EXPECT_EQ(ksv_kit::foldedName("100-0a010"), "1000a10");
  EXPECT_EQ(ksv_kit::foldedName("0"), "");
}

// What one name is exactly, another may not be by its letters and digits.
TEST(CharsetNames, mean_one_charset_however_they_are_written) {
  const CharsetNames names(converting().charsets());
  for (const ksv_kit::CharsetListing& listing : names.list()) {
    std::vector<std::string> all = listing.aliases;
    all.push_back(listing.display);
    for (const std::string& name : all) {
      const auto exact = names.findSource(name);
      const auto folded = names.findSource(ksv_kit::foldedName(name));
      ASSERT_TRUE(exact && folded) << name;
      EXPECT_EQ(exact->name, folded->name) << name;
      EXPECT_EQ(exact->order, folded->order) << name;
    }
  }
}

TEST(CharsetNames, suggest_what_may_have_been_meant) {
  const CharsetNames names(converting().charsets());
  EXPECT_EQ(names.unknown("Shift_JSI"),
            "unknown charset Shift_JSI; did you mean Shift_JIS? "
            "'ksv charsets' lists them");
  EXPECT_EQ(names.unknown("klingon"), "unknown charset klingon; 'ksv charsets' lists them");
  EXPECT_EQ(names.unknown(std::string(70, 'x')),
            "unknown charset " + std::string(70, 'x') + "; 'ksv charsets' lists them");
  EXPECT_EQ(names.unknown("UTF-9").find("unknown charset UTF-9; did you mean UTF-8"), 0u);
}

TEST(CharsetNames, name_the_option_that_a_suffix_stands_for) {
  const CharsetNames names(kDirectory);
  EXPECT_EQ(names.unknown("UTF-8//TRANSLIT"),
            "UTF-8//TRANSLIT is more than the name of a charset: 'ksv convert --unmappable "
            "replace' writes a replacement for what the charset lacks");
  EXPECT_EQ(names.unknown("sjis//ignore"),
            "sjis//ignore is more than the name of a charset: 'ksv convert --invalid skip' "
            "leaves out what is invalid");
  EXPECT_FALSE(names.find("UTF-8//TRANSLIT").has_value());
}

TEST(CharsetNames, prefers_a_name_of_the_directory_to_an_alias) {
  const CharsetNames names({"shift_jis", "sjis"});
  EXPECT_EQ(names.find("SJIS")->name, "sjis");
  EXPECT_EQ(names.find("x-sjis")->name, "shift_jis");
  const std::vector<ksv_kit::CharsetListing> listings = names.list();
  for (const std::string& alias : listings.at(0).aliases) EXPECT_NE(alias, "sjis");
}

TEST(CharsetNames, knows_the_form_of_the_unicode_charsets) {
  const CharsetNames names(kDirectory);
  EXPECT_EQ(names.find("utf8")->form, UnicodeForm::kUtf8);
  EXPECT_EQ(names.find("UTF-16BE")->form, UnicodeForm::kUtf16);
  EXPECT_EQ(names.find("ucs2")->form, UnicodeForm::kUcs2);
  EXPECT_EQ(names.find("utf32")->form, UnicodeForm::kUcs4);
  EXPECT_EQ(names.find("sjis")->form, UnicodeForm::kNone);
  EXPECT_FALSE(names.find("utf8")->hasByteOrder());
  EXPECT_TRUE(names.find("utf32")->hasByteOrder());
}

}  // namespace
}  // namespace ksv_cli_tests
