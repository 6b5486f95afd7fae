// ksv summary --set: properties of documents are changed.

#include <nlohmann/json.hpp>

#include "command.h"
#include "tests/ole/compound_writer.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_cli_tests {
namespace {

using namespace ksv::test;  // what makes the documents

class PropertyEdits : public CommandTest {
 protected:
  // A document with other streams than those of its properties.
  static std::string sample() {
    CompoundWriter writer;
    writer.node(0).classId = std::string("\x06\x09\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16);
    writer.addStream(0, u"WordDocument", pattern(6000));
    const uint32_t pool = writer.addStorage(0, u"ObjectPool");
    writer.addStream(pool, u"small", pattern(100, 2));
    writer.addStream(0, u"\u0005SummaryInformation",
                     summary({codePage(1252), text(2, "old"), text(4, "caf\xE9"),
                              time(12, fileTime(2024, 2, 29))}));
    return writer.write();
  }

  nlohmann::json recordOf(const std::string& name) {
    return nlohmann::json::parse(ksv({"summary", "--json", name}).out);
  }
  std::string streamOf(const std::string& name, const std::string& path) {
    return ksv({"ole", "cat", name, path}).out;
  }
};

TEST_F(PropertyEdits, change_a_property_and_leave_all_else_as_it_is) {
  write("a", sample());
  const Outcome outcome = ksv({"summary", "--set", "title=new", "-o", "b", "a"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(read("a"), sample());
  EXPECT_EQ(streamOf("b", "WordDocument"), pattern(6000));
  EXPECT_EQ(streamOf("b", "ObjectPool/small"), pattern(100, 2));
  auto before = recordOf("a");
  const auto after = recordOf("b");
  EXPECT_EQ(after["title"], "new");
  before["title"] = "new";
  before["path"] = "b";
  EXPECT_EQ(after, before);
}

TEST_F(PropertyEdits, take_every_type_of_value) {
  write("a", sample());
  const Outcome outcome = ksv({"summary",
                               "--set",
                               "title=表 é",
                               "--set",
                               "pages=12",
                               "--set",
                               "company=会社",
                               "--set",
                               "lastPrinted=2025-01-02T03:04:05.6Z",
                               "--set",
                               "scaleCrop=yes",
                               "--set-custom",
                               "Project=Tunnel",
                               "--set-custom",
                               "Count=7:number",
                               "--set-custom",
                               "Share=0.5:number",
                               "--set-custom",
                               "Done=no:boolean",
                               "--set-custom",
                               "Due=2025-01-02:time",
                               "--set-custom",
                               "Link=http://x:text",
                               "--set-custom",
                               "件名=あ",
                               "--in-place",
                               "a"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
  const auto record = recordOf("a");
  EXPECT_EQ(record["title"], "表 é");
  EXPECT_EQ(record["author"], "café");
  EXPECT_EQ(record["pages"], 12);
  EXPECT_EQ(record["company"], "会社");
  EXPECT_EQ(record["lastPrinted"], "2025-01-02T03:04:05.6Z");
  EXPECT_EQ(record["scaleCrop"], true);
  const std::vector<std::pair<std::string, nlohmann::json>> custom = {
      {"Project", "Tunnel"},           {"Count", 7},         {"Share", 0.5}, {"Done", false},
      {"Due", "2025-01-02T00:00:00Z"}, {"Link", "http://x"}, {"件名", "あ"}};
  ASSERT_EQ(record["custom"].size(), custom.size());
  for (size_t i = 0; i < custom.size(); ++i) {
    EXPECT_EQ(record["custom"][i]["name"], custom[i].first);
    EXPECT_EQ(record["custom"][i]["value"], custom[i].second);
  }
  EXPECT_FALSE(record.contains("remarks"));
  EXPECT_EQ(streamOf("a", "WordDocument"), pattern(6000));
}

TEST_F(PropertyEdits, remove_properties_of_both_kinds) {
  write("a", sample());
  EXPECT_EQ(ksv({"summary", "--set-custom", "Project=x", "--in-place", "a"}).status, 0);
  EXPECT_EQ(ksv({"summary", "--remove", "title", "--remove", "Project", "--remove", "none",
                 "--in-place", "a"})
                .err,
            "");
  const auto record = recordOf("a");
  EXPECT_FALSE(record.contains("title"));
  EXPECT_FALSE(record.contains("custom"));
  EXPECT_EQ(record["author"], "café");
}

TEST_F(PropertyEdits, keep_the_original_where_they_are_told_to) {
  write("a", sample());
  EXPECT_EQ(ksv({"summary", "--set", "title=new", "--in-place=.old", "a"}).err, "");
  EXPECT_EQ(read("a.old"), sample());
  EXPECT_EQ(recordOf("a")["title"], "new");
  EXPECT_EQ(ksv({"summary", "--set", "title=newer", "--in-place=.old", "a"}).status, 1);
  EXPECT_EQ(recordOf("a")["title"], "new");
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "a.old"}));
}

TEST_F(PropertyEdits, of_several_documents_are_recorded) {
  write("a", sample());
  write("b", "no document");
  write("c", sample());
  const Outcome outcome =
      ksv({"summary", "--set", "title=x", "--in-place", "--json", "-j", "2", "a", "b", "c"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "{\"path\":\"a\",\"output\":\"a\",\"changed\":true}\n"
            "{\"path\":\"b\",\"error\":{\"reason\":\"is not a compound document\",\"offset\":0}}\n"
            "{\"path\":\"c\",\"output\":\"c\",\"changed\":true}\n");
  EXPECT_EQ(read("b"), "no document");
  const Outcome again = ksv({"summary", "--set", "title=x", "--in-place", "--json", "a"});
  EXPECT_EQ(again.out, "{\"path\":\"a\",\"output\":\"a\",\"changed\":false}\n");
}

TEST_F(PropertyEdits, are_not_made_where_something_would_be_lost) {
  std::string set = summary({codePage(1252), text(2, "Title"), text(4, "Author")});
  putDword(set, 88 + 4, 0x7FFFFFFF);
  const std::string damaged = document(set);
  write("a", damaged);
  const Outcome outcome = ksv({"summary", "--set", "title=x", "--in-place", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "ksv: a: cannot be changed without loss: in \\x05SummaryInformation a value is cut "
            "(offset 88)\n");
  EXPECT_EQ(read("a"), damaged);
}

TEST_F(PropertyEdits, go_from_standard_input_to_standard_output) {
  const Outcome outcome = ksv({"summary", "--set", "title=new", "-o", "-"}, sample());
  EXPECT_EQ(outcome.status, 0);
  write("b", outcome.out);
  EXPECT_EQ(recordOf("b")["title"], "new");
}

TEST_F(PropertyEdits, that_cannot_be_understood_are_wrong_usage) {
  write("a", sample());
  write("b", sample());
  const std::vector<std::vector<std::string>> wrong = {
      {"--set", "title", "--in-place", "a"},
      {"--set", "=x", "--in-place", "a"},
      {"--set", "Title=x", "--in-place", "a"},
      {"--set", "pages=many", "--in-place", "a"},
      {"--set", "created=yesterday", "--in-place", "a"},
      {"--set", "scaleCrop=maybe", "--in-place", "a"},
      {"--set", "thumbnail=x", "--in-place", "a"},
      {"--set-custom", "A=x:number", "--in-place", "a"},
      {"--set-custom", "A=x:time", "--in-place", "a"},
      {"--set", "title=x", "a"},
      {"--set", "title=x", "--in-place", "-o", "c", "a"},
      {"--set", "title=x", "-o", "c", "a", "b"},
      {"--set", "title=x", "-o", "a", "a"},
      {"--set", "title=x", "--in-place=/x", "a"},
      {"--set", "title=x", "--in-place", "-"},
      {"--set", "title=x", "--in-place", "--all", "a"},
      {"--set", "title=x", "--in-place", "--classic", "a"},
      {"--set", "title=x", "--json", "-o", "-", "a"},
      {"--in-place", "a"},
      {"-o", "c", "a"}};
  for (std::vector<std::string> arguments : wrong) {
    arguments.insert(arguments.begin(), "summary");
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.out, "");
  }
  EXPECT_EQ(read("a"), sample());
  EXPECT_EQ(files(), (std::vector<std::string>{"a", "b"}));
}

}  // namespace
}  // namespace ksv_cli_tests
