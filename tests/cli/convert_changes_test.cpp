// What ksv convert does to characters on their way, and what it tells of those that are lost.

#include <nlohmann/json.hpp>
#include <string>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class ConvertChanges : public CommandTest {
 protected:
  Outcome converted(const std::string& from, const std::string& to,
                    std::vector<std::string> options, const std::string& text) const {
    options.insert(options.begin(), {"convert", "-f", from, "-t", to});
    return ksv(options, text);
  }
};

// U+00E9, an emoji and a byte that is no UTF-8.
constexpr char kLost[] = "a\xC3\xA9\xF0\x9F\x98\x80\xFFz";

TEST_F(ConvertChanges, write_what_each_policy_says) {
  const auto by = [&](const std::string& invalid, const std::string& unmappable) {
    const Outcome outcome =
        converted("utf8", "sjis", {"--invalid", invalid, "--unmappable", unmappable}, kLost);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "ksv: standard input: 1 invalid byte skipped, 2 characters replaced\n");
    return outcome.out;
  };
  EXPECT_EQ(by("skip", "skip"), "az");
  EXPECT_EQ(by("replace", "replace"), "a?\x81\xAC?z");
  EXPECT_EQ(by("hex", "hex"), "a&#xE9;&#x1F600;&#xFF;z");
  EXPECT_EQ(by("decimal", "decimal"), "a&#233;&#128512;&#255;z");
  EXPECT_EQ(by("escape", "escape"), "a\\u{E9}\\u{1F600}\\xFFz");
  EXPECT_EQ(by("percent", "percent"), "a%C3%A9%F0%9F%98%80%FFz");
  EXPECT_EQ(by("skip", "look-alike"), "ae?z");
}

TEST_F(ConvertChanges, follow_a_profile_by_its_name_and_from_a_file) {
  EXPECT_EQ(converted("sjis", "utf8", {"--profile", "jis"}, "\x81\x60").out, "\xE3\x80\x9C");
  EXPECT_EQ(converted("sjis", "utf8", {"--profile", "windows"}, "\x81\x60").out, "\xEF\xBD\x9E");
  write("own.txt", "not a profile\n");
  const Outcome wrong = converted("sjis", "utf8", {"--profile", path("own.txt")}, "a");
  EXPECT_EQ(wrong.status, 2);
  EXPECT_NE(wrong.err.find("line 1 of the profile"), std::string::npos) << wrong.err;
  const Outcome unknown = converted("sjis", "utf8", {"--profile", "nobodys"}, "a");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_NE(unknown.err.find("neither a known one nor a file"), std::string::npos) << unknown.err;
}

TEST_F(ConvertChanges, normalize_and_change_widths) {
  EXPECT_EQ(converted("utf8", "sjis", {"--normalize", "NFC"}, "\xE3\x81\x8B\xE3\x82\x99").out,
            "\x82\xAA");
  EXPECT_EQ(
      converted("sjis", "sjis", {"--width", "full-katakana,half-ascii"}, "\xB6\xDE\x82\x60").out,
      "\x83\x4B\x41");
  EXPECT_EQ(converted("sjis", "sjis", {"--width", "wide"}, "a").status, 2);
  EXPECT_EQ(converted("sjis", "sjis", {"--width", "full-ascii,half-ascii"}, "a").status, 2);
}

TEST_F(ConvertChanges, report_losses_and_write_nothing_else_in_a_dry_run) {
  write("lost.txt", kLost);
  write("sound.txt", "abc");
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "--dry-run", "--report=json",
                               path("lost.txt"), path("sound.txt")});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  const size_t end = outcome.out.find('\n');
  const auto lost = nlohmann::json::parse(outcome.out.substr(0, end));
  EXPECT_EQ(lost["path"], path("lost.txt"));
  EXPECT_EQ(lost["unmappable"], 2);
  EXPECT_EQ(lost["invalid"], 1);
  ASSERT_EQ(lost["losses"].size(), 3u);
  EXPECT_EQ(lost["losses"][1]["code_point"], "U+1F600");
  EXPECT_EQ(lost["losses"][1]["class"], "emoji");
  EXPECT_EQ(lost["losses"][1]["offset"], 3);
  const auto sound = nlohmann::json::parse(outcome.out.substr(end + 1));
  EXPECT_EQ(sound["losses"].size(), 0u);
  EXPECT_EQ(ksv({"convert", "-f", "utf8", "-t", "sjis", "--dry-run", path("sound.txt")}).out,
            path("sound.txt") + ": nothing is lost\n");
  const Outcome strict =
      ksv({"convert", "-f", "utf8", "-t", "sjis", "--dry-run", "--strict", path("lost.txt")});
  EXPECT_EQ(strict.status, 1);
  EXPECT_EQ(files(), (std::vector<std::string>{"lost.txt", "sound.txt"}));
}

// The conversion fails at the first loss; the report goes on to the end of the text.
TEST_F(ConvertChanges, report_the_whole_text_where_its_conversion_fails) {
  write("lost.txt", kLost);
  const Outcome outcome = ksv({"convert", "-f", "utf8", "-t", "sjis", "--report", "-o",
                               path("made.txt"), path("lost.txt")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("3 losses in 3 places"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("U+1F600"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("U+00E9 is not in Shift_JIS at byte offset 1"), std::string::npos)
      << outcome.err;
  EXPECT_FALSE(exists("made.txt"));
}

TEST_F(ConvertChanges, report_beside_the_result) {
  const Outcome outcome =
      converted("utf8", "sjis", {"--report", "--invalid", "skip", "--unmappable", "hex"}, kLost);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "a&#xE9;&#x1F600;z");
  EXPECT_NE(outcome.err.find("looks like e"), std::string::npos) << outcome.err;
}

TEST_F(ConvertChanges, refuse_reports_that_nobody_knows_and_dry_runs_that_write) {
  EXPECT_EQ(converted("utf8", "sjis", {"--report=xml"}, "a").status, 2);
  EXPECT_EQ(converted("utf8", "sjis", {"--dry-run", "-o", path("x")}, "a").status, 2);
}

TEST_F(ConvertChanges, read_and_write_encodings_with_shifts) {
  EXPECT_EQ(converted("cp930", "utf8", {}, "\xC1\x0E\x44\x81\x0F\xC2").out,
            "A\xE3\x81\x82"
            "B");
  EXPECT_EQ(converted("utf8", "iso-2022-kr", {}, "a\xEA\xB0\x80").out, "\x1B$)Ca\x0E\x30\x21\x0F");
}

}  // namespace
}  // namespace ksv_cli_tests
