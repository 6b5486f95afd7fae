// Parameters in all the forms in which programs write them.

#include "cli/mail/header_parameters.h"

#include <gtest/gtest.h>

#include <string>

namespace ksv_cli {
namespace {

// "charset[bytes]" of each piece of the value.
std::string valueOf(const std::string& field, const std::string& name) {
  const ParameterField read = parameterField(field);
  const HeaderParameter* parameter = read.find(name);
  if (parameter == nullptr) return "none";
  std::string shown;
  for (const HeaderRun& run : parameter->value)
    shown += run.charset.value_or("") + "[" + run.bytes + "]";
  return shown;
}

TEST(HeaderParameters, reads_value_and_parameters) {
  const ParameterField field = parameterField("Text/Plain; Charset=\"UTF-8\"; format=flowed");
  EXPECT_EQ(field.value, "text/plain");
  EXPECT_EQ(plainValue(*field.find("charset")), "UTF-8");
  EXPECT_EQ(plainValue(*field.find("format")), "flowed");
}

TEST(HeaderParameters, passes_over_comments_and_blanks) {
  EXPECT_EQ(valueOf("text/plain (a; b=c) ; charset = utf-8 (the (best) one)", "charset"),
            "[utf-8]");
}

TEST(HeaderParameters, reads_quoted_values) {
  EXPECT_EQ(valueOf("attachment; filename=\"a; \\\"b\\\".txt\"", "filename"), "[a; \"b\".txt]");
  EXPECT_EQ(valueOf("attachment; filename=\"C:\\temp\\a.txt\"", "filename"), "[C:\\temp\\a.txt]");
  EXPECT_EQ(valueOf("attachment; filename=\"a.txt", "filename"), "[a.txt]");
  EXPECT_EQ(valueOf("attachment; filename=my file.txt; x=y", "filename"), "[my file.txt]");
}

// Those of RFC 2231.
TEST(HeaderParameters, reads_pieces_and_extended_values) {
  EXPECT_EQ(valueOf("message/external-body; access-type=URL; URL*0=\"ftp://\"; "
                    "URL*1=\"cs.utk.edu/pub/moore/bulk-mailer/bulk-mailer.tar\"",
                    "url"),
            "[ftp://cs.utk.edu/pub/moore/bulk-mailer/bulk-mailer.tar]");
  EXPECT_EQ(valueOf("application/x-stuff; title*=us-ascii'en-us'This%20is%20%2A%2A%2Afun%2A%2A%2A",
                    "title"),
            "us-ascii[This is ***fun***]");
  EXPECT_EQ(valueOf("application/x-stuff; title*0*=us-ascii'en'This%20is%20even%20more%20; "
                    "title*1*=%2A%2A%2Afun%2A%2A%2A%20; title*2=\"isn't it!\"",
                    "title"),
            "us-ascii[This is even more ***fun*** isn't it!]");
}

TEST(HeaderParameters, puts_pieces_in_the_order_of_their_numbers) {
  EXPECT_EQ(valueOf("a; n*1=b; n*0=a; n*3=d", "n"), "[ab]");
  EXPECT_EQ(valueOf("a; n*10=k; n*0=a", "n"), "[a]");
}

TEST(HeaderParameters, takes_the_extended_form_of_several) {
  EXPECT_EQ(valueOf("a; filename=\"x\"; filename*=utf-8''%E3%81%82", "filename"),
            "utf-8[\xE3\x81\x82]");
}

TEST(HeaderParameters, reads_encoded_words_which_many_programs_write) {
  EXPECT_EQ(valueOf("a; filename=\"=?utf-8?B?44GC?=.txt\"", "filename"),
            "utf-8[\xE3\x81\x82][.txt]");
  EXPECT_EQ(valueOf("a; filename*0=\"=?utf-8?B?44\"; filename*1=\"GC?=\"", "filename"),
            "utf-8[\xE3\x81\x82]");
}

TEST(HeaderParameters, takes_no_byte_of_a_character_for_a_quotation_mark) {
  // 22 is a byte of the character between the escape sequences.
  EXPECT_EQ(valueOf("a; filename=\"\x1B$B\x25\x22\x1B(B.txt\"", "filename"),
            "[\x1B$B\x25\x22\x1B(B.txt]");
}

TEST(HeaderParameters, takes_what_is_no_field) {
  for (const char* field : {"", ";", ";;=", "a;*=b", "a;=b", "(", "\"", "a; b*=''", "a; b*0*=%"})
    (void)parameterField(field);
  EXPECT_EQ(valueOf("a; b*99999999999999999999=c", "b"), "none");
}

}  // namespace
}  // namespace ksv_cli
