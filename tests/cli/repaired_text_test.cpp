// ksv convert --repair: lines of UTF-8 that were taken for another charset, and written as UTF-8
// once more.

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "command.h"

namespace ksv_cli_tests {
namespace {

using nlohmann::json;

class Repair : public CommandTest {
 protected:
  Repair() { write("text", plain_ + twice_ + lost_); }

  const std::string once_ = "caf\xC3\xA9 au lait, d\xC3\xA9j\xC3\xA0 vu, na\xC3\xAFve\n";
  // Each byte of the above taken for windows-1252: é is Ã©, and à Ã and a no-break space.
  const std::string twice_ =
      "caf\xC3\x83\xC2\xA9 au lait, d\xC3\x83\xC2\xA9j\xC3\x83\xC2\xA0 vu, na\xC3\x83\xC2\xAFve\n";
  // Of à only its first byte is left: U+FFFD stands for the second.
  const std::string lost_ =
      "d\xC3\x83\xC2\xA9j\xC3\x83\xEF\xBF\xBD vu, caf\xC3\x83\xC2\xA9, na\xC3\x83\xC2\xAFve\n";
  const std::string plain_ = "plain\n";
  const std::string told_ = "ksv: text: 1 line repaired, 1 lost, 0 ambiguous\n";
};

TEST_F(Repair, gives_lines_back_their_characters) {
  const Outcome outcome = ksv({"convert", "-f", "UTF-8", "-t", "UTF-8", "--repair", "text"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, plain_ + once_ + lost_);
  EXPECT_EQ(outcome.err, told_);
  const Outcome found = ksv({"convert", "-t", "UTF-8", "--repair"}, plain_ + twice_);
  EXPECT_EQ(found.out, plain_ + once_);
  EXPECT_NE(found.err.find("ksv: standard input: read as UTF-8"), std::string::npos) << found.err;
}

TEST_F(Repair, comes_before_the_conversion) {
  write("text", twice_);
  EXPECT_EQ(ksv({"convert", "-f", "UTF-8", "-t", "ISO-8859-1", "--repair", "text"}).out,
            "caf\xE9 au lait, d\xE9j\xE0 vu, na\xEFve\n");
  const Outcome outcome = ksv({"convert", "-f", "UTF-8", "-t", "Shift_JIS", "--repair", "text"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: text: U+00E9 is not in Shift_JIS at byte offset 3 of the repaired text\n");
}

TEST_F(Repair, leaves_a_text_alone_that_was_written_once) {
  for (const std::string& text : {once_, plain_, std::string()}) {
    write("text", text);
    const Outcome outcome =
        ksv({"convert", "-t", "UTF-8", "--repair", "--quiet", "--in-place", "--json", "text"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(read("text"), text);
    EXPECT_EQ(json::parse(outcome.out).at("result"), "unchanged");
    EXPECT_EQ(json::parse(outcome.out).at("repair").at("repaired"), 0);
    EXPECT_EQ(json::parse(outcome.out).at("repair").at("firstLeft"), nullptr);
  }
}

TEST_F(Repair, of_lines_that_lost_bytes_is_a_loss) {
  const Outcome outcome = ksv({"convert", "-f", "UTF-8", "-t", "UTF-8", "--repair", "--strict",
                               "--in-place=.orig", "--json", "text"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, told_);
  EXPECT_EQ(read("text"), plain_ + once_ + lost_) << "the result is written";
  EXPECT_EQ(read("text.orig"), plain_ + twice_ + lost_);
  const json record = json::parse(outcome.out);
  EXPECT_EQ(record.at("result"), "converted");
  EXPECT_EQ(record.at("error").at("reason"), "1 line repaired, 1 lost, 0 ambiguous");
  const json repair = record.at("repair");
  EXPECT_EQ(repair.at("repaired"), 1);
  EXPECT_EQ(repair.at("lost"), 1);
  EXPECT_EQ(repair.at("ambiguous"), 0);
  EXPECT_EQ(repair.at("misreadAs"), "windows-1252");
  EXPECT_EQ(repair.at("firstLeft"), plain_.size() + twice_.size());
  EXPECT_EQ(repair.at("firstLeftLine"), 3);
}

TEST_F(Repair, is_told_in_more_words_verbosely) {
  const Outcome outcome =
      ksv({"convert", "-f", "UTF-8", "-t", "UTF-8", "--repair", "--verbose", "text"});
  const std::string words =
      "; 1 line repaired, 1 lost, 0 ambiguous; misread as windows-1252; "
      "line 3 at byte offset " +
      std::to_string(plain_.size() + twice_.size()) + " is left\n";
  EXPECT_NE(outcome.err.find(words), std::string::npos) << outcome.err;
}

TEST_F(Repair, is_for_UTF_8) {
  write("latin", "caf\xE9 au lait, d\xE9j\xE0 vu, tr\xE8s na\xEFve\n");
  const Outcome found = ksv({"convert", "-t", "UTF-8", "--guess", "--repair", "latin"});
  EXPECT_EQ(found.status, 1);
  EXPECT_NE(found.err.find(", and --repair is for UTF-8\n"), std::string::npos) << found.err;
  const Outcome given = ksv({"convert", "-f", "latin1", "-t", "UTF-8", "--repair", "latin"});
  EXPECT_EQ(given.status, 2);
  EXPECT_NE(given.err.find("--repair is for UTF-8, not for ISO-8859-1"), std::string::npos);
  const Outcome wrong = ksv({"convert", "-f", "UTF-8", "-t", "UTF-8", "--repair", "latin"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.err, "ksv: latin: is no UTF-8 at byte offset 3\n");
}

TEST_F(Repair, is_looked_at_by_the_report) {
  const Outcome outcome =
      ksv({"convert", "-f", "UTF-8", "-t", "ISO-8859-1", "--repair", "--dry-run", "text"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find("U+00E9"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("U+FFFD"), std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.err, told_);
}

TEST_F(Repair, run_can_be_gone_on_with) {
  const std::vector<std::string> call = {
      "convert",  "-f",     "UTF-8",      "-t", "UTF-8",    "--repair", "--in-place=.orig",
      "--strict", "--json", "--manifest", "m",  "--resume", "text"};
  const Outcome first = ksv(call);
  EXPECT_EQ(first.status, 1);
  const Outcome again = ksv(call);
  EXPECT_EQ(again.status, 1) << "what was lost then is lost still";
  EXPECT_EQ(again.out, first.out);
  EXPECT_EQ(again.err, told_);
  EXPECT_EQ(ksv({"convert", "--undo", "m"}).status, 0);
  EXPECT_EQ(read("text"), plain_ + twice_ + lost_);
}

TEST_F(Repair, goes_with_nothing_that_leaves_texts_alone) {
  for (const std::string option : {"--skip-valid", "--classic"}) {
    const Outcome outcome = ksv({"convert", "-t", "UTF-8", "--repair", option, "text"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
  }
}

}  // namespace
}  // namespace ksv_cli_tests
