// ksv ole: the tree of a compound document, and the bytes of its streams.

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command.h"
#include "tests/ole/compound_writer.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::CompoundWriter;
using ksv::test::pattern;
using ksv::test::putDword;

class Ole : public CommandTest {
 protected:
  Ole() {
    const uint32_t storage = writer_.addStorage(0, u"書庫");
    const uint32_t inner = writer_.addStorage(storage, u"内部");
    writer_.addStream(inner, u"深い", "deep");
    writer_.addStream(storage, u"stream", pattern(5000));
    writer_.addStream(0, u"\u0005Summary", "s");
    writer_.addStream(0, u"Top", "top");
    bytes_ = writer_.write();
    write("doc", bytes_);
  }

  std::string expectFailure(const std::vector<std::string>& arguments) const {
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 1);
    return outcome.err;
  }

  CompoundWriter writer_;
  std::string bytes_;
};

TEST_F(Ole, list_draws_the_tree_with_sizes) {
  const Outcome outcome = ksv({"ole", "list", "doc"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "doc\n"
            "├─ 書庫/\n"
            "│  ├─ 内部/\n"
            "│  │  └─ 深い  4\n"
            "│  └─ stream  5000\n"
            "├─ \\x05Summary  1\n"
            "└─ Top  3\n");
}

TEST_F(Ole, list_gives_a_json_object_for_each_entry) {
  const Outcome outcome = ksv({"ole", "list", "--json", "doc"});
  std::istringstream lines(outcome.out);
  std::vector<std::string> paths;
  for (std::string line; std::getline(lines, line);) {
    const auto entry = nlohmann::json::parse(line);
    paths.push_back(entry["path"]);
    EXPECT_EQ(entry["type"] == "stream", entry.contains("size")) << line;
  }
  EXPECT_EQ(paths, (std::vector<std::string>{"書庫", "書庫/内部", "書庫/内部/深い", "書庫/stream",
                                             "\\x05Summary", "Top"}));
}

TEST_F(Ole, cat_writes_the_bytes_of_a_stream) {
  EXPECT_EQ(ksv({"ole", "cat", "doc", "Top"}).out, "top");
  EXPECT_EQ(ksv({"ole", "cat", "doc", "\\x05Summary"}).out, "s");
  EXPECT_EQ(ksv({"ole", "cat", "doc", "書庫/内部/深い"}).out, "deep");
  EXPECT_EQ(ksv({"ole", "cat", "doc", "書庫/stream"}).out, pattern(5000));
  EXPECT_EQ(ksv({"ole", "cat", "doc", "TOP"}).out, "top");
}

TEST_F(Ole, reads_standard_input) {
  EXPECT_EQ(ksv({"ole", "cat", "-", "Top"}, bytes_).out, "top");
  EXPECT_EQ(ksv({"ole", "list", "-"}, bytes_).out.substr(0, 15), "standard input\n");
}

TEST_F(Ole, cat_prefers_the_exact_name) {
  CompoundWriter writer;
  writer.addStream(0, u"NAME", "upper");
  writer.addStream(0, u"name", "lower");
  write("two", writer.write());
  EXPECT_EQ(ksv({"ole", "cat", "two", "name"}).out, "lower");
  EXPECT_EQ(ksv({"ole", "cat", "two", "NAME"}).out, "upper");
}

// Names that differ in characters that Shift_JIS lacks are told apart.
TEST_F(Ole, cat_takes_names_beyond_shift_jis) {
  CompoundWriter writer;
  writer.addStream(0, u"A", "latin");
  writer.addStream(0, u"\u0141", "polish");
  writer.addStream(0, u"\U0001F600\xD800/\\", "odd");
  write("odd", writer.write());
  EXPECT_EQ(ksv({"ole", "cat", "odd", "Ł"}).out, "polish");
  EXPECT_EQ(ksv({"ole", "cat", "odd", "A"}).out, "latin");
  EXPECT_EQ(ksv({"ole", "cat", "odd", "😀\\uD800\\x2F\\x5C"}).out, "odd");
}

TEST_F(Ole, cat_takes_the_first_of_names_that_differ_in_case) {
  CompoundWriter writer;
  writer.addStream(0, u"NAME", "upper");
  writer.addStream(0, u"NaMe", "mixed");
  write("two", writer.write());
  EXPECT_EQ(ksv({"ole", "cat", "two", "name"}).out, "upper");
}

TEST_F(Ole, list_writes_what_cannot_be_shown_by_its_code) {
  CompoundWriter writer;
  writer.addStorage(0, u"empty");
  writer.addStream(0, u"a\u0085\uE000", "control and private use");
  writer.addStream(0, u"b\xD83D", "half a pair");
  write("odd", writer.write());
  const Outcome outcome = ksv({"ole", "list", "odd"});
  EXPECT_EQ(outcome.status, 0);
  for (const char* shown : {"empty/\n", "a\\x85\xEE\x80\x80  23\n", "b\\uD83D  11\n"})
    EXPECT_NE(outcome.out.find(shown), std::string::npos) << shown << " in " << outcome.out;
}

TEST_F(Ole, cat_tells_what_is_not_there_and_what_is_no_stream) {
  EXPECT_EQ(expectFailure({"ole", "cat", "doc", "nothing"}), "ksv: doc: has no stream nothing\n");
  EXPECT_EQ(expectFailure({"ole", "cat", "doc", "Top/more"}), "ksv: doc: has no stream Top/more\n");
  EXPECT_EQ(expectFailure({"ole", "cat", "doc", "stream"}), "ksv: doc: has no stream stream\n");
  EXPECT_EQ(expectFailure({"ole", "cat", "doc", "書庫/nothing"}),
            "ksv: doc: has no stream 書庫/nothing\n");
  EXPECT_EQ(expectFailure({"ole", "cat", "doc", "書庫"}), "ksv: doc: 書庫 is a storage\n");
  EXPECT_EQ(expectFailure({"ole", "cat", "none", "x"}), "ksv: none: No such file or directory\n");
}

TEST_F(Ole, classic_tells_where_a_document_is_damaged) {
  write("text", "This is no document.");
  EXPECT_EQ(expectFailure({"ole", "list", "--classic", "text"}),
            "ksv: text: is not a compound document (offset 0)\n");
  write("cut", bytes_.substr(0, 100));
  EXPECT_EQ(expectFailure({"ole", "list", "--classic", "cut"}),
            "ksv: cut: ends inside the header (offset 100)\n");
  std::string damaged = bytes_;
  putDword(damaged, 48, 100000);
  write("directory", damaged);
  EXPECT_EQ(expectFailure({"ole", "list", "--classic", "directory"}),
            "ksv: directory: has a damaged directory chain behind this sector (offset 48)\n");
}

// Only what has the signature of a document can be one of an unsupported kind.
TEST_F(Ole, classic_tells_damage_and_not_a_kind_where_the_kind_is_supported) {
  write("text", std::string(600, 'x'));
  EXPECT_EQ(expectFailure({"ole", "list", "text"}),
            "ksv: text: is not a compound document (offset 0)\n");
  std::string small = bytes_;
  small[30] = 7;
  write("small", small);
  const std::string told = expectFailure({"ole", "list", "--classic", "small"});
  EXPECT_EQ(told.find("not supported"), std::string::npos) << told;
}

TEST_F(Ole, classic_calls_documents_beyond_2_GB_not_supported) {
  std::string damaged = bytes_;
  putDword(damaged, 48, 100000000);
  write("large", damaged);
  std::filesystem::resize_file(path("large"), (uint64_t{1} << 31) + 512);
  EXPECT_EQ(expectFailure({"ole", "list", "--classic", "large"}),
            "ksv: large: is larger than 2 GB: not supported by --classic\n");
}

TEST_F(Ole, records_where_a_document_is_damaged) {
  write("cut", bytes_.substr(0, 100));
  EXPECT_EQ(ksv({"ole", "list", "--json", "cut"}).out,
            "{\"path\":\"cut\",\"error\":{\"reason\":\"ends inside the header\","
            "\"offset\":100,\"kind\":\"cut-short\"}}\n"
            "{\"path\":\"cut\",\"error\":{\"reason\":\"has a chain that leads out of its table\","
            "\"offset\":48,\"kind\":\"chain\"}}\n");
  EXPECT_EQ(ksv({"ole", "list", "--json", "--classic", "cut"}).out, "");
}

// Sectors of 2^12 bytes, as newer documents have them: the header fills the first.
TEST_F(Ole, classic_calls_documents_with_large_sectors_not_supported) {
  std::string large = bytes_.substr(0, 512) + std::string(4096 - 512, '\0') + bytes_.substr(512);
  large.resize(40960);
  large[26] = 4;
  large[30] = 12;
  write("large", large);
  const std::string reason = "ksv: large: has sectors of 4,096 bytes: not supported by --classic";
  EXPECT_EQ(expectFailure({"ole", "list", "--classic", "large"}), reason + " (offset 30)\n");
  EXPECT_EQ(expectFailure({"summary", "--classic", "large"}), reason + " (offset 30)\n");
}

// The entry of a stream says 2^31 + 5 bytes.
TEST_F(Ole, classic_cat_calls_streams_beyond_2_GB_not_supported) {
  const size_t entry = writer_.entryOffset(4);
  std::string large = bytes_;
  putDword(large, entry + 116, 100000);
  putDword(large, entry + 120, 0x80000005);
  write("large", large);
  EXPECT_EQ(expectFailure({"ole", "cat", "--classic", "large", "書庫/stream"}),
            "ksv: large: has a stream of 2147483653 bytes, beyond 2 GB: not supported by "
            "--classic\n");
}

TEST_F(Ole, classic_cat_tells_a_damaged_and_a_short_stream) {
  const size_t entry = writer_.entryOffset(4);
  std::string damaged = bytes_;
  putDword(damaged, entry + 116, 100000);
  write("damaged", damaged);
  EXPECT_EQ(
      expectFailure({"ole", "cat", "--classic", "damaged", "書庫/stream"}),
      "ksv: damaged: has a damaged stream 書庫/stream (offset " + std::to_string(entry) + ")\n");
  std::string larger = bytes_;
  putDword(larger, entry + 120, 6000);
  write("short", larger);
  const Outcome outcome = ksv({"ole", "cat", "--classic", "short", "書庫/stream"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out.substr(0, 5000), pattern(5000));
  EXPECT_EQ(outcome.err, "ksv: short: holds only 5120 of 6000 bytes of that stream\n");
}

TEST_F(Ole, classic_list_shows_what_it_can_of_entries_that_are_linked_wrongly) {
  std::string damaged = bytes_;
  const size_t top = writer_.entryOffset(6);
  putDword(damaged, top + 72, writer_.entryId(6));
  write("damaged", damaged);
  const Outcome outcome = ksv({"ole", "list", "--classic", "damaged"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.out.find("└─ Top  3\n"), std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.err, "ksv: damaged: has entries that are linked wrongly (offset " +
                             std::to_string(top) + ")\n");
}

// Beyond the last entry, and to one that is none.
TEST_F(Ole, classic_list_shows_what_it_can_where_a_link_leads_nowhere) {
  const size_t top = writer_.entryOffset(6);
  std::string damaged = bytes_;
  putDword(damaged, top + 72, 100000);
  write("beyond", damaged);
  damaged[writer_.entryOffset(3) + 66] = 0;
  write("none", damaged);
  for (const std::string name : {"beyond", "none"}) {
    const Outcome outcome = ksv({"ole", "list", "--classic", name});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("ksv: " + name + ": has entries that are linked wrongly (offset "),
              std::string::npos)
        << outcome.err;
  }
}

TEST_F(Ole, list_ends_at_storages_nested_too_deep) {
  CompoundWriter writer;
  uint32_t parent = 0;
  for (int i = 0; i < 300; ++i) parent = writer.addStorage(parent, u"s");
  write("deep", writer.write());
  const Outcome classic = ksv({"ole", "list", "--json", "--classic", "deep"});
  EXPECT_EQ(classic.status, 1);
  EXPECT_EQ(std::count(classic.out.begin(), classic.out.end(), '\n'), 256);
  const Outcome outcome = ksv({"ole", "list", "--json", "deep"});
  EXPECT_EQ(outcome.status, 1);
  ASSERT_EQ(outcome.out.substr(0, classic.out.size()), classic.out);
  const auto failure = nlohmann::json::parse(outcome.out.substr(classic.out.size()));
  EXPECT_EQ(failure.at("path"), "deep");
  EXPECT_EQ(failure.at("error").at("reason"), "has storages that are nested too deep to be listed");
}

TEST_F(Ole, tells_wrong_usage) {
  const std::vector<std::vector<std::string>> wrong = {
      {"ole"},
      {"ole", "list"},
      {"ole", "cat"},
      {"ole", "cat", "doc"},
      {"ole", "copy"},
      {"ole", "list", "a", "b"},
      {"ole", "list", "--quick", "doc"},
      {"ole", "list", "--long", "--json", "doc"},
      {"ole", "list", "--long", "--classic", "doc"},
      {"ole", "cat", "--classic", "-o", "a", "doc", "Top"},
      {"ole", "extract", "doc"},
      {"ole", "check", "--classic", "doc"}};
  for (const auto& arguments : wrong) {
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  }
}

}  // namespace
}  // namespace ksv_cli_tests
