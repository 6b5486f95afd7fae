#include <gtest/gtest.h>

#include "cli/mail/mail_output.h"

namespace ksv_cli {
namespace {

TEST(Rfc3339, has_the_clock_of_the_sender) {
  EXPECT_EQ(rfc3339(1709177696, 540), "2024-02-29T12:34:56+09:00");
  EXPECT_EQ(rfc3339(1709177696, -210), "2024-02-29T00:04:56-03:30");
  EXPECT_EQ(rfc3339(0, 0), "1970-01-01T00:00:00+00:00");
}

TEST(Rfc3339, has_no_year_of_five_digits) {
  EXPECT_EQ(rfc3339(253402300799, 0), "9999-12-31T23:59:59+00:00");
  EXPECT_EQ(rfc3339(253402300800, 0), "");
  EXPECT_EQ(rfc3339(0, 24 * 60), "");
}

TEST(ShownFields, are_named_with_commas_between) {
  EXPECT_EQ(shownFieldsNamed("usual").which, ShownFields::Which::kUsual);
  EXPECT_EQ(shownFieldsNamed("all").which, ShownFields::Which::kAll);
  EXPECT_EQ(shownFieldsNamed("none").which, ShownFields::Which::kNone);
  const std::vector<std::string> names = {"From", "X-A"};
  EXPECT_EQ(shownFieldsNamed("From,X-A").names, names);
}

}  // namespace
}  // namespace ksv_cli
