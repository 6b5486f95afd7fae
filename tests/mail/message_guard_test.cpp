// What of a mail is left out before it is taken apart.

#include "cli/mail/message_guard.h"

#include <gtest/gtest.h>

#include <string>

#include "cli/mail/mail_limits.h"
#include "cli/system/memory_streams.h"

namespace ksv_cli {
namespace {

struct Kept {
  size_t bytes = 0;
  std::string reason;
  std::string last = {};  // of the lines that are kept
};

Kept guarded(const std::string& text) {
  TextSource source(text);
  LineReader lines(source);
  MessageGuard guard;
  Kept kept;
  for (LinePiece piece; lines.next(piece);) {
    const MessageGuard::Verdict verdict = guard.see(piece);
    if (verdict == MessageGuard::Verdict::kKeep) {
      kept.bytes += piece.bytes.size();
      kept.last = piece.bytes;
      continue;
    }
    kept.reason = guard.reason();
    if (verdict == MessageGuard::Verdict::kEnd) break;
    kept.bytes += verdict == MessageGuard::Verdict::kKeepLineEnd;
  }
  return kept;
}

std::string nested(size_t depth) {
  std::string text;
  for (size_t i = 0; i < depth; ++i) {
    const std::string name = "b" + std::to_string(i);
    text += "Content-Type: multipart/mixed;\n boundary=\"" + name + "\"\n\n--" + name + "\n";
  }
  return text + "\ntext\n";
}

TEST(MessageGuard, keeps_what_mails_have) {
  const std::string text = nested(limits::kDeepestPart) + "--b3--\n--b2\nA: b\n\nx\n";
  EXPECT_EQ(guarded(text).bytes, text.size());
}

TEST(MessageGuard, ends_at_parts_that_are_nested_too_deep) {
  const Kept kept = guarded(nested(limits::kDeepestPart + 1));
  EXPECT_EQ(kept.reason, "parts that are nested too deep: the rest of the message is left out");
}

TEST(MessageGuard, lets_multiparts_follow_each_other) {
  std::string text = "Content-Type: multipart/mixed; boundary=a\n\n";
  for (int i = 0; i < 1000; ++i)
    text += "--a\nContent-Type: multipart/mixed; boundary=b" + std::to_string(i) + "\n\n--b" +
            std::to_string(i) + "\n\nx\n";
  EXPECT_EQ(guarded(text).reason, "");
}

TEST(MessageGuard, ends_at_too_many_parts) {
  std::string text = "Content-Type: multipart/mixed; boundary=a\n\n";
  for (size_t i = 0; i <= limits::kMostParts; ++i) text += "--a\n";
  EXPECT_EQ(guarded(text).reason, "too many parts: the rest of the message is left out");
  const std::string messages = "Content-Type: message/rfc822\n\n";
  text.clear();
  for (size_t i = 0; i <= limits::kMostParts; ++i) text += messages;
  EXPECT_EQ(guarded(text).reason, "too many parts: the rest of the message is left out");
}

TEST(MessageGuard, leaves_out_the_rest_of_a_field_that_is_too_long) {
  const std::string begin = "Content-Type: text/plain; a=\"" + std::string(8000, 'x') + "\"";
  std::string more;
  for (int i = 0; i < 100; ++i) more += ";\n a" + std::to_string(i) + "=b";
  const Kept kept = guarded(begin + more + "\nSubject: a\n\nb\n");
  EXPECT_EQ(kept.reason, "a field that is too long: the rest of it is left out");
  EXPECT_LT(kept.bytes, limits::kLongestContentField + 20);
  EXPECT_EQ(kept.last, "b\n");
}

TEST(MessageGuard, keeps_the_line_end_of_a_line_that_is_too_long) {
  const Kept kept = guarded("Subject: " + std::string(700'000, 'x') + "\nA: b\n\n");
  EXPECT_EQ(kept.reason, "a field that is too long: the rest of it is left out");
  EXPECT_LE(kept.bytes, limits::kLongestField + 10);
  EXPECT_EQ(kept.last, "\n");
}

TEST(MessageGuard, leaves_out_encoded_words_of_a_field_beyond_some) {
  std::string field = "Subject: a\n";
  for (size_t i = 0; i < limits::kMostWordsOfField; ++i) field += " =?a?q?b?=\n";
  EXPECT_EQ(guarded(field + "A: =?a?q?b?=\n\nx\n").reason, "");
  EXPECT_EQ(guarded(field + " =?a?q?b?=\n\nx\n").reason,
            "a field that is too long: the rest of it is left out");
}

TEST(MessageGuard, ends_at_too_many_fields_and_too_many_bytes_in_them) {
  const std::string reason =
      "too many bytes or fields in headers: the rest of the message is left out";
  std::string text;
  for (size_t i = 0; i <= limits::kMostFields; ++i) text += "a:\n";
  EXPECT_EQ(guarded(text).reason, reason);
  text.clear();
  for (size_t i = 0; i < 10; ++i) text += "a: " + std::string(200'000, 'x') + "\n";
  EXPECT_EQ(guarded(text).reason, reason);
  EXPECT_EQ(guarded("a: b\n\n" + text + text).reason, "");
}

TEST(MessageGuard, counts_fields_of_messages_in_digests) {
  std::string text = "Content-Type: multipart/digest; boundary=a\n\n--a\n\n";
  for (size_t i = 0; i <= limits::kMostFields; ++i) text += "a:\n";
  EXPECT_NE(guarded(text).reason, "");
}

}  // namespace
}  // namespace ksv_cli
