// ksv doctor: what it looks at, and what it says of it.

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command.h"
#include "tests/common/support.h"

namespace ksv_cli_tests {
namespace {

namespace fs = std::filesystem;
using ksv::test::pathOf;

const std::vector<std::string> kChecks = {
    "version",        "build",          "vectorInstructions", "charsetDirectory", "ruleFiles",
    "compiledTables", "packedCharsets", "charsets",           "locale",           "temporaryFiles"};

constexpr char kCharset[] = "iso-8859-5";

class Doctor : public CommandTest {
 protected:
  Doctor() { useCharsetDirectoryOf(kCharset); }

  using Records = std::map<std::string, nlohmann::json>;

  Outcome records(Records& found) const {
    Outcome outcome = ksv({"doctor", "--json"});
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) {
      const auto record = nlohmann::json::parse(line);
      found[record.at("check")] = record;
    }
    return outcome;
  }

  void expectWrong(const std::string& check, const std::string& reason, const std::string& hint) {
    Records found;
    const Outcome outcome = records(found);
    EXPECT_EQ(outcome.status, 1);
    ASSERT_TRUE(found.contains(check)) << outcome.out;
    const nlohmann::json& record = found[check];
    EXPECT_EQ(record.at("verdict"), "wrong") << record;
    EXPECT_TRUE(record.at("value").is_null());
    EXPECT_EQ(record.at("error").at("offset"), nullptr);
    const std::string told = record.at("error").at("reason");
    EXPECT_NE(told.find(reason), std::string::npos) << told;
    EXPECT_NE(record.at("hint").get<std::string>().find(hint), std::string::npos) << record;
    EXPECT_NE(outcome.err.find(told), std::string::npos) << outcome.err;
    EXPECT_EQ(ksv({"doctor"}).status, 1);
  }

  const std::string directory_ = path(kCharset);
  const std::string table_ = std::string(kCharset) + "/" + kCharset + ".cmp";
};

TEST_F(Doctor, tells_a_line_a_check_and_ends_with_0_when_all_is_well) {
  const Outcome outcome = ksv({"doctor"});
  EXPECT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out.find("ok     version              ksv " KSV_VERSION "\n"), 0u);
  EXPECT_NE(outcome.out.find("\nok     charset directory    " + directory_ +
                             ", named by the environment variable Charsetpath\n"),
            std::string::npos)
      << outcome.out;
  EXPECT_EQ(outcome.out.find("wrong"), std::string::npos);
}

TEST_F(Doctor, has_a_record_a_check_in_the_order_of_the_lines) {
  std::istringstream lines(ksv({"doctor", "--json"}).out);
  std::vector<std::string> checks;
  for (std::string line; std::getline(lines, line);) {
    const auto record = nlohmann::json::parse(line);
    checks.push_back(record.at("check"));
    EXPECT_EQ(record.size(), 4u) << line;
    EXPECT_NE(record.at("verdict"), "wrong") << line;
    EXPECT_NE(record.at("value"), "") << line;
  }
  EXPECT_EQ(checks, kChecks);
}

TEST_F(Doctor, counts_the_charsets) {
  Records found;
  records(found);
  EXPECT_EQ(found["charsets"].at("value"), "1, and 0 that can be read only");
}

TEST_F(Doctor, misses_a_charset_directory_that_is_not_there) {
  setEnvironment("Charsetpath", path("nowhere"));
  expectWrong("charsetDirectory", "nowhere", "correct who names it");
  Records found;
  records(found);
  for (const std::string check : {"ruleFiles", "compiledTables", "charsets"})
    EXPECT_EQ(found[check]["error"]["reason"], "cannot be looked at without a charset directory");
}

TEST_F(Doctor, misses_charsets_in_an_empty_directory) {
  fs::create_directory(pathOf(path("empty")));
  setEnvironment("Charsetpath", path("empty"));
  expectWrong("charsets", "holds no charset rule file that can be read", "ksv lint");
  expectWrong("ruleFiles", "1 fault", "ksv lint");
}

TEST_F(Doctor, misses_a_compiled_table_and_makes_none) {
  fs::remove(pathOf(path(table_)));
  expectWrong("compiledTables", "1 of 1 missing: iso-8859-5.cmp", "ksv tables");
  EXPECT_FALSE(exists(table_));
  EXPECT_EQ(ksv({"tables"}).status, 0);
  EXPECT_EQ(ksv({"doctor"}).status, 0);
}

TEST_F(Doctor, does_without_the_texts_of_compiled_tables) {
  fs::remove(pathOf(path("iso-8859-5/iso-8859-5.txt")));
  Records found;
  EXPECT_EQ(records(found).status, 0);
  EXPECT_EQ(found["compiledTables"].at("value"), "all 1 are there, 0 are what their texts say");
}

TEST_F(Doctor, sees_a_compiled_table_that_is_cut_short) {
  const std::string whole = read(table_);
  write(table_, whole.substr(0, whole.size() - 8));
  expectWrong("compiledTables", "not what their texts say: iso-8859-5.cmp", "remove them");
}

TEST_F(Doctor, tells_the_locale_and_whether_it_shows_utf_8) {
  Records found;
  setEnvironment("LANG", "ja_JP.eucJP");
  records(found);
  EXPECT_EQ(found["locale"].at("verdict"), "note");
  setEnvironment("LANG", "ja_JP.utf8");
  EXPECT_EQ(records(found).status, 0);
  EXPECT_EQ(found["locale"].at("verdict"), "ok");
  EXPECT_EQ(found["locale"].at("value"),
            "ja_JP.utf8 of LANG; texts without -f are taken for --detect-language ja, messages "
            "are written in UTF-8");
}

TEST_F(Doctor, takes_no_operands) { EXPECT_EQ(ksv({"doctor", "x"}).status, 2); }

}  // namespace
}  // namespace ksv_cli_tests
