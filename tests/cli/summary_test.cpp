// ksv summary: the properties of compound documents.

#include <nlohmann/json.hpp>

#include "command.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_cli_tests {
namespace {

using namespace ksv::test;  // what makes the documents

class Summary : public CommandTest {
 protected:
  static std::string sample() {
    return document(summary({codePage(65001), text(2, "題名"), text(3, "主題"), text(4, "著者"),
                             text(5, "鍵"), text(6, "一行目\r\n二行目"), text(8, "保存者"),
                             text(9, "7"), time(12, fileTime(2024, 2, 29, 12, 34, 56)),
                             time(13, fileTime(2024, 3, 31, 23, 59, 59)), text(18, "Writer")}),
                    documentSummary({codePage(65001), text(2, "分類"), text(3, "A4"),
                                     integer(4, 11), integer(6, 22), integer(7, 33), integer(8, 44),
                                     text(14, "管理者"), text(15, "会社")}));
  }
};

TEST_F(Summary, names_every_property_in_the_order_of_a_reader) {
  write("文書.doc", sample());
  const Outcome outcome = ksv({"summary", "文書.doc"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "文書.doc\n"
            "  Title                題名\n"
            "  Subject              主題\n"
            "  Author               著者\n"
            "  Keywords             鍵\n"
            "  Comments             一行目\n"
            "                       二行目\n"
            "  Category             分類\n"
            "  Manager              管理者\n"
            "  Company              会社\n"
            "  Created              2024-02-29T12:34:56Z\n"
            "  Last saved           2024-03-31T23:59:59Z\n"
            "  Last saved by        保存者\n"
            "  Revision             7\n"
            "  Application          Writer\n"
            "  Presentation format  A4\n"
            "  Slides               33\n"
            "  Notes                44\n"
            "  Paragraphs           22\n"
            "  Bytes                11\n");
}

TEST_F(Summary, gives_a_json_object_for_each_document) {
  write("a", sample());
  write("b", document(summary({codePage(932), text(2, "\x95\x5C")})));
  const Outcome outcome = ksv({"summary", "--json", "a", "b"});
  EXPECT_EQ(outcome.status, 0);
  const size_t end = outcome.out.find('\n');
  const auto first = nlohmann::json::parse(outcome.out.substr(0, end));
  EXPECT_EQ(first["path"], "a");
  EXPECT_EQ(first["title"], "題名");
  EXPECT_EQ(first["comments"], "一行目\n二行目");
  EXPECT_EQ(first["lastSavedBy"], "保存者");
  EXPECT_EQ(first["presentationFormat"], "A4");
  EXPECT_EQ(first["created"], "2024-02-29T12:34:56Z");
  EXPECT_EQ(first["lastSaved"], "2024-03-31T23:59:59Z");
  EXPECT_EQ(first["revision"], "7");
  EXPECT_EQ(first["slides"], 33);
  EXPECT_EQ(first["notes"], 44);
  EXPECT_EQ(first["paragraphs"], 22);
  EXPECT_EQ(first["bytes"], 11);
  EXPECT_EQ(first.size(), 19u);
  EXPECT_EQ(outcome.out.substr(end + 1), "{\"path\":\"b\",\"title\":\"表\"}\n");
}

TEST_F(Summary, classic_gives_texts_only) {
  write("a", sample());
  const auto record = nlohmann::json::parse(ksv({"summary", "--json", "--classic", "a"}).out);
  EXPECT_EQ(record["created"], "2024-02-29 12:34:56");
  EXPECT_EQ(record["slides"], "33");
  EXPECT_EQ(record["bytes"], "11");
  EXPECT_EQ(record.size(), 19u);
  EXPECT_EQ(ksv({"summary", "--classic", "a"}).out.substr(0, 61),
            "a\n"
            "  Title                題名\n"
            "  Subject              主題");
  EXPECT_NE(
      ksv({"summary", "--classic", "a"}).out.find("Created              2024-02-29 12:34:56\n"),
      std::string::npos);
}

TEST_F(Summary, records_failures_in_their_places) {
  write("text", "This is no document.");
  write("a", document(summary({text(2, "Title")})));
  const std::string line = "{\"path\":\"a\",\"title\":\"Title\"}\n";
  EXPECT_EQ(ksv({"summary", "--json", "a", "text", "a"}).out,
            line +
                "{\"path\":\"text\",\"error\":{\"reason\":\"is not a compound document\","
                "\"offset\":0}}\n" +
                line);
  EXPECT_EQ(ksv({"summary", "--json", "--classic", "a", "text"}).out, line);
}

TEST_F(Summary, shows_what_the_charset_lacks_and_says_so) {
  write("a", document(summary({codePage(65001), text(2, "表 été")})));
  const std::string label = "a\n  Title                ";
  const Outcome latin = ksv({"summary", "-t", "ISO-8859-1", "a"});
  EXPECT_EQ(latin.status, 1);
  EXPECT_EQ(latin.out, label + "? \xE9t\xE9\n");
  EXPECT_EQ(latin.err, "ksv: a: holds characters that are not in ISO-8859-1; they are replaced\n");
  const Outcome japanese = ksv({"summary", "-t", "Shift_JIS", "a"});
  EXPECT_EQ(japanese.out, label + "\x95\x5C ?t?\n");
  EXPECT_EQ(japanese.err,
            "ksv: a: holds characters that are not in Shift_JIS; they are replaced\n");
  const Outcome classic = ksv({"summary", "--classic", "-t", "ISO-8859-1", "a"});
  EXPECT_EQ(classic.out, label + " \xE9t\xE9\n");
  EXPECT_EQ(classic.err, "");
}

TEST_F(Summary, escapes_in_json_what_the_charset_lacks) {
  write("a", document(summary({codePage(65001), text(2, "表 été")})));
  const Outcome outcome = ksv({"summary", "--json", "-t", "ISO-8859-1", "a", "ü"});
  EXPECT_EQ(outcome.out,
            "{\"path\":\"a\",\"title\":\"\\u8868 \\u00e9t\\u00e9\"}\n"
            "{\"path\":\"\\u00fc\",\"error\":{\"reason\":\"No such file or directory\","
            "\"offset\":null}}\n");
  EXPECT_EQ(outcome.err, "ksv: ü: No such file or directory\n");
}

TEST_F(Summary, counts_ucs_2_among_those_that_lack_something) {
  write("a", document(summary({codePage(65001), text(2, "😀")})));
  const Outcome outcome = ksv({"summary", "-t", "UCS-2BE", "a"});
  EXPECT_EQ(outcome.err,
            "ksv: a: holds characters that are not in ISO-10646-UCS-2; they are replaced\n");
  const std::string json = ksv({"summary", "--json", "-t", "UCS-2BE", "a"}).out;
  EXPECT_NE(json.find(bytes({0, '\\', 0, 'u', 0, 'd', 0, '8', 0, '3', 0, 'd'})), std::string::npos);
}

TEST_F(Summary, writes_in_the_charset_that_is_asked_for) {
  write("a", document(summary({codePage(65001), text(2, "表")})));
  const std::string label = "  Title                ";
  EXPECT_EQ(ksv({"summary", "-t", "sjis", "a"}).out, "a\n" + label + "\x95\x5C\n");
  EXPECT_EQ(ksv({"summary", "-t", "EUC-JP", "a"}).out, "a\n" + label + "\xC9\xBD\n");
  EXPECT_EQ(ksv({"summary", "-t", "iso-2022-jp", "a"}).out,
            "\x1B(Ba\n" + label + "\x1B$BI=\x1B(B\n");
  EXPECT_EQ(ksv({"summary", "-t", "utf-16be", "a"}).out.substr(0, 6),
            bytes({0, 'a', 0, '\n', 0, ' '}));
  EXPECT_EQ(ksv({"summary", "--to", "latin1", "a"}).out.substr(0, 2), "a\n");
}

TEST_F(Summary, reads_documents_of_every_code_page) {
  write("western", document(summary({codePage(1252), text(2, "\xE9t\xE9")})));
  write("korean", document(summary({codePage(949), text(2, "\xC7\xD1\xB1\xDB")})));
  write("untold", document(summary({text(2, "\x95\x5C")})));
  EXPECT_NE(ksv({"summary", "western"}).out.find("été"), std::string::npos);
  EXPECT_NE(ksv({"summary", "korean"}).out.find("한글"), std::string::npos);
  EXPECT_NE(ksv({"summary", "untold"}).out.find("表"), std::string::npos);
}

TEST_F(Summary, does_nothing_to_a_terminal) {
  write("a", document(summary({codePage(65001), text(2,
                                                     "a\x1B[31mb\x07\x7F"
                                                     "c")})));
  EXPECT_EQ(ksv({"summary", "a"}).out, "a\n  Title                a\uFFFD[31mb\uFFFD\uFFFDc\n");
}

TEST_F(Summary, reads_standard_input) {
  for (const std::vector<std::string>& operands : {std::vector<std::string>{}, {"-"}}) {
    std::vector<std::string> arguments = {"summary"};
    arguments.insert(arguments.end(), operands.begin(), operands.end());
    EXPECT_EQ(ksv(arguments, document(summary({text(2, "Title")}))).out,
              "standard input\n  Title                Title\n");
  }
}

TEST_F(Summary, tells_what_fails_and_does_the_others) {
  write("text", "This is no document.");
  write("nothing", document("", ""));
  write("damaged", document(propertySet({{kSummaryFormatId, std::string(8, '\0')}})));
  write("good", document(summary({text(2, "Title")})));
  const Outcome outcome = ksv({"summary", "none", "text", "nothing", "damaged", "good"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "good\n  Title                Title\n");
  EXPECT_EQ(outcome.err,
            "ksv: none: No such file or directory\n"
            "ksv: text: is not a compound document (offset 0)\n"
            "ksv: nothing: has no summary information\n"
            "ksv: damaged: has malformed summary information\n");
}

TEST_F(Summary, keeps_the_order_of_the_documents_whatever_is_done_at_once) {
  std::vector<std::string> arguments = {"summary", "-j", "4"};
  std::string expected;
  for (int i = 0; i < 60; ++i) {
    const std::string name = "doc" + std::to_string(i);
    write(name, document(summary({text(2, "Title " + std::to_string(i))})));
    arguments.push_back(name);
    expected += name + "\n  Title                Title " + std::to_string(i) + "\n";
  }
  EXPECT_EQ(ksv(arguments).out, expected);
}

TEST_F(Summary, tells_wrong_usage) {
  write("a", "x");
  const std::vector<std::vector<std::string>> wrong = {
      {"-t", "klingon", "a"}, {"-t", "utf-7", "a"}, {"-j", "0", "a"}, {"-", "-"}, {"--quick", "a"}};
  for (std::vector<std::string> arguments : wrong) {
    arguments.insert(arguments.begin(), "summary");
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  }
}

}  // namespace
}  // namespace ksv_cli_tests
