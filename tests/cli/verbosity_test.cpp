// What is told of files of which nothing has to be told, and what not.
#include <algorithm>

#include "command.h"

namespace ksv_cli_tests {
namespace {

using Names = std::vector<std::string>;

class Told : public CommandTest {
 protected:
  // With the time left out, of which nothing can be foretold.
  static std::string withoutTime(std::string text) {
    const size_t time = text.find(" in ");
    if (time != std::string::npos) text.replace(time, text.find('\n', time) - time, " in ...");
    return text;
  }
};

TEST_F(Told, is_verbosely_a_line_for_each_file_and_the_sums) {
  write("a", bytes({0x82, 0xA0}));
  write("b", "plain\n");
  write("c", bytes({0x82, 0x0A}));
  const Outcome outcome = ksv({"convert", "--verbose", "-f", "sjis", "-t", "utf8", "--invalid",
                               "skip", "--in-place", "a", "b", "c", "none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(withoutTime(outcome.err),
            "ksv: a: converted: read as Shift_JIS: --from names it; 2 bytes, 3 written\n"
            "ksv: b: unchanged: read as Shift_JIS: --from names it; 6 bytes\n"
            "ksv: c: converted: read as Shift_JIS: --from names it; 2 bytes, 1 written; "
            "1 invalid byte skipped, 0 characters replaced\n"
            "ksv: none: No such file or directory\n"
            "ksv: 4 files: 2 converted, 1 unchanged, 0 skipped, 1 failed; 10 bytes in ...\n");
}

TEST_F(Told, is_verbosely_why_a_charset_was_found) {
  const Outcome outcome = ksv({"convert", "--verbose", "-t", "sjis"}, "\xEF\xBB\xBF\xE3\x81\x82");
  EXPECT_EQ(withoutTime(outcome.err),
            "ksv: standard input: converted: read as UTF-8: it begins with a byte-order mark; "
            "6 bytes, 2 written\n"
            "ksv: 1 file: 1 converted, 0 unchanged, 0 skipped, 0 failed; 6 bytes in ...\n");
}

TEST_F(Told, is_quietly_what_gives_status_1) {
  write("a",
        "\xEF\xBB\xBF"
        "abc\xFF");
  write("b", "\xE3\x81\x82");
  const Names call = {"convert",      "--quiet", "-t", "us-ascii", "--invalid", "skip",
                      "--unmappable", "replace", "-j", "2",        "a",         "b"};
  Outcome outcome = ksv(call);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "") << "neither charsets nor counts";
  Names strict = call;
  strict.insert(strict.end(), {"--strict", "none"});
  outcome = ksv(strict);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 3) << outcome.err;
  EXPECT_NE(outcome.err.find("ksv: none: No such file or directory\n"), std::string::npos);
  EXPECT_NE(outcome.err.find("ksv: b: 0 invalid bytes skipped, 1 character replaced\n"),
            std::string::npos);
}

TEST_F(Told, are_the_sums_of_every_job_that_takes_several_files) {
  write("a", "abc");
  write("b", "abcd");
  for (const std::string job : {"detect", "check"}) {
    EXPECT_EQ(withoutTime(ksv({job, "--verbose", "a", "b"}).err),
              "ksv: 2 files: 2 done, 0 failed; 7 bytes in ...\n");
    EXPECT_EQ(withoutTime(ksv({job, "--verbose", "a", "none"}).err),
              "ksv: none: No such file or directory\n"
              "ksv: 2 files: 1 done, 1 failed; 3 bytes in ...\n");
    EXPECT_EQ(ksv({job, "--quiet", "a", "none"}).err, "ksv: none: No such file or directory\n");
  }
  EXPECT_EQ(withoutTime(ksv({"summary", "--verbose", "a"}).err),
            "ksv: a: is not a compound document (offset 0)\n"
            "ksv: 1 file: 0 done, 1 failed; 0 bytes in ...\n");
}

TEST_F(Told, cannot_be_both_more_and_less) {
  for (const Names& job : {Names{"convert", "-t", "utf8"}, {"detect"}, {"check"}, {"summary"}}) {
    Names call = job;
    call.insert(call.end(), {"--quiet", "--verbose"});
    const Outcome outcome = ksv(call, "abc");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("--quiet and --verbose contradict each other"), std::string::npos)
        << outcome.err;
  }
}

}  // namespace
}  // namespace ksv_cli_tests
