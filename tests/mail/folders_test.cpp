// Folders of mails.

#include <gtest/gtest.h>

#include "mail_test.h"

namespace ksv_cli_tests {
namespace {

class MailFolders : public MailTest {};

TEST_F(MailFolders, may_be_maildirs) {
  writeBelow("d/cur/2:2,S", "Subject: b\n\n");
  writeBelow("d/cur/1:2,S", "Subject: a\n\n");
  writeBelow("d/new/3", "Subject: c\n\n");
  writeBelow("d/tmp/4", "Subject: d\n\n");
  writeBelow("d/cur/.hidden", "x");
  EXPECT_EQ(ksv({"mail", "d"}).out,
            "\fd/cur/1:2,S: message 1, offset 0\nSubject: a\n\n"
            "\fd/cur/2:2,S: message 1, offset 0\nSubject: b\n\n"
            "\fd/new/3: message 1, offset 0\nSubject: c\n\n");
}

TEST_F(MailFolders, may_have_numbers_for_names) {
  writeBelow("d/10", "Subject: b\n\n");
  writeBelow("d/9", "Subject: a\n\n");
  writeBelow("d/,8", "Subject: deleted\n\n");
  EXPECT_EQ(ksv({"mail", "d"}).out,
            "\fd/9: message 1, offset 0\nSubject: a\n\n"
            "\fd/10: message 1, offset 0\nSubject: b\n\n");
}

TEST_F(MailFolders, that_are_none_fail_beside_the_others) {
  writeBelow("d/a.txt", "x");
  write("m", "Subject: a\n\n");
  const Outcome outcome = ksv({"mail", "d", "m"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ksv: d: is a directory that holds no mails\n");
  EXPECT_EQ(outcome.out, "\fm: message 1, offset 0\nSubject: a\n\n");
}

TEST_F(MailFolders, may_be_empty) {
  writeBelow("d/cur/.keep", "");
  const Outcome outcome = ksv({"mail", "d"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
}

TEST_F(MailFolders, may_be_missing) {
  const Outcome outcome = ksv({"mail", "--json", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "{\"path\":\"none\",\"error\":{\"reason\":\"No such file or directory\","
            "\"offset\":null}}\n");
}

}  // namespace
}  // namespace ksv_cli_tests
