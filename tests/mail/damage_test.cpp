// What is told of damaged mails, and that the rest of them is shown.

#include <gtest/gtest.h>

#include "mail_test.h"

namespace ksv_cli_tests {
namespace {

class DamagedMails : public MailTest {
 protected:
  std::string problems(const std::string& mail) const {
    std::string told;
    const nlohmann::json read = record(mail);
    for (const auto& problem : read.at("problems"))
      told += problem.at("offset").dump() + " " + problem.at("reason").get<std::string>() + "\n";
    return told;
  }
};

TEST_F(DamagedMails, without_the_end_of_a_multipart_show_what_there_is) {
  const std::string mail = "Content-Type: multipart/mixed; boundary=x\n\n--x\n\ntext\n";
  EXPECT_EQ(problems(mail), "null the end boundary of a multipart is missing\n");
  const Outcome outcome = ksv({"mail"}, mail);
  EXPECT_EQ(outcome.out, "text\n");
  EXPECT_EQ(outcome.err, "ksv: standard input: the end boundary of a multipart is missing\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(ksv({"mail", "--strict"}, mail).status, 1);
}

TEST_F(DamagedMails, with_lines_that_are_no_fields_tell_their_places) {
  EXPECT_EQ(problems("Subject: a\nno field\nTo: b\n\n"),
            "11 a line in a header that is no field\n");
  EXPECT_EQ(problems("From a Thu Feb 29 12:34:56 2024\nSubject: a\nno field\nTo: b\n\n"),
            "43 a line in a header that is no field\n");
}

TEST_F(DamagedMails, with_bytes_of_no_transfer_encoding_count_them) {
  const std::string base64 = "Content-Transfer-Encoding: base64\n";
  const nlohmann::json part = textPart(base64, "YW*Jj!\n");
  EXPECT_EQ(part.at("text"), "abc");
  EXPECT_EQ(part.at("badBytes"), 2);
  EXPECT_EQ(textPart(base64, "YWJjZ").at("badBytes"), 1);
  EXPECT_EQ(textPart(base64, "YWJj\nZA==\n").at("badBytes"), 0);
  const std::string quoted = "Content-Transfer-Encoding: quoted-printable\n";
  EXPECT_EQ(textPart(quoted, "a=3Db=zz=\n=4x=").at("badBytes"), 2);
  EXPECT_EQ(textPart(quoted, "a=\r\nb=41=\n").at("badBytes"), 0);
  EXPECT_EQ(textPart(quoted, "a=\r\nb=41=\n").at("text"), "abA");
  // Blanks are forbidden there, and taken for what they are.
  EXPECT_EQ(textPart(quoted, "a= \nb").at("badBytes"), 1);
  EXPECT_EQ(textPart(quoted, "a= \nb").at("text"), "a= \nb");
}

TEST_F(DamagedMails, that_are_cut_short_tell_where) {
  std::string mail = "Subject: a\n";
  for (int i = 0; i < 20'001; ++i) mail += "X: y\n";
  const nlohmann::json told = record(mail + "\ntext\n");
  EXPECT_EQ(told.at("subject"), "a");
  EXPECT_EQ(told.at("problems").at(0).at("reason"),
            "too many bytes or fields in headers: the rest of the message is left out");
  EXPECT_EQ(told.at("problems").at(0).at("offset"), 11 + 5 * 19'999);
}

TEST_F(DamagedMails, do_not_keep_others_from_being_shown) {
  const std::string line = "From a Thu Feb 29 12:34:56 2024\n";
  write("box", line + "Content-Type: text/plain; charset=utf-8\n\n\xE3\x81\n\n" + line +
                   "Subject: b\n\nx\n");
  const Outcome outcome = ksv({"mail", "--json", "--invalid", "fail", "box"});
  EXPECT_EQ(outcome.status, 1);
  const size_t end = outcome.out.find('\n');
  const auto first = nlohmann::json::parse(outcome.out.substr(0, end), nullptr, false);
  const auto second = nlohmann::json::parse(outcome.out.substr(end), nullptr, false);
  EXPECT_EQ(first.at("message"), 1);
  EXPECT_EQ(second.at("subject"), "b");
}

TEST_F(DamagedMails, of_more_text_than_is_kept_tell_so) {
  const std::string line(1023, 'x');
  std::string mail = "Subject: a\n\n";
  for (int i = 0; i < 17 * 1024; ++i) mail += line + "\n";
  const Outcome outcome = ksv({"mail"}, mail);
  EXPECT_EQ(outcome.out.size(), 12 + 16u * 1024 * 1024);
  EXPECT_EQ(outcome.err,
            "ksv: standard input: the text of part 1 is too long: the rest is left out\n");
}

}  // namespace
}  // namespace ksv_cli_tests
