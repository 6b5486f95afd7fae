// Texts that are in the target charset already.
#include <filesystem>

#include "command.h"

namespace ksv_cli_tests {
namespace {

using Names = std::vector<std::string>;

const std::string kTextInSjis = bytes({0x82, 0xA0, 0x82, 0xA2});  // あい
const std::string kTextInUtf8 = "あい";

class ValidText : public CommandTest {
 protected:
  Outcome convert(Names arguments, const std::string& input = "") const {
    const Names before = {"convert", "--skip-valid", "--verbose"};
    arguments.insert(arguments.begin(), before.begin(), before.end());
    return ksv(arguments, input);
  }
};

TEST_F(ValidText, stays_as_it_is_in_place_and_is_told) {
  write("a", kTextInSjis);
  write("b", kTextInUtf8);
  write("c", "plain\r\n");
  write("d", "");
  const auto before = std::filesystem::last_write_time(path("b"));
  const Outcome outcome = convert(
      {"-f", "sjis", "-t", "utf8", "--newline", "lf", "--in-place=.bak", "a", "b", "c", "d"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.err.find("ksv: b: skipped: it is valid UTF-8 already; 6 bytes\n"),
            std::string::npos)
      << outcome.err;
  EXPECT_NE(outcome.err.find("ksv: 4 files: 1 converted, 0 unchanged, 3 skipped, 0 failed; "),
            std::string::npos)
      << outcome.err;
  EXPECT_EQ(files(), (Names{"a", "a.bak", "b", "c", "d"}));
  EXPECT_EQ(read("a"), kTextInUtf8);
  EXPECT_EQ(read("b"), kTextInUtf8);
  EXPECT_EQ(read("c"), "plain\r\n") << "nothing else is done with it either";
  EXPECT_EQ(std::filesystem::last_write_time(path("b")), before);
}

TEST_F(ValidText, is_copied_to_where_results_go) {
  write("b", kTextInUtf8 + "\r\n");
  EXPECT_EQ(convert({"-f", "sjis", "-t", "utf8", "--newline", "lf", "-o", "out", "b"}).status, 0);
  EXPECT_EQ(read("out"), kTextInUtf8 + "\r\n");
  EXPECT_EQ(convert({"-f", "sjis", "-t", "utf8", "b"}).out, kTextInUtf8 + "\r\n");
  EXPECT_EQ(convert({"-t", "utf8", "--output-dir", "to", "b"}).status, 0);
  EXPECT_EQ(read("to/b"), kTextInUtf8 + "\r\n");
}

TEST_F(ValidText, may_come_from_standard_input) {
  EXPECT_EQ(convert({"-f", "sjis", "-t", "utf8"}, kTextInUtf8).out, kTextInUtf8);
  EXPECT_EQ(convert({"-f", "sjis", "-t", "utf8"}, kTextInSjis).out, kTextInUtf8);
  EXPECT_EQ(convert({"-t", "utf8"}, std::string(3000, '\n') + kTextInUtf8).out,
            std::string(3000, '\n') + kTextInUtf8);
}

// A block is far shorter, and so is what is kept of a pipe in memory.
TEST_F(ValidText, is_looked_at_to_its_last_byte) {
  const std::string plain(5'000'000, 'a');
  const std::string late = plain + kTextInSjis;
  EXPECT_EQ(convert({"-f", "sjis", "-t", "utf8"}, late).out, plain + kTextInUtf8);
  const std::string cut = plain + "\xE3\x81";
  write("cut", cut);
  const Outcome outcome = convert({"-f", "utf8", "-t", "utf8", "--in-place", "cut"});
  EXPECT_EQ(outcome.status, 1) << "it is no whole text of UTF-8";
  EXPECT_EQ(read("cut"), cut);
}

TEST_F(ValidText, of_units_with_a_byte_order_needs_the_mark_that_would_be_written) {
  write("none", "ab");  // U+6261 without a mark
  write("little", bytes({0xFF, 0xFE, 0x42, 0x30}));
  write("big", bytes({0xFE, 0xFF, 0x30, 0x42}));
  write("bad", bytes({0xFF, 0xFE, 0x00, 0xD8}));
  const auto isSkipped = [&](const std::string& target, const std::string& name) {
    return convert({"-f", "utf8", "-t", target, "-o", "out", name}).err.find("it is valid") !=
           std::string::npos;
  };
  EXPECT_FALSE(isSkipped("utf-16", "none"));
  EXPECT_TRUE(isSkipped("utf-16", "little"));
  EXPECT_FALSE(isSkipped("utf-16", "big"));
  EXPECT_TRUE(isSkipped("utf-16be", "big"));
  EXPECT_FALSE(isSkipped("utf-16be", "little"));
  EXPECT_FALSE(isSkipped("utf-16", "bad")) << "a lone surrogate";
  EXPECT_FALSE(isSkipped("iso-10646-ucs-4", "little"));
}

TEST_F(ValidText, of_iso_2022_jp_has_its_escape_sequences) {
  const std::string mail = "\x1B$B$\"\x1B(B\n";
  write("mail", mail);
  write("plain", "abc\n");
  write("utf8", kTextInUtf8);
  const std::string told =
      convert({"-t", "iso-2022-jp", "--in-place", "mail", "plain", "utf8"}).err;
  EXPECT_NE(told.find("1 converted, 0 unchanged, 2 skipped, 0 failed"), std::string::npos) << told;
}

TEST_F(ValidText, with_several_links_is_no_failure) {
  write("a", kTextInUtf8);
  std::error_code error;
  std::filesystem::create_hard_link(path("a"), path("b"), error);
  if (error) GTEST_SKIP() << error.message();
  EXPECT_EQ(convert({"-f", "sjis", "-t", "utf8", "--in-place", "a"}).status, 0);
}

TEST_F(ValidText, has_no_report) {
  write("a", kTextInUtf8);
  const Outcome outcome = convert({"-f", "sjis", "-t", "utf8", "--dry-run", "a"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("ksv: a: skipped: it is valid UTF-8 already"), std::string::npos);
}

TEST_F(ValidText, is_not_told_apart_by_the_classic_detection) {
  const Outcome outcome = convert({"-t", "utf8", "--classic"}, kTextInUtf8);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.err.find("--skip-valid"), std::string::npos);
}

}  // namespace
}  // namespace ksv_cli_tests
