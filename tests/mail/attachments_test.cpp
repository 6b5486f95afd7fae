// The names of parts, and the files that they become.

#include <gtest/gtest.h>

#include "mail_test.h"

namespace ksv_cli_tests {
namespace {

class Attachments : public MailTest {
 protected:
  std::string fileName(const std::string& fields) const {
    const nlohmann::json part = textPart(fields, "x");
    return part.at("fileName").is_null() ? "none" : part.at("fileName").get<std::string>();
  }
};

std::string attachment(const std::string& name, const std::string& content) {
  return "--x\nContent-Type: application/octet-stream\n"
         "Content-Disposition: attachment; filename=\"" +
         name + "\"\n\n" + content + "\n";
}

const std::string kHead = "Content-Type: multipart/mixed; boundary=x\n\n";

TEST_F(Attachments, have_names_in_all_forms) {
  EXPECT_EQ(fileName("Content-Disposition: attachment; filename=a.txt\n"), "a.txt");
  EXPECT_EQ(fileName("Content-Disposition: attachment;\n filename*=utf-8'ja'%E3%81%82.txt\n"),
            "あ.txt");
  EXPECT_EQ(fileName("Content-Disposition: attachment;\n filename*0*=shift_jis''%82;\n"
                     " filename*1*=%A0;\n filename*2=.txt\n"),
            "あ.txt");
  EXPECT_EQ(
      fileName(
          "Content-Disposition: attachment;\n filename=\"=?iso-2022-jp?B?GyRCJCIbKEI=?=.txt\"\n"),
      "あ.txt");
  EXPECT_EQ(fileName("Content-Disposition: attachment; filename=\"\xE3\x81\x82.txt\"\n"), "あ.txt");
  EXPECT_EQ(fileName("Content-Type: text/plain; name=\"=?utf-8?Q?a_b?=\"\n"), "a b");
  EXPECT_EQ(fileName("Content-Type: text/plain\n"), "none");
}

TEST_F(Attachments, are_written_under_names_of_their_own) {
  writeBelow("old/a.txt", "kept");
  const std::string mail = kHead + attachment("a.txt", "one") +
                           attachment("A.TXT/../b.txt", "two") + attachment("a.txt", "three") +
                           attachment("../a.txt", "four") + "--x--\n";
  const Outcome outcome = ksv({"mail", "--save", "old"}, mail);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const std::vector<std::string> expected = {"A.TXT_.._b.txt", "_a.txt", "a-2.txt", "a-3.txt",
                                             "a.txt"};
  EXPECT_EQ(files("old"), expected);
  EXPECT_EQ(read("old/a.txt"), "kept");
  EXPECT_EQ(read("old/a-2.txt"), "one");
  EXPECT_EQ(read("old/a-3.txt"), "three");
  EXPECT_EQ(read("old/_a.txt"), "four");
}

TEST_F(Attachments, are_written_without_their_transfer_encoding) {
  const std::string mail =
      "Content-Type: image/png; name=p.png\nContent-Transfer-Encoding: base64\n\niVBORw0KGgo=\n";
  const nlohmann::json part = record(mail, {"--save", "new/room"}).at("parts").at(0);
  EXPECT_EQ(read("new/room/p.png"), "\x89PNG\r\n\x1A\n");
  EXPECT_EQ(part.at("savedAs"), "new/room/p.png");
  EXPECT_EQ(part.at("size"), 8);
}

TEST_F(Attachments, that_cannot_be_written_fail) {
  write("file", "");
  const Outcome outcome = ksv({"mail", "--save", "file"}, kHead + attachment("a", "b") + "--x--\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("ksv: file: "), std::string::npos) << outcome.err;
}

TEST_F(Attachments, that_are_texts_are_shown_as_lines) {
  const std::string mail = "Content-Disposition: attachment; filename=a.txt\n\nabc";
  EXPECT_EQ(ksv({"mail"}, mail).out, "[attachment: a.txt, text/plain, 3 bytes]\n");
}

}  // namespace
}  // namespace ksv_cli_tests
