#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command.h"
#include "tests/common/support.h"

namespace ksv_cli_tests {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) result.push_back(line);
  return result;
}

class Charsets : public CommandTest {};

TEST_F(Charsets, are_listed_with_their_aliases_a_line_each) {
  const Outcome outcome = ksv({"charsets"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  for (const std::string name : {"UTF-8", "UTF-16", "ISO-10646-UCS-2", "ISO-10646-UCS-4",
                                 "Shift_JIS", "WINDOWS31J", "Shift_JIS-2004"})
    EXPECT_NE(("\n" + outcome.out).find("\n" + name + "\t"), std::string::npos) << name;
  EXPECT_NE(outcome.out.find("x-sjis"), std::string::npos);
}

TEST_F(Charsets, are_one_json_object_a_line) {
  const Outcome outcome = ksv({"charsets", "--json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(lines(outcome.out).size(), lines(ksv({"charsets"}).out).size());
  for (const std::string& line : lines(outcome.out)) {
    const auto charset = nlohmann::json::parse(line);
    EXPECT_TRUE(charset.at("name").is_string());
    EXPECT_TRUE(charset.at("aliases").is_array());
    EXPECT_EQ(charset.at("sourceOnly"),
              charset.at("name") == "UTF-7" || charset.at("name") == "HZ-GB-2312");
  }
}

TEST_F(Charsets, that_are_named_are_told_in_full) {
  EXPECT_EQ(ksv({"charsets", "johab"}).out,
            "Johab\n  alias\tcp1361\n  alias\tms1361\n  alias\twindows-1361\n  alias\tx-Johab\n"
            "  mail\t-\n  web\t-\n  code page\t1361\n  can be written\tyes\n"
            "  escapes or shifts\tno\n  longest character\t2\n  characters\t17178\n");
  const auto utf7 = nlohmann::json::parse(ksv({"charsets", "--json", "utf7"}).out);
  EXPECT_EQ(utf7.at("mime"), "UTF-7");
  EXPECT_EQ(utf7.at("codePage"), 65000);
  EXPECT_EQ(utf7.at("sourceOnly"), true);
  EXPECT_EQ(utf7.at("stateful"), true);
  EXPECT_FALSE(utf7.contains("characters"));
  EXPECT_EQ(lines(ksv({"charsets", "--json", "latin1", "sjis"}).out).size(), 2u);
}

TEST_F(Charsets, tell_their_characters_as_ranges) {
  const auto ascii = nlohmann::json::parse(ksv({"charsets", "--json", "--ranges", "us-ascii"}).out);
  EXPECT_EQ(ascii.at("ranges"), nlohmann::json::parse("[[0,127]]"));
  EXPECT_EQ(ascii.at("characters"), 128);
  EXPECT_NE(ksv({"charsets", "--ranges", "latin1"}).out.find("  range\tU+0000-U+00FF\n"),
            std::string::npos);
}

TEST_F(Charsets, that_are_not_there_are_wrong_usage) {
  const Outcome unknown = ksv({"charsets", "klingon"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.out, "");
  EXPECT_EQ(ksv({"charsets", "--ranges"}).status, 2);
}

TEST_F(Charsets, and_aliases_can_all_be_named) {
  for (const std::string& line : lines(ksv({"charsets", "--json"}).out)) {
    const auto charset = nlohmann::json::parse(line);
    std::vector<std::string> names = charset.at("aliases");
    names.push_back(charset.at("name"));
    for (const std::string& name : names) {
      const std::string target = charset.at("sourceOnly") ? "UTF-8" : name;
      EXPECT_EQ(ksv({"convert", "-f", name, "-t", target}).status, 0) << name;
    }
  }
}

TEST_F(Charsets, of_an_empty_directory_are_a_failure_in_one_line) {
  setEnvironment("Charsetpath", path(""));
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"charsets"},
                                                    {"tables"},
                                                    {"convert", "-f", "utf8", "-t", "utf8"}}) {
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "ksv: " + path("") + ": holds no charset rule file that can be read\n");
  }
}

TEST_F(Charsets, of_an_empty_directory_that_a_configuration_file_names_are_told_by_its_path) {
  fs::create_directory(path("none"));
  write("ksv_conf.ini", "Charsetpath=" + path("none") + "\n");
  setEnvironment("Charsetpath", "");
  for (const char* place : {"XDG_CONFIG_HOME", "APPDATA"}) setEnvironment(place, path(""));
  EXPECT_EQ(ksv({"charsets"}).err,
            "ksv: " + path("none") + ": holds no charset rule file that can be read\n");
}

class Tables : public CommandTest {
 protected:
  // A charset directory of the test's own without its compiled tables.
  void copyDirectory() {
    fs::copy(charsetDirectory(), path("charset"), fs::copy_options::recursive);
    for (const std::string& name : files("charset"))
      if (name.ends_with(".cmp")) fs::remove(path("charset/" + name));
    setEnvironment("Charsetpath", path("charset"));
  }
};

TEST_F(Tables, are_compiled_every_one) {
  copyDirectory();
  const Outcome outcome = ksv({"tables"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  size_t tables = 0;
  for (const std::string& name : files("charset")) {
    if (!name.ends_with(".txt")) continue;
    ++tables;
    const std::string compiled = fs::path(name).replace_extension(".cmp").string();
    ASSERT_TRUE(exists("charset/" + compiled)) << compiled;
    EXPECT_EQ(read("charset/" + compiled), ksv::test::readFile(charsetDirectory() + "/" + compiled))
        << compiled;
  }
  EXPECT_GT(tables, 0u);
}

TEST_F(Tables, say_how_many_charsets_have_theirs) {
  const std::vector<std::string> listed = lines(ksv({"charsets", "--json"}).out);
  const auto count = std::count_if(listed.begin(), listed.end(), [](const std::string& line) {
    return !nlohmann::json::parse(line).at("sourceOnly");
  });
  const Outcome outcome = ksv({"tables"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "the code tables of " + std::to_string(count) + " charsets are filled\n");
}

}  // namespace
}  // namespace ksv_cli_tests
