// The command line itself: help, version, and what cannot be followed.

#include <filesystem>
#include <utility>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class Usage : public CommandTest {
 protected:
  // Wrong usage is one line on standard error that names what is wrong.
  void expectWrong(const std::vector<std::string>& arguments, const std::string& reason) const {
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.substr(0, 5), "ksv: ");
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
  }
};

TEST_F(Usage, version_prints_name_and_version) {
  const Outcome outcome = ksv({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "ksv " KSV_VERSION "\n");
}

TEST_F(Usage, help_is_everywhere) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                    {"convert", "--help"},
                                                    {"detect", "--help"},
                                                    {"check", "--help"},
                                                    {"charsets", "--help"},
                                                    {"tables", "--help"},
                                                    {"cut", "--help"},
                                                    {"doctor", "--help"},
                                                    {"-h"}}) {
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("Usage: ksv"), std::string::npos) << outcome.out;
  }
}

TEST_F(Usage, help_lists_the_jobs_under_what_they_are_for) {
  const std::string help = ksv({"--help"}).out;
  const std::vector<std::pair<std::string, std::vector<std::string>>> groups = {
      {"Convert and cut", {"convert", "cut"}},
      {"Judge and check", {"detect", "check"}},
      {"Charset directory", {"charsets", "tables", "lint"}},
      {"Documents", {"summary", "ole"}},
      {"Installation", {"doctor"}}};
  for (const auto& [heading, jobs] : groups) {
    const size_t begin = help.find("\n" + heading + ":\n");
    ASSERT_NE(begin, std::string::npos) << heading << "\n" << help;
    const std::string group = help.substr(begin, help.find("\n\n", begin + 1) - begin);
    for (const std::string& job : jobs)
      EXPECT_NE(group.find("\n  " + job + " "), std::string::npos) << job << group;
  }
}

TEST_F(Usage, help_of_convert_tells_every_option) {
  const std::string help = ksv({"convert", "--help"}).out;
  for (const std::string option :
       {"-t", "-f", "-o", "--output-dir", "--in-place", "--newline", "--bom", "--byte-order",
        "--invalid", "--unmappable", "--replacement", "--references", "--language", "-j"})
    EXPECT_NE(help.find(option), std::string::npos) << option;
  EXPECT_EQ(help.find("--block-size"), std::string::npos);
}

TEST_F(Usage, needs_a_job_that_exists) {
  expectWrong({},
              "a job is needed: convert, detect, check, charsets, tables, cut, summary, ole, mail, "
              "lint, doctor (see 'ksv --help')");
  expectWrong({"translate"}, "translate");
  expectWrong({"--frobnicate"}, "--frobnicate");
}

TEST_F(Usage, is_told_in_one_line_whatever_the_arguments_hold) {
  expectWrong({"a\nb"}, "a b is neither a job nor an option");
  expectWrong({"a\x1B[2J"}, "a\\x1B[2J is neither a job nor an option");
  expectWrong({"charsets", "--a\nb"}, "--a b");
}

TEST_F(Usage, tells_a_bad_number_in_a_few_words) {
  const std::string bytes = "is no number from 0 to 9223372036854775807 (see 'ksv cut --help')\n";
  for (const std::string number : {"abc", "-3", "3x", "", "1e3", "0x10", "9223372036854775808"}) {
    const Outcome outcome = ksv({"cut", "-c", "utf8", "-n", number}, "text");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "ksv: cut: --bytes: '" + number + "' " + bytes);
  }
  for (const std::string job : {"detect", "check", "summary"}) {
    const Outcome outcome = ksv({job, "-j", "0"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "ksv: " + job + ": --jobs: '0' is no number from 1 to 256 (see 'ksv " +
                               job + " --help')\n");
  }
  expectWrong({"convert", "-t", "utf8", "-j", "257"}, "--jobs: '257' is no number from 1 to 256");
  expectWrong({"convert", "-t", "utf8", "-j", "x"}, "--jobs: 'x' is no number from 1 to 256");
}

TEST_F(Usage, refuses_what_other_programs_take_behind_a_charset) {
  expectWrong({"convert", "-t", "latin1//TRANSLIT"}, "--unmappable replace");
  expectWrong({"convert", "-f", "utf8//IGNORE", "-t", "latin1"}, "--invalid skip");
}

TEST_F(Usage, convert_needs_a_target) {
  expectWrong({"convert", "-f", "utf8"}, "--to is required");
}

TEST_F(Usage, convert_takes_charsets_of_the_directory_only) {
  expectWrong({"convert", "-f", "klingon", "-t", "utf8"}, "unknown charset klingon");
  expectWrong({"convert", "-t", "klingon", "-f", "utf8"}, "ksv charsets");
  expectWrong({"convert", "-f", "utf8", "-t", "UTF-7"}, "UTF-7 can be read, but not written");
  expectWrong({"convert", "-f", "utf8", "-t", "hz"}, "hz can be read, but not written");
}

TEST_F(Usage, convert_takes_one_place_for_the_results) {
  write("a", "");
  write("b", "");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "-o", "x", "a", "b"}, "-o takes one input");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "-o", "x", "--in-place", "a"}, "only one");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", "x", "--in-place", "a"},
              "only one");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", "x", "-o", "y", "a"},
              "only one");
}

TEST_F(Usage, convert_needs_a_file_name_where_the_result_takes_it_over) {
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--in-place"}, "standard input");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", "x", "-"}, "standard input");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "-", "-"}, "named twice");
}

TEST_F(Usage, convert_overwrites_no_input_and_no_other_result) {
  std::filesystem::create_directory(path("dir"));
  write("a", "a");
  write("dir/a", "b");
  std::filesystem::create_hard_link(path("a"), path("hard"));
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "-o", "a", "a"}, "is an input as well");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "-o", "hard", "a"}, "is an input as well");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", ".", "a"},
              "is an input as well");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--output-dir", "x", "a", "dir/a"},
              "written twice");
  expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--in-place", "a", "./a"}, "written twice");
  EXPECT_EQ(read("a"), "a");
  EXPECT_FALSE(exists("x"));
}

TEST_F(Usage, convert_checks_the_values_of_its_options) {
  const std::vector<std::vector<std::string>> wrong = {{"--newline", "nel"},
                                                       {"--byte-order", "middle"},
                                                       {"--invalid", "keep"},
                                                       {"--unmappable", "drop"},
                                                       {"-j", "0"},
                                                       {"-j", "many"},
                                                       {"--references", "octal"},
                                                       {"--block-size", "1"},
                                                       {"--in-place=a/b"}};
  for (const std::vector<std::string>& options : wrong) {
    std::vector<std::string> arguments = {"convert", "-f", "utf8", "-t", "ucs-2", "a"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    expectWrong(arguments, "");
  }
}

TEST_F(Usage, replacement_is_one_character_up_to_ffff_of_the_target) {
  for (const std::string text : {"", "ab", "あい", "😀"})
    expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--replacement", text},
                "--replacement takes one character");
  expectWrong({"convert", "-f", "utf8", "-t", "sjis", "--replacement", "é"},
              "the replacement é is not in Shift_JIS");
}

TEST_F(Usage, references_are_for_ucs2_targets) {
  expectWrong({"convert", "-f", "utf8", "-t", "utf-16", "--references", "hex"}, "UCS-2");
}

TEST_F(Usage, byte_order_agrees_with_the_name_of_the_target) {
  expectWrong({"convert", "-f", "utf8", "-t", "utf-16be", "--byte-order", "little"}, "contradicts");
}

TEST_F(Usage, language_is_a_name_in_ascii) {
  for (const std::string& name : {std::string(), std::string("日本"), std::string(260, 'a')})
    expectWrong({"convert", "-f", "utf8", "-t", "utf8", "--language", name}, "--language takes");
}

// The library for options takes values in brackets for lists.
TEST_F(Usage, brackets_are_part_of_a_name) {
  write("a", bytes({0x82, 0xA0}));
  write("[a]", bytes({0x82, 0xA2}));
  write("[a,b]", bytes({0x82, 0xA4}));
  EXPECT_EQ(ksv({"convert", "-f", "sjis", "-t", "utf8", "[a]", "[a,b]"}).out, "いう");
  EXPECT_EQ(ksv({"convert", "-fsjis", "-tutf8", "--in-place", "[a]"}).status, 0);
  EXPECT_EQ(read("a"), bytes({0x82, 0xA0}));
  EXPECT_EQ(read("[a]"), "い");
  EXPECT_EQ(ksv({"check", "[b]", "a", "-", "[]"}).err,
            "ksv: [b]: No such file or directory\nksv: []: No such file or directory\n");
  EXPECT_EQ(ksv({"convert", "-fsjis", "-tutf8", "a", "-o", "[o]"}).status, 0);
  EXPECT_EQ(read("[o]"), "あ");
  EXPECT_EQ(
      ksv({"detect", "-r", "--exclude", "[a]*", "--exclude", "?o]", "--exclude", "?a*", "."}).out,
      "");
  EXPECT_EQ(
      ksv({"tables", "[x]"}).err,
      "ksv: tables: The following argument was not expected: [x] (see 'ksv tables --help')\n");
}

TEST_F(Usage, detect_and_check_name_their_inputs_once) {
  write("list", "-\n");
  expectWrong({"detect", "-", "-"}, "named twice");
  expectWrong({"check", "-", "-"}, "named twice");
  expectWrong({"detect", "-", "--files-from", "-"}, "named twice");
  expectWrong({"detect", "-", "--files-from", "list"}, "named twice");
  expectWrong({"detect", "--files-from", "missing"}, "missing");
  expectWrong({"detect", "-j", "0"}, "");
  expectWrong({"check", "--language", "Japanese"}, "--language");
}

TEST_F(Usage, the_other_jobs_take_no_operands) {
  expectWrong({"charsets", "x"}, "x");
  expectWrong({"tables", "x"}, "x");
}

}  // namespace
}  // namespace ksv_cli_tests
