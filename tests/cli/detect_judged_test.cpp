// ksv detect: in which charset a text is, how likely that is, and what is told beside it.

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "command.h"
#include "in_process.h"

namespace ksv_cli_tests {
namespace {

using nlohmann::json;
using Fields = std::vector<std::string>;

const std::string kJapanese =
    "山路を登りながら、こう考えた。智に働けば角が立つ。情に棹させば流される。\n"
    "意地を通せば窮屈だ。とかくに人の世は住みにくい。\n";
const std::string kCafe = "caf\xC3\xA9 au lait, d\xC3\xA9j\xC3\xA0 vu, na\xC3\xAFve\n";

class Detect : public CommandTest {
 protected:
  Detect() { setEnvironment("LANG", "en_US.UTF-8"); }

  static std::vector<Fields> linesOf(const std::string& out) {
    std::vector<Fields> lines;
    std::istringstream text(out);
    for (std::string line; std::getline(text, line);) {
      std::istringstream columns(line);
      Fields fields;
      for (std::string field; std::getline(columns, field, '\t');) fields.push_back(field);
      lines.push_back(fields);
    }
    return lines;
  }

  Fields lineOf(const std::string& text, Fields options = {}) {
    write("text", text);
    Fields call = {"detect"};
    call.insert(call.end(), options.begin(), options.end());
    call.push_back("text");
    const std::vector<Fields> lines = linesOf(ksv(call).out);
    EXPECT_EQ(lines.size(), 1u);
    return lines.empty() ? Fields(8) : lines.front();
  }

  json recordOf(const std::string& text, Fields options = {}) {
    write("text", text);
    Fields call = {"detect", "--json"};
    call.insert(call.end(), options.begin(), options.end());
    call.push_back("text");
    const std::string out = ksv(call).out;
    EXPECT_EQ(out.find('\n'), out.size() - 1);
    return json::parse(out);
  }
};

TEST_F(Detect, writes_path_charset_confidence_language_line_end_mark_and_misreading) {
  const Fields line = lineOf(encoded("Shift_JIS", kJapanese));
  ASSERT_EQ(line.size(), 7u);
  EXPECT_EQ(line[0], "text");
  EXPECT_EQ(line[1], "Shift_JIS");
  EXPECT_GE(std::stod(line[2]), 0.9);
  EXPECT_LE(line[2].size(), 4u) << "two decimals";
  EXPECT_EQ(line[3], "ja");
  EXPECT_EQ(line[4], "lf");
  EXPECT_EQ(line[5], "-");
  EXPECT_EQ(line[6], "-");
  EXPECT_EQ(lineOf("\xEF\xBB\xBF" + kJapanese)[5], "bom");
  EXPECT_EQ(lineOf("a\r\nb\r\n")[4], "crlf");
  EXPECT_EQ(lineOf("a\rb\r")[4], "cr");
  EXPECT_EQ(lineOf("a\rb\nc\r\n")[4], "mixed");
  EXPECT_EQ(lineOf("one line")[4], "-");
}

TEST_F(Detect, ends_with_another_status_where_nothing_can_be_told) {
  write("a", "plain\n");
  write("empty", "");
  write("binary",
        "\x7F"
        "ELF" +
            std::string(64, '\0') + "\x01\x02\x03\xFF\xFE\xFD");
  write("none", encoded("EUC-JP", kJapanese));
  const Outcome known = ksv({"detect", "a", "empty", "binary"});
  EXPECT_EQ(known.status, 0) << known.out;
  EXPECT_NE(known.out.find("\nempty\tempty\t-\t-\t-\t-\t-\n"), std::string::npos) << known.out;
  EXPECT_NE(known.out.find("\nbinary\tbinary\t-\t-\t-\t-\t-\n"), std::string::npos) << known.out;
  const Outcome unknown = ksv({"detect", "--charsets", "US-ASCII,UTF-8", "none", "a"});
  EXPECT_EQ(unknown.status, 3);
  EXPECT_EQ(unknown.out.find("none\tundetermined\t-\t-\t-\t-\t-\na\tISO-646IRV\t"), 0u)
      << unknown.out;
  EXPECT_EQ(unknown.err, "");
  EXPECT_EQ(ksv({"detect", "--charsets", "US-ASCII", "none", "missing"}).status, 1)
      << "a failure goes first";
}

TEST_F(Detect, writes_one_json_object_a_line) {
  const std::string text = encoded("Shift_JIS", kJapanese);
  const json record = recordOf(text);
  EXPECT_EQ(record.at("path"), "text");
  EXPECT_EQ(record.at("charset"), "Shift_JIS");
  EXPECT_EQ(ksv({"convert", "-f", record.at("decodeAs"), "-t", "UTF-8", "text"}).out, kJapanese);
  EXPECT_GE(record.at("confidence"), 0.9);
  EXPECT_EQ(record.at("language"), "ja");
  EXPECT_NE(record.at("reason"), "");
  EXPECT_EQ(record.at("lineEnd"), "lf");
  EXPECT_EQ(record.at("mark"), false);
  EXPECT_EQ(record.at("valid"), true);
  EXPECT_EQ(record.at("invalidOffset"), nullptr);
  EXPECT_EQ(record.at("content"), "text");
  EXPECT_TRUE(record.at("settled").is_boolean());
  EXPECT_EQ(record.at("bytesLookedAt"), text.size());
  EXPECT_EQ(record.at("misreadAs"), nullptr);
  EXPECT_EQ(record.size(), 14u) << record;
}

TEST_F(Detect, has_no_charset_in_the_record_of_what_has_none) {
  write("empty", "");
  const json record = json::parse(ksv({"detect", "--json", "empty"}).out);
  EXPECT_EQ(record.at("content"), "empty");
  for (const char* const field : {"charset", "decodeAs", "confidence", "language", "reason",
                                  "lineEnd", "mark", "valid", "invalidOffset"})
    EXPECT_EQ(record.at(field), nullptr) << field;
  EXPECT_EQ(record.at("bytesLookedAt"), 0);
}

TEST_F(Detect, tells_all_that_a_text_may_be_with_the_reasons) {
  const std::string text = "\xB1\xB2";  // a character or two in many charsets
  write("text", text);
  const std::vector<Fields> lines = linesOf(ksv({"detect", "--all", "text"}).out);
  EXPECT_GT(lines.size(), 1u);
  double before = 1;
  for (const Fields& line : lines) {
    ASSERT_EQ(line.size(), 8u);
    EXPECT_LE(std::stod(line[2]), before);
    before = std::stod(line[2]);
    EXPECT_NE(line[7], "-");
  }
  const json guesses = recordOf(text, {"--all"}).at("guesses");
  ASSERT_EQ(guesses.size(), lines.size());
  for (size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(guesses[i].at("charset"), lines[i][1]);
  write("empty", "");
  EXPECT_EQ(ksv({"detect", "--all", "empty"}).out, "empty\tempty\t-\t-\t-\t-\t-\t-\n");
}

TEST_F(Detect, tells_where_a_text_changes_its_charset) {
  const std::string sjis = encoded("Shift_JIS", kJapanese);
  const std::string eucJp = encoded("EUC-JP", kJapanese);
  write("mixed", kJapanese + sjis + eucJp);
  const std::vector<Fields> lines = linesOf(ksv({"detect", "--segments", "mixed"}).out);
  const std::vector<Fields> expected = {
      {"mixed", "0", std::to_string(kJapanese.size()), "UTF-8"},
      {"mixed", std::to_string(kJapanese.size()), std::to_string(sjis.size()), "Shift_JIS"},
      {"mixed", std::to_string(kJapanese.size() + sjis.size()), std::to_string(eucJp.size()),
       "EUC-JP"}};
  ASSERT_EQ(lines.size(), expected.size());
  for (size_t i = 0; i < lines.size(); ++i) {
    ASSERT_EQ(lines[i].size(), 5u);
    EXPECT_EQ(Fields(lines[i].begin(), lines[i].end() - 1), expected[i]);
    EXPECT_GT(std::stod(lines[i][4]), 0.5);
  }
  const json segments = json::parse(ksv({"detect", "--json", "--segments", "mixed"}).out);
  ASSERT_EQ(segments.at("segments").size(), 3u);
  EXPECT_EQ(segments.at("segments")[1].at("offset"), kJapanese.size());
  EXPECT_EQ(segments.at("segments")[1].at("length"), sjis.size());
  EXPECT_EQ(segments.at("segments")[1].at("charset"), "Shift_JIS");
  EXPECT_EQ(segments.at("segments")[1].at("decodeAs"), "WINDOWS31J");
  EXPECT_GT(segments.at("segments")[1].at("confidence"), 0.5);
  EXPECT_EQ(ksv({"detect", "--segments"}, "").out, "-\t-\t-\tempty\t-\n");
}

TEST_F(Detect, says_what_a_text_was_misread_as) {
  const std::string twice = ksv({"convert", "-f", "windows-1252", "-t", "UTF-8"}, kCafe).out;
  EXPECT_EQ(lineOf(twice)[6], "misread=windows-1252");
  EXPECT_EQ(recordOf(twice).at("misreadAs"), "windows-1252");
  EXPECT_EQ(lineOf(kCafe)[6], "-");
}

TEST_F(Detect, takes_languages_by_their_tags_and_by_their_described_names) {
  const std::string text = encoded("EUC-JP", "日本語");
  for (const std::string language : {"ja", "ja,en", "Japanese", "JAPANESE,zh-TW"})
    EXPECT_EQ(lineOf(text, {"--language", language})[1], "EUC-JP") << language;
  EXPECT_EQ(lineOf(encoded("KoreanKSC", "한국어"), {"--language", "Korean"})[3], "ko");
  for (const std::string language : {"日本語", "ja,", ",ja", "ja_JP", "Simplified  Chinese"}) {
    const Outcome outcome = ksv({"detect", "--language", language, "text"});
    EXPECT_EQ(outcome.status, 2) << language;
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("--language takes names as in ja,zh-TW"), std::string::npos)
        << outcome.err;
  }
}

TEST_F(Detect, answers_nothing_beside_the_charsets_that_are_named) {
  const std::string text = encoded("EUC-JP", kJapanese);
  EXPECT_EQ(lineOf(text, {"--charsets", "euc-jp,utf8"})[1], "EUC-JP");
  EXPECT_EQ(lineOf(text, {"--charsets", "UTF-8,US-ASCII"})[1], "undetermined");
  EXPECT_EQ(ksv({"detect", "--charsets", "utf-16le,no such", "text"}).status, 2);
  EXPECT_NE(ksv({"detect", "--charsets", "utf8,nosuch", "text"}).err.find("unknown charset nosuch"),
            std::string::npos);
}

TEST_F(Detect, takes_any_name_that_a_header_may_have_declared) {
  EXPECT_EQ(lineOf("plain\n", {"--declared", "x-no-such"})[1], "ISO-646IRV");
  EXPECT_EQ(lineOf(encoded("EUC-JP", kJapanese), {"--declared", "EUC-JP"})[1], "EUC-JP");
}

TEST_F(Detect, classically_takes_no_options_of_the_judge) {
  const std::vector<Fields> calls = {
      {"--all"}, {"--segments"}, {"--charsets", "UTF-8"}, {"--declared", "UTF-8"}};
  for (const Fields& options : calls) {
    Fields call = {"detect", "--classic"};
    call.insert(call.end(), options.begin(), options.end());
    const Outcome outcome = ksv(call, "text");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("--classic goes with none of"), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(ksv({"detect", "--all", "--segments"}, "text").status, 2);
  EXPECT_EQ(ksv({"detect", "--json", "--all", "--segments"}, "text").status, 0);
}

TEST_F(Detect, reads_standard_input) {
  for (const Fields& call : {Fields{"detect"}, Fields{"detect", "-"}})
    EXPECT_EQ(ksv(call, encoded("Shift_JIS", kJapanese)).out.find("-\tShift_JIS\t"), 0u);
}

TEST_F(Detect, records_failures_in_their_places) {
  write("a", "plain\n");
  const Outcome outcome = ksv({"detect", "--json", "-j", "4", "a", "missing", "a"});
  EXPECT_EQ(outcome.status, 1);
  std::istringstream lines(outcome.out);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(json::parse(line).at("charset"), "ISO-646IRV");
  std::getline(lines, line);
  EXPECT_EQ(line,
            "{\"path\":\"missing\",\"error\":{\"reason\":\"No such file or "
            "directory\",\"offset\":null}}");
  std::getline(lines, line);
  EXPECT_EQ(json::parse(line).at("path"), "a");
  EXPECT_EQ(outcome.err, "ksv: missing: No such file or directory\n");
}

TEST_F(Detect, of_many_files_at_once_keeps_their_order) {
  std::string list;
  for (int i = 0; i < 60; ++i) {
    const std::string name = "file" + std::to_string(i);
    list += name + "\n";
    write(name, i % 2 == 0 ? "plain\n" : kJapanese);
  }
  const Outcome outcome = ksv({"detect", "-j", "8", "--files-from", "-"}, list);
  EXPECT_EQ(outcome.status, 0);
  const std::vector<Fields> lines = linesOf(outcome.out);
  ASSERT_EQ(lines.size(), 60u);
  for (size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i][0], "file" + std::to_string(i));
    EXPECT_EQ(lines[i][1], i % 2 == 0 ? "ISO-646IRV" : "UTF-8");
  }
}

// What is told of a text does not depend on where its pieces end.
TEST_F(Detect, looks_at_all_of_a_text_that_does_not_settle) {
  std::string text;
  while (text.size() < 300 * 1024) text += "a line of nothing but ASCII\n";
  const json record = recordOf(text + encoded("Shift_JIS", kJapanese));
  EXPECT_EQ(record.at("charset"), "Shift_JIS");
}

}  // namespace
}  // namespace ksv_cli_tests
