// Where the mails of a mailbox begin and end, and what is done to their lines.

#include "cli/mail/mailbox.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/system/memory_streams.h"

namespace ksv_cli {
namespace {

struct Mail {
  std::string bytes;
  uint64_t offset;
};

std::vector<Mail> mailsIn(const std::string& text) {
  TextSource source(text);
  Mailbox mailbox(source);
  std::vector<Mail> mails;
  while (const auto stored = mailbox.next()) {
    std::string bytes(static_cast<size_t>(stored->size()), '\0');
    EXPECT_EQ(stored->read(0, bytes.data(), bytes.size()), bytes.size());
    mails.push_back({bytes, stored->offset()});
  }
  return mails;
}

const std::string kLine = "From a@b.c Thu Feb 29 12:34:56 2024\n";

TEST(Mailbox, takes_any_other_file_for_one_mail) {
  const std::string text = "Subject: a\n\nFrom here on\n\n" + kLine;
  const std::vector<Mail> mails = mailsIn(text);
  ASSERT_EQ(mails.size(), 1u);
  EXPECT_EQ(mails[0].bytes, text);
}

TEST(Mailbox, has_no_mail_without_bytes) { EXPECT_TRUE(mailsIn("").empty()); }

TEST(Mailbox, begins_a_mail_behind_an_empty_line) {
  const std::string first = kLine + "Subject: a\n\ntext\n\n";
  const std::vector<Mail> mails = mailsIn(first + kLine + "Subject: b\n\n");
  ASSERT_EQ(mails.size(), 2u);
  EXPECT_EQ(mails[0].bytes, "Subject: a\n\ntext\n");
  EXPECT_EQ(mails[0].offset, 0u);
  EXPECT_EQ(mails[1].bytes, "Subject: b\n\n");
  EXPECT_EQ(mails[1].offset, first.size());
}

TEST(Mailbox, leaves_lines_of_texts_that_begin_like_it) {
  const std::string text = kLine + "Subject: a\n\nFrom now on\n\nFrom now on\n" + kLine + "x\n";
  ASSERT_EQ(mailsIn(text).size(), 1u);
}

TEST(Mailbox, takes_one_sign_off_quoted_lines) {
  const std::vector<Mail> mails =
      mailsIn(kLine + "Subject: a\n\n>From x\n>>From y\n>Frommage\n> From\n");
  ASSERT_EQ(mails.size(), 1u);
  EXPECT_EQ(mails[0].bytes, "Subject: a\n\nFrom x\n>From y\n>Frommage\n> From\n");
}

TEST(Mailbox, quotes_nothing_outside_of_mailboxes) {
  EXPECT_EQ(mailsIn("Subject: a\n\n>From x\n")[0].bytes, "Subject: a\n\n>From x\n");
}

TEST(Mailbox, takes_line_ends_of_either_kind) {
  const std::vector<Mail> mails =
      mailsIn("From a Thu Feb 29 12:34:56 2024\r\nA: b\r\n\r\nx\r\n\r\n" + kLine + "C: d\n");
  ASSERT_EQ(mails.size(), 2u);
  EXPECT_EQ(mails[0].bytes, "A: b\r\n\r\nx\r\n");
}

TEST(Mailbox, has_mails_without_anything) {
  const std::vector<Mail> mails = mailsIn(kLine + "\n" + kLine + "\n" + kLine);
  ASSERT_EQ(mails.size(), 3u);
  EXPECT_EQ(mails[2].bytes, "");
}

TEST(Mailbox, knows_the_places_of_bytes_behind_signs_it_has_taken_off) {
  const std::string text = kLine + "A: b\n\n>From x\ny\n";
  TextSource source(text);
  Mailbox mailbox(source);
  const auto stored = mailbox.next();
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->placeInInput(0), kLine.size());
  EXPECT_EQ(stored->placeInInput(6), text.find("From x"));
  EXPECT_EQ(stored->placeInInput(13), text.find("y\n"));
}

}  // namespace
}  // namespace ksv_cli
