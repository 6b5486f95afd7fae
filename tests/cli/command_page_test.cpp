// docs/command.md tells of every job, option and field.

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "command.h"
#include "tests/common/support.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_cli_tests {
namespace {

using namespace ksv::test;  // what makes the documents

const std::vector<std::string> kJobs = {"convert", "detect",   "check",  "summary", "ole",   "mail",
                                        "cut",     "charsets", "tables", "lint",    "doctor"};

class CommandPage : public CommandTest {
 protected:
  // What the page says of a job: from its heading to the next.
  std::string section(const std::string& job) const {
    const size_t start = page_.find("\n## `ksv " + job);
    EXPECT_NE(start, std::string::npos) << job;
    return page_.substr(start, page_.find("\n## ", start + 1) - start);
  }

  static std::set<std::string> optionsIn(const std::string& text) {
    constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz-";
    std::set<std::string> options;
    for (size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at + 2)) {
      const size_t end = std::min(text.find_first_not_of(kLetters, at), text.size());
      if (end > at + 2) options.insert(text.substr(at, end - at));
    }
    return options;
  }

  // Of the help of the command: what stands behind its options.
  static std::string jobsOf(const std::string& help) {
    const size_t options = help.find("\nOptions:");
    const size_t behind = help.find("\n\n", options);
    EXPECT_NE(behind, std::string::npos) << help;
    return help.substr(behind);
  }

  // The first word of each line that is set in by two blanks and more.
  static std::set<std::string> namesIn(const std::string& list) {
    std::set<std::string> names;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
      std::string name;
      if (line.starts_with("  ") && std::istringstream(line) >> name) names.insert(name);
    }
    return names;
  }

  void expectTold(const std::string& job, const std::string& json) const {
    const auto record = nlohmann::json::parse(json.substr(0, json.find('\n')));
    EXPECT_GT(record.size(), 1u);
    for (const auto& [field, value] : record.items())
      EXPECT_NE(section(job).find("`" + field + "`"), std::string::npos) << job << ": " << field;
  }

  const std::string page_ = readFile(KSV_COMMAND_PAGE);
};

TEST_F(CommandPage, tells_every_job) {
  const std::string help = ksv({"--help"}).out;
  const std::set<std::string> found = namesIn(jobsOf(help));
  EXPECT_EQ(found, std::set<std::string>(kJobs.begin(), kJobs.end())) << help;
  for (const std::string& name : kJobs) EXPECT_NE(section(name), "");
}

TEST_F(CommandPage, tells_every_option_of_each_job) {
  for (const std::string& job : kJobs) {
    std::vector<std::vector<std::string>> calls = {{job, "--help"}};
    if (job == "ole") {
      calls.clear();
      for (const char* part : {"list", "cat", "extract", "check"})
        calls.push_back({job, part, "--help"});
    }
    for (const auto& call : calls) {
      const std::string help = ksv(call).out;
      const size_t options = help.find("Options:");
      ASSERT_NE(options, std::string::npos);
      const size_t length = help.find("\n\n", options) - options;
      const std::set<std::string> told = optionsIn(help.substr(options, length));
      EXPECT_TRUE(told.contains("--help")) << help;
      for (const std::string& option : told) {
        const bool isTold = section(job).find("`" + option) != std::string::npos;
        EXPECT_TRUE(isTold || option == "--help") << job << " " << option;
      }
    }
  }
}

TEST_F(CommandPage, tells_every_value_of_each_option_of_convert) {
  const std::string help = ksv({"convert", "--help"}).out;
  size_t count = 0;
  for (size_t at = help.find(":{"); at != std::string::npos; at = help.find(":{", at + 1)) {
    std::string values = help.substr(at + 2, help.find('}', at) - at - 2);
    for (size_t comma = 0; (comma = values.find(',', comma)) != std::string::npos; comma += 2)
      values.replace(comma, 1, "\\|");
    EXPECT_NE(section("convert").find(values + '`'), std::string::npos) << values;
    ++count;
  }
  EXPECT_GE(count, 7u);
}

TEST_F(CommandPage, tells_every_field_of_the_report_of_convert) {
  write("text", "\xE2\x91\xA0 \xC2\xA5 \xFF");  // not in Shift_JIS, comes back as 5C, no UTF-8
  const std::string out =
      ksv({"convert", "-f", "UTF-8", "-t", "Shift_JIS", "--dry-run", "--report=json", "text"}).out;
  expectTold("convert", out);
  const auto report = nlohmann::json::parse(out);
  ASSERT_EQ(report.at("losses").size(), 3u) << out;
  for (const auto& loss : report.at("losses")) {
    expectTold("convert", loss.dump());
    EXPECT_NE(section("convert").find("`" + loss.at("kind").get<std::string>() + "`"),
              std::string::npos)
        << loss;
    if (loss.contains("becomes")) expectTold("convert", loss.at("becomes").dump());
  }
}

TEST_F(CommandPage, tells_every_field_of_the_records_of_convert) {
  for (const char* name : {"a", "b"}) write(name, "\x82\xA0");
  write("wrong", "\xFF");
  const std::vector<std::string> call = {
      "convert",          "-f",     "sjis",       "-t",       "utf8",
      "--in-place=.orig", "--json", "--manifest", "manifest", "--resume"};
  for (const std::string name : {"a", "b", "wrong"}) {
    std::vector<std::string> one = call;
    one.push_back(name);
    expectTold("convert", ksv(one).out);
  }
  std::istringstream lines(read("manifest"));
  std::set<std::string> kinds;
  for (std::string line; std::getline(lines, line);) {
    expectTold("convert", line);
    kinds.insert("`" + nlohmann::json::parse(line).at("record").get<std::string>() + "`");
  }
  EXPECT_EQ(kinds.size(), 5u);
  for (const std::string& kind : kinds)
    EXPECT_NE(section("convert").find(kind), std::string::npos) << kind;
  expectTold("convert", ksv({"convert", "--undo", "manifest", "--json"}).out);
}

TEST_F(CommandPage, tells_every_check_of_doctor) {
  setEnvironment("Charsetpath", path("nowhere"));
  std::istringstream lines(ksv({"doctor", "--json"}).out);
  size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const std::string check = nlohmann::json::parse(line).at("check");
    EXPECT_NE(section("doctor").find("| `" + check + "` |"), std::string::npos) << check;
  }
  EXPECT_GT(count, 0u);
}

TEST_F(CommandPage, tells_every_field_of_each_record) {
  write("text", "plain\n");
  write("document", document(summary({codePage(65001), text(2, "t"), text(3, "s"), text(4, "a"),
                                      text(5, "k"), text(6, "c"), text(8, "l"), text(9, "7"),
                                      time(12, fileTime(2024, 2, 29, 12, 34, 56)),
                                      time(13, fileTime(2024, 3, 31, 23, 59, 59)), text(18, "w")}),
                             documentSummary({codePage(65001), text(2, "c"), text(3, "A4"),
                                              integer(4, 11), integer(6, 22), integer(7, 33),
                                              integer(8, 44), text(14, "m"), text(15, "c")})));
  expectTold("detect", ksv({"detect", "--json", "text"}).out);
  expectTold("check", ksv({"check", "--json", "text"}).out);
  expectTold("summary", ksv({"summary", "--json", "document"}).out);
  expectTold("summary", ksv({"summary", "--json", "--all", "document"}).out);
  expectTold("summary",
             ksv({"summary", "--json", "--set", "title=x", "--in-place", "document"}).out);
  expectTold("ole", ksv({"ole", "list", "--json", "document"}).out);
  expectTold("ole", ksv({"ole", "extract", "--json", "document", "parts"}).out);
  expectTold("ole", ksv({"ole", "check", "--json", "document"}).out);
  write("cut", read("document").substr(0, 600));
  for (const auto& damage :
       nlohmann::json::parse(ksv({"ole", "check", "--json", "cut"}).out).at("damages"))
    expectTold("ole", damage.dump());
  expectTold("charsets", ksv({"charsets", "--json"}).out);
  std::filesystem::create_directory(pathOf(path("empty")));
  expectTold("lint", ksv({"lint", "--json", "empty"}).out);
  setEnvironment("Charsetpath", path("empty"));
  expectTold("doctor", ksv({"doctor", "--json"}).out);
  for (const std::string field : {"`path`", "`pathBytes`", "`error.reason`", "`error.offset`"})
    EXPECT_NE(page_.substr(0, page_.find("\n## `ksv")).find(field), std::string::npos);
}

// Where there is no mail reader there are no records of mails.
TEST_F(CommandPage, tells_every_field_of_a_mail) {
  if (!KSV_READS_MAIL) GTEST_SKIP() << "this build has no mail reader";
  const std::string out = ksv({"mail", "--json", "--save", "saved"},
                              "Content-Type: text/plain; name=a\nno field\n\n\xFF")
                              .out;
  expectTold("mail", out);
  const auto record = nlohmann::json::parse(out);
  expectTold("mail", record.at("parts").at(0).dump());
  expectTold("mail", record.at("problems").at(0).dump());
}

}  // namespace
}  // namespace ksv_cli_tests
