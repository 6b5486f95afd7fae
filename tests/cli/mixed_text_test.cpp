// ksv convert --mixed: each part of a text by its own charset.

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

using nlohmann::json;

class Mixed : public CommandTest {
 protected:
  Mixed() { write("mixed", utf8_ + sjis_ + eucJp_); }

  void expectWrong(std::vector<std::string> options, const std::string& reason) const {
    std::vector<std::string> call = {"convert", "-t", "UTF-8", "--mixed", "mixed"};
    call.insert(call.end(), options.begin(), options.end());
    const Outcome outcome = ksv(call);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
  }

  const std::string utf8_ =
      "山路を登りながら、こう考えた。智に働けば角が立つ。情に棹させば流される。\n"
      "意地を通せば窮屈だ。とかくに人の世は住みにくい。\n";
  const std::string sjis_ = encoded("WINDOWS31J", utf8_);
  const std::string eucJp_ = encoded("EUC-JP-MS", utf8_);
  const std::string told_ = "ksv: mixed: read as UTF-8, WINDOWS31J and EUC-JP-MS: 3 segments\n";
};

TEST_F(Mixed, converts_each_part_from_its_own_charset) {
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--mixed", "mixed"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, utf8_ + utf8_ + utf8_);
  EXPECT_EQ(outcome.err, told_);
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--mixed"}, read("mixed")).out, outcome.out);
  EXPECT_EQ(ksv({"convert", "-t", "SJIS", "--mixed", "mixed"}).out, sjis_ + sjis_ + sjis_);
}

TEST_F(Mixed, text_in_one_charset_and_an_empty_one_are_converted_too) {
  const Outcome one = ksv({"convert", "-t", "UTF-8", "--mixed"}, sjis_);
  EXPECT_EQ(one.out, utf8_);
  EXPECT_EQ(one.err, "ksv: standard input: read as WINDOWS31J: 1 segment\n");
  const Outcome none = ksv({"convert", "-t", "UTF-8", "--mixed"}, "");
  EXPECT_EQ(none.status, 0);
  EXPECT_EQ(none.err, "ksv: standard input: read as UTF-8: it is empty\n");
}

TEST_F(Mixed, result_has_one_mark_in_front) {
  const std::string out =
      ksv({"convert", "-t", "UTF-8", "--bom", "--newline", "crlf", "--mixed", "mixed"}).out;
  EXPECT_EQ(out.find("\xEF\xBB\xBF"), 0u);
  EXPECT_EQ(out.rfind("\xEF\xBB\xBF"), 0u);
  EXPECT_EQ(std::count(out.begin(), out.end(), '\r'), 6);
}

TEST_F(Mixed, escape_sequences_end_where_a_part_does) {
  const std::string out = ksv({"convert", "-t", "ISO-2022-JP", "--mixed", "mixed"}).out;
  EXPECT_EQ(ksv({"convert", "-f", "ISO-2022-JP", "-t", "UTF-8"}, out).out, utf8_ + utf8_ + utf8_);
}

TEST_F(Mixed, takes_the_place_of_the_text) {
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--mixed", "--in-place=.orig", "mixed"}).status, 0);
  EXPECT_EQ(read("mixed"), utf8_ + utf8_ + utf8_);
  EXPECT_EQ(read("mixed.orig"), utf8_ + sjis_ + eucJp_);
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--mixed", "--output-dir", "out", "mixed.orig"}).status,
            0);
  EXPECT_EQ(read("out/mixed.orig"), utf8_ + utf8_ + utf8_);
}

TEST_F(Mixed, leaves_alone_what_is_in_the_target_already) {
  write("done", utf8_);
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--mixed", "--skip-valid", "--in-place",
                               "--verbose", "done", "mixed"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.err.find("ksv: done: skipped: it is valid UTF-8 already;"), std::string::npos);
  EXPECT_EQ(read("mixed"), utf8_ + utf8_ + utf8_);
}

TEST_F(Mixed, parts_are_told_verbosely_and_in_records) {
  const Outcome outcome =
      ksv({"convert", "-t", "UTF-8", "--mixed", "--verbose", "--json", "-o", "new", "mixed"});
  std::istringstream lines(outcome.err);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line.find("ksv: mixed: UTF-8 ("), 0u) << line;
  std::getline(lines, line);
  EXPECT_EQ(line.find("ksv: mixed: Shift_JIS ("), 0u) << line;
  EXPECT_TRUE(line.ends_with(" at byte offset " + std::to_string(utf8_.size()) + ", " +
                             std::to_string(sjis_.size()) + " bytes"))
      << line;
  const json record = json::parse(outcome.out);
  EXPECT_EQ(record.at("source"), "UTF-8,WINDOWS31J,EUC-JP-MS");
  ASSERT_EQ(record.at("segments").size(), 3u);
  EXPECT_EQ(record.at("segments")[2].at("offset"), utf8_.size() + sjis_.size());
  EXPECT_EQ(record.at("segments")[2].at("length"), eucJp_.size());
  EXPECT_EQ(record.at("segments")[2].at("charset"), "EUC-JP");
  EXPECT_EQ(record.at("segments")[2].at("decodeAs"), "EUC-JP-MS");
}

TEST_F(Mixed, part_whose_charset_is_not_clear_fails_the_text) {
  const std::string unclear = "\xB1\xB2\n";  // a character or two in many charsets
  write("mixed", utf8_ + unclear);
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--mixed", "--in-place", "mixed"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("ksv: mixed: a segment may be "), 0u) << outcome.err;
  EXPECT_NE(outcome.err.find(" at byte offset " + std::to_string(utf8_.size()) + " (line 3)\n"),
            std::string::npos)
      << outcome.err;
  EXPECT_EQ(read("mixed"), utf8_ + unclear);
  EXPECT_EQ(files(), std::vector<std::string>{"mixed"});
  EXPECT_EQ(ksv({"convert", "-t", "UTF-8", "--mixed", "--guess", "mixed"}).status, 0);
}

TEST_F(Mixed, text_that_is_none_fails) {
  const std::string picture("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1", 24);
  for (const std::string option : {"--mixed", "--guess"}) {
    const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--mixed", option}, picture);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "ksv: standard input: no charset fits a segment at byte offset 0 (line 1)\n");
  }
}

TEST_F(Mixed, problems_of_a_part_have_their_places_in_the_text) {
  const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--mixed", "--normalize", "nfc", "mixed"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  write("late", "plain\n" + sjis_);
  const Outcome unmappable = ksv({"convert", "-t", "ISO-8859-1", "--mixed", "late"});
  EXPECT_EQ(unmappable.status, 1);
  EXPECT_NE(unmappable.err.find("U+5C71 is not in ISO-8859-1 at byte offset 6\n"),
            std::string::npos)
      << unmappable.err;
  const Outcome replaced =
      ksv({"convert", "-t", "US-ASCII", "--mixed", "--unmappable", "replace", "--strict", "mixed"});
  EXPECT_EQ(replaced.status, 1);
  EXPECT_NE(replaced.err.find("characters replaced\n"), std::string::npos) << replaced.err;
}

TEST_F(Mixed, run_can_be_gone_on_with_and_taken_back) {
  const std::vector<std::string> call = {"convert",          "-t",     "UTF-8",      "--mixed",
                                         "--in-place=.orig", "--json", "--manifest", "m",
                                         "--resume",         "mixed"};
  const std::string record = ksv(call).out;
  const Outcome again = ksv(call);
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(again.out, record) << "what was done is told as it was";
  EXPECT_EQ(read("mixed"), utf8_ + utf8_ + utf8_);
  const Outcome other =
      ksv({"convert", "-t", "UTF-8", "--in-place=.orig", "--manifest", "m", "--resume", "mixed"});
  EXPECT_EQ(other.status, 2);
  EXPECT_NE(other.err.find("the run to resume had yes for --mixed, not nothing"), std::string::npos)
      << other.err;
  EXPECT_EQ(ksv({"convert", "--undo", "m"}).status, 0);
  EXPECT_EQ(read("mixed"), utf8_ + sjis_ + eucJp_);
}

TEST_F(Mixed, goes_with_nothing_that_needs_one_charset) {
  expectWrong({"-f", "UTF-8"}, "it goes without --from");
  expectWrong({"--classic"}, "--classic does not go with --mixed");
  expectWrong({"--repair"}, "--mixed and --repair do not go together");
  expectWrong({"--report"}, "--mixed has no report");
  expectWrong({"--dry-run"}, "--mixed has no report");
}

// The command says so before it reads.
TEST_F(Mixed, text_that_is_too_long_to_be_held_fails) {
  const std::string path = this->path("long");
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(std::fseek(file, 1024 * 1024 * 1024, SEEK_SET), 0);
  for (int i = 0; i < 2; ++i) ASSERT_EQ(std::fseek(file, 1024 * 1024 * 1024 - i, SEEK_CUR), 0);
  std::fputc('a', file);
  std::fclose(file);
  for (const std::vector<std::string>& call :
       {std::vector<std::string>{"convert", "-t", "UTF-8", "--mixed", "long"},
        {"convert", "-f", "UTF-8", "-t", "UTF-8", "--repair", "long"},
        {"detect", "--segments", "long"}}) {
    const Outcome outcome = ksv(call);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "ksv: long: is longer than 2 GiB, and would have to be held in memory as a whole\n");
  }
}

}  // namespace
}  // namespace ksv_cli_tests
