// The charsets of texts and fields, and what mails claim of them.

#include <gtest/gtest.h>

#include "mail_test.h"

namespace ksv_cli_tests {
namespace {

class MailCharsets : public MailTest {
 protected:
  void expectText(const std::string& declared, const std::string& text, const std::string& read,
                  const std::string& utf8) const {
    const nlohmann::json part =
        textPart("Content-Type: text/plain; charset=" + declared + "\n", text);
    EXPECT_EQ(part.at("text"), utf8) << declared;
    EXPECT_EQ(part.at("charsetUsed"), read) << declared;
    EXPECT_EQ(part.at("invalidBytes"), 0) << declared;
  }
};

TEST_F(MailCharsets, of_every_family_are_read) {
  expectText("utf-8", "\xE3\x81\x82", "UTF-8", "あ");
  expectText("utf-16be", bytes({0x30, 0x42}), "UTF-16", "あ");
  expectText("iso-2022-jp", "\x1B$B$\"\x1B(B", "CP50220", "あ");
  expectText("shift_jis", "\x82\xA0", "WINDOWS31J", "あ");
  expectText("euc-jp", "\xA4\xA2", "EUC-JP-MS", "あ");
  expectText("gb2312", "\xD6\xD0", "ChineseGBK", "中");
  expectText("gb18030", "\x81\x30\x81\x30", "GB18030", "\u0080");
  expectText("hz-gb-2312", "~{VP~}", "HZ-GB-2312", "中");
  expectText("big5", "\xA4\xA4", "ChineseBIG5", "中");
  expectText("euc-kr", "\xB0\xA1", "KoreanKSC", "가");
  expectText("iso-2022-kr", "\x1B$)C\x0E\x30\x21\x0F", "ISO-2022-KR", "가");
  expectText("utf-7", "+MEI-", "UTF-7", "あ");
  expectText("koi8-r", "\xC1", "KOI8-R", "а");
  expectText("iso-8859-15", "\xA4", "ISO-8859-15", "€");
  expectText("windows-1256", "\xC7", "windows-1256", "ا");
}

TEST_F(MailCharsets, that_hold_more_than_they_declare_are_read_as_what_is_meant) {
  expectText("iso-8859-1", "\x80\x93", "windows-1252", "€“");
  expectText("iso-8859-9", "\x80\xFD", "windows-1254", "€ı");
  expectText("Shift_JIS", "\x87\x40", "WINDOWS31J", "①");
  expectText("iso-2022-jp", "\x1B$B-!\x1B(B", "CP50220", "①");
  expectText("euc-jp", "\xAD\xA1", "EUC-JP-MS", "①");
  expectText("ks_c_5601-1987", "\x81\x41", "KoreanKSC", "갂");
  expectText("gb2312", "\x81\x40", "ChineseGBK", "丂");
  expectText("gb2312", "\x81\x30\x81\x30\xD6\xD0", "GB18030", "\u0080中");
}

TEST_F(MailCharsets, of_iso_2022_jp_are_known_whatever_is_declared) {
  const std::string text = "\x1B$B$\"$$\x1B(B\n";
  for (const char* fields : {"", "Content-Type: text/plain; charset=us-ascii\n",
                             "Content-Type: text/plain; charset=iso-8859-1\n",
                             "Content-Type: text/plain; charset=utf-8\n"}) {
    const nlohmann::json part = textPart(fields, text);
    EXPECT_EQ(part.at("text"), "あい\n") << fields;
    EXPECT_EQ(part.at("charsetUsed"), "CP50220") << fields;
  }
}

TEST_F(MailCharsets, that_are_named_by_odd_bytes_leave_them_out_of_the_reason) {
  const nlohmann::json part =
      textPart("Content-Type: text/plain; charset=shift_\x94jis\n", "\x82\xA0");
  EXPECT_EQ(part.at("text"), "あ");
  EXPECT_EQ(part.at("charsetReason"), "declared Shift_JIS, by which mail programs mean WINDOWS31J");
}

// The first sentence of a novel, in charsets that it does not declare.
const std::string kSentence = "親譲りの無鉄砲で小供の時から損ばかりしている。";
const std::string kSentenceInShiftJis =
    "\x90\x65\x8F\xF7\x82\xE8\x82\xCC\x96\xB3\x93\x53\x96\x43\x82\xC5\x8F\xAC\x8B\x9F\x82\xCC\x8E"
    "\x9E\x82\xA9\x82\xE7\x91\xB9\x82\xCE\x82\xA9\x82\xE8\x82\xB5\x82\xC4\x82\xA2\x82\xE9\x81\x42";

TEST_F(MailCharsets, that_are_not_declared_or_not_valid_are_found_out) {
  for (const char* fields : {"", "Content-Type: text/plain; charset=utf-8\n",
                             "Content-Type: text/plain; charset=us-ascii\n",
                             "Content-Type: text/plain; charset=x-unknown\n",
                             "Content-Type: text/plain; charset=\"\"\n"}) {
    const nlohmann::json part = textPart(fields, kSentenceInShiftJis);
    EXPECT_EQ(part.at("text"), kSentence) << fields;
    EXPECT_EQ(part.at("charsetUsed"), "WINDOWS31J") << fields;
    EXPECT_EQ(part.at("charsetReason"),
              "read as WINDOWS31J, which holds Shift_JIS: its characters are those of text in ja");
  }
}

TEST_F(MailCharsets, that_are_assumed_are_taken_where_none_is_declared) {
  const nlohmann::json part = textPart("", "\xC1\n", {"--charset", "koi8-r"});
  EXPECT_EQ(part.at("text"), "а\n");
  EXPECT_EQ(part.at("charsetReason"), "nothing is declared, and this is assumed");
  const Outcome outcome = ksv({"mail", "--charset", "none-such"}, "a: b\n\n");
  EXPECT_EQ(outcome.status, 2) << outcome.err;
}

TEST_F(MailCharsets, of_damaged_texts_stay_the_declared_ones) {
  const std::string fields = "Content-Type: text/plain; charset=utf-8\n";
  const nlohmann::json part = textPart(fields, "a\xE3\x81\x82\xFFz");
  EXPECT_EQ(part.at("text"), "aあ\uFFFDz");
  EXPECT_EQ(part.at("invalidBytes"), 1);
  EXPECT_EQ(part.at("charsetReason"), "declared, though not all of it is valid so");
  const Outcome told = ksv({"mail"}, fields + "\na\xE3\x81\x82\xFFz");
  EXPECT_EQ(told.err, "ksv: standard input: 1 invalid byte skipped or replaced\n");
  EXPECT_EQ(told.status, 0);
  EXPECT_EQ(ksv({"mail", "--strict"}, fields + "\na\xE3\x81\x82\xFFz").status, 1);
  EXPECT_EQ(textPart(fields, "a\xE3\x81\x82\xFFz", {"--invalid", "hex"}).at("text"), "aあ&#xFF;z");
  const Outcome failed = ksv({"mail", "--invalid", "fail"}, fields + "\na\xE3\x81\x82\xFFz");
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(failed.out, "");
}

TEST_F(MailCharsets, of_encoded_words_are_read) {
  EXPECT_EQ(subject("=?iso-2022-jp?B?GyRCJCIbKEI=?= a =?windows-1252?q?=80?="), "あ a €");
  EXPECT_EQ(subject("=?utf-8?B?44E=?=\n =?utf-8?B?gg==?="), "あ");
  EXPECT_EQ(subject("=?utf-8*ja?Q?=E3=81=82?="), "あ");
  EXPECT_EQ(subject("=?gb2312?Q?=81=40?="), "丂");
  EXPECT_EQ(subject("=?eucgb2312_cn?Q?=D6=D0?= =?big5_tw?Q?=A4=A4?="), "中中");
  EXPECT_EQ(subject("=?utf-7?Q?+MEI-?="), "あ");
  EXPECT_EQ(subject("=?x-unknown?Q?abc?="), "abc");
  EXPECT_EQ(subject("=?utf-8?Q?=FF?="), "\uFFFD");
}

TEST_F(MailCharsets, of_fields_that_are_not_encoded_are_found_out) {
  EXPECT_EQ(subject("\xE3\x81\x82"), "あ");
  EXPECT_EQ(subject("\x1B$B$\"\x1B(B"), "あ");
  EXPECT_EQ(subject(kSentenceInShiftJis), kSentence);
  EXPECT_EQ(record("Subject: \xC1\nContent-Type: text/plain; charset=koi8-r\n\n").at("subject"),
            "а");
}

TEST_F(MailCharsets, of_names_stay_apart_from_addresses) {
  const nlohmann::json mail =
      record("From: \"=?utf-8?Q?A=2C_B?=\" <a@b.c>, \x1B$B%,\x1B(B <d@e.f>\n\n");
  EXPECT_EQ(mail.at("from"), R"([{"name":"A, B","address":"a@b.c"},)"
                             R"({"name":"ガ","address":"d@e.f"}])"_json);
}

}  // namespace
}  // namespace ksv_cli_tests
