// Addresses in all the forms that fields have.

#include "cli/mail/mail_addresses.h"

#include <gtest/gtest.h>

#include <string>

namespace ksv_cli {
namespace {

// "name<address>" of each.
std::string addressesOf(const std::string& field) {
  std::string shown;
  for (const MailAddress& address : addressesIn(field))
    shown += (shown.empty() ? "" : "|") + address.name + "<" + address.address + ">";
  return shown;
}

TEST(MailAddresses, reads_plain_and_named_ones) {
  EXPECT_EQ(addressesOf("a@b.c"), "<a@b.c>");
  EXPECT_EQ(addressesOf("Ann B. <a@b.c>, d@e.f"), "Ann B.<a@b.c>|<d@e.f>");
}

TEST(MailAddresses, keeps_a_comma_in_quotes) {
  EXPECT_EQ(addressesOf("\"B, \\\"Ann\\\"\" <a@b.c>, d@e.f"), "B, \"Ann\"<a@b.c>|<d@e.f>");
}

TEST(MailAddresses, takes_a_comment_for_a_name) {
  EXPECT_EQ(addressesOf("a@b.c (Ann (B.)), <d@e.f> (D)"), "Ann (B.)<a@b.c>|D<d@e.f>");
}

TEST(MailAddresses, reads_groups) {
  EXPECT_EQ(addressesOf("friends: a@b.c, D <d@e.f>; g@h.i"), "<a@b.c>|D<d@e.f>|<g@h.i>");
  EXPECT_EQ(addressesOf("undisclosed-recipients:;"), "");
}

TEST(MailAddresses, leaves_out_a_route) { EXPECT_EQ(addressesOf("A <@x,@y:a@b.c>"), "A<a@b.c>"); }

TEST(MailAddresses, takes_no_byte_of_a_character_for_a_sign) {
  // 2C and 3C are bytes of characters.
  EXPECT_EQ(addressesOf("\x1B$B\x25\x2C\x3B\x3C\x1B(B <a@b.c>"),
            "\x1B$B\x25\x2C\x3B\x3C\x1B(B<a@b.c>");
}

TEST(MailAddresses, takes_what_is_no_address) {
  EXPECT_EQ(addressesOf(""), "");
  EXPECT_EQ(addressesOf(", ,"), "");
  EXPECT_EQ(addressesOf("Ann <a@b.c"), "Ann<a@b.c>");
  EXPECT_EQ(addressesOf("\"Ann"), "<Ann>");
  EXPECT_EQ(addressesOf("(Ann"), "");
}

}  // namespace
}  // namespace ksv_cli
