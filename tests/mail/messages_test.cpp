// What a mail is shown as.

#include <gtest/gtest.h>

#include "mail_test.h"

namespace ksv_cli_tests {
namespace {

class Messages : public MailTest {};

const std::string kNested =
    "From: a@b.c\n"
    "Subject: outer\n"
    "Content-Type: multipart/mixed; boundary=x\n"
    "\n"
    "preamble\n"
    "--x\n"
    "Content-Type: multipart/alternative; boundary=y\n"
    "\n"
    "--y\n"
    "\n"
    "plain\n"
    "--y\n"
    "Content-Type: text/html\n"
    "\n"
    "<p>rich</p>\n"
    "--y--\n"
    "--x\n"
    "Content-Type: message/rfc822\n"
    "\n"
    "Subject: inner\n"
    "\n"
    "within\n"
    "--x\n"
    "Content-Type: application/pdf; name=a.pdf\n"
    "Content-Transfer-Encoding: base64\n"
    "\n"
    "JVBERg==\n"
    "--x--\n"
    "epilogue\n";

TEST_F(Messages, show_fields_texts_and_attachments) {
  const Outcome outcome = ksv({"mail"}, kNested);
  EXPECT_EQ(outcome.out,
            "From: a@b.c\nSubject: outer\n\nplain\n\n[message]\nSubject: inner\n\nwithin\n\n"
            "[attachment: a.pdf, application/pdf, 4 bytes]\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(Messages, show_the_fields_that_are_asked_for) {
  const std::string mail = "X-A: 1\nTo: t\nx-a: 2\nFrom: f\n\ntext";
  EXPECT_EQ(ksv({"mail"}, mail).out, "From: f\nTo: t\n\ntext\n");
  EXPECT_EQ(ksv({"mail", "--headers", "all"}, mail).out,
            "X-A: 1\nTo: t\nx-a: 2\nFrom: f\n\ntext\n");
  EXPECT_EQ(ksv({"mail", "--headers", "none"}, mail).out, "text\n");
  EXPECT_EQ(ksv({"mail", "--headers", "X-A,From"}, mail).out, "X-A: 1\nx-a: 2\nFrom: f\n\ntext\n");
}

TEST_F(Messages, show_html_only_where_there_is_nothing_else) {
  const std::string mail =
      "Content-Type: multipart/alternative; boundary=y\n\n--y\nContent-Type: text/html\n\n"
      "<p>rich</p>\n--y--\n";
  EXPECT_EQ(ksv({"mail"}, mail).out, "[text/html]\n<p>rich</p>\n");
}

TEST_F(Messages, show_all_texts_of_an_alternative_that_is_taken) {
  const std::string mail =
      "Content-Type: multipart/alternative; boundary=y\n\n--y\n\none\n--y\n"
      "Content-Type: multipart/mixed; boundary=z\n\n--z\n\ntwo\n--z\n\nthree\n--z--\n--y--\n";
  EXPECT_EQ(ksv({"mail"}, mail).out, "two\n\nthree\n");
}

TEST_F(Messages, let_nothing_do_anything_to_a_terminal) {
  const std::string mail = "Subject: =?utf-8?Q?a=1B]0;x=0A=0Db?=\n\na\x1B[31m\r\n\fb\r\n";
  EXPECT_EQ(ksv({"mail"}, mail).out, "Subject: a\uFFFD]0;x  b\n\na\uFFFD[31m\n\uFFFDb\n");
}

TEST_F(Messages, are_records) {
  const nlohmann::json mail = record(
      "From: =?utf-8?B?44GC?= <a@b.c>\r\nTo: \"B, C\" <b@c.d>, e@f.g\r\n"
      "Date: Thu, 29 Feb 2024 12:34:56 +0900\r\nSubject: a\r\n b\r\nMessage-ID: <1@b.c>\r\n"
      "Content-Type: text/plain; charset=\"UTF-8\"\r\nContent-Transfer-Encoding: 8bit\r\n\r\n"
      "\xE3\x81\x82\r\nb\r\n");
  EXPECT_EQ(mail.at("path"), "-");
  EXPECT_EQ(mail.at("message"), 1);
  EXPECT_EQ(mail.at("offset"), 0);
  EXPECT_EQ(mail.at("from"), R"([{"name":"あ","address":"a@b.c"}])"_json);
  EXPECT_EQ(mail.at("to"),
            R"([{"name":"B, C","address":"b@c.d"},{"name":"","address":"e@f.g"}])"_json);
  EXPECT_EQ(mail.at("cc"), nlohmann::json::array());
  EXPECT_EQ(mail.at("date"), "2024-02-29T12:34:56+09:00");
  EXPECT_EQ(mail.at("subject"), "a b");
  EXPECT_EQ(mail.at("messageId"), "<1@b.c>");
  EXPECT_EQ(mail.at("headers").at(3), R"(["Subject","a b"])"_json);
  EXPECT_EQ(mail.at("problems"), nlohmann::json::array());
  const nlohmann::json& part = mail.at("parts").at(0);
  EXPECT_EQ(part.at("path"), "1");
  EXPECT_EQ(part.at("type"), "text/plain");
  EXPECT_EQ(part.at("transferEncoding"), "8bit");
  EXPECT_EQ(part.at("charset"), "UTF-8");
  EXPECT_EQ(part.at("charsetUsed"), "UTF-8");
  EXPECT_EQ(part.at("charsetReason"), "declared");
  EXPECT_EQ(part.at("size"), 8);
  EXPECT_EQ(part.at("text"), "あ\nb\n");
}

TEST_F(Messages, have_parts_with_paths) {
  const nlohmann::json parts = record(kNested).at("parts");
  std::string paths;
  for (const auto& part : parts)
    paths += part.at("path").get<std::string>() + " " + part.at("type").get<std::string>() + "\n";
  EXPECT_EQ(paths,
            "1 multipart/mixed\n1.1 multipart/alternative\n1.1.1 text/plain\n1.1.2 text/html\n"
            "1.2 message/rfc822\n1.2.1 text/plain\n1.3 application/pdf\n");
  EXPECT_EQ(parts.at(6).at("fileName"), "a.pdf");
  EXPECT_EQ(parts.at(6).at("sha256"),
            "315d429b7714cedb6ad04ac31240145257692630457f3c88253c5beceac76027");
  EXPECT_FALSE(parts.at(6).contains("text"));
}

TEST_F(Messages, have_no_time_that_is_none) {
  EXPECT_TRUE(record("Date: soon\n\n").at("date").is_null());
  EXPECT_TRUE(record("Subject: a\n\n").at("date").is_null());
}

TEST_F(Messages, are_put_out_in_any_charset) {
  const std::string mail = "Subject: =?utf-8?B?44GC?=\n\na\xE2\x91\xA0\n";
  const Outcome replaced = ksv({"mail", "-t", "Shift_JIS"}, mail);
  EXPECT_EQ(replaced.out, "Subject: \x82\xA0\n\na\x81\xAC\n");
  EXPECT_EQ(replaced.err, "ksv: standard input: holds characters that are not in Shift_JIS\n");
  EXPECT_EQ(ksv({"mail", "-t", "Shift_JIS", "--unmappable", "hex"}, mail).out,
            "Subject: \x82\xA0\n\na&#x2460;\n");
  const Outcome failed = ksv({"mail", "-t", "Shift_JIS", "--unmappable", "fail"}, mail);
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(failed.out, "");
  const Outcome json = ksv({"mail", "--json", "-t", "Shift_JIS"}, mail);
  EXPECT_NE(json.out.find("\\u2460"), std::string::npos) << json.out;
  EXPECT_EQ(json.err, "");
}

TEST_F(Messages, of_a_mailbox_begin_with_lines_of_their_own) {
  write("box",
        "From a Thu Feb 29 12:34:56 2024\nSubject: a\n\nx\n\n"
        "From a Thu Feb 29 12:34:56 2024\nSubject: b\n\n>From y\n");
  EXPECT_EQ(ksv({"mail", "box"}).out,
            "\fbox: message 1, offset 0\nSubject: a\n\nx\n"
            "\fbox: message 2, offset 47\nSubject: b\n\nFrom y\n");
}

TEST_F(Messages, of_several_files_keep_their_order) {
  std::vector<std::string> arguments = {"mail", "-j", "4"};
  std::string expected;
  for (int i = 0; i < 12; ++i) {
    const std::string name = "m" + std::to_string(i);
    write(name, "Subject: " + name + "\n\n");
    arguments.push_back(name);
    expected += "\f" + name + ": message 1, offset 0\nSubject: " + name + "\n\n";
  }
  EXPECT_EQ(ksv(arguments).out, expected);
}

}  // namespace
}  // namespace ksv_cli_tests
