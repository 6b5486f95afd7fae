// ksv ole by the reader without the described limits: lists, streams, files, verdicts.

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command.h"
#include "tests/ole/compound_writer.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

using ksv::test::CompoundWriter;
using ksv::test::kNone;
using ksv::test::pattern;
using ksv::test::putDword;

class OleDocument : public CommandTest {
 protected:
  // Its siblings are in the order of their names.
  OleDocument() {
    writer_.addStream(0, u"Top", "top");
    storage_ = writer_.addStorage(0, u"Store");
    large_ = writer_.addStream(storage_, u"a:b/c", pattern(5000));
    writer_.addStream(0, u"\u0005Summary", "s");
    writer_.node(storage_).classId = std::string("\x06\x09\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16);
    writer_.node(storage_).stateBits = 1;
    writer_.node(storage_).modified = 133'000'000'000'000'001;
    bytes_ = writer_.write();
    write("doc", bytes_);
  }

  CompoundWriter writer_;
  uint32_t storage_, large_;
  std::string bytes_;
};

std::vector<nlohmann::json> recordsOf(const std::string& text) {
  std::vector<nlohmann::json> records;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) records.push_back(nlohmann::json::parse(line));
  return records;
}

TEST_F(OleDocument, list_long_is_a_line_an_entry) {
  const Outcome outcome = ksv({"ole", "list", "--long", "doc"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "stream\t3\t-\t-\t-\t00000000\tTop\n"
            "storage\t-\t-\t2022-06-18T04:26:40.0000001Z\t"
            "{00020906-0000-0000-C000-000000000046}\t00000001\tStore\n"
            "stream\t5000\t-\t-\t-\t00000000\tStore/a:b\\x2Fc\n"
            "stream\t1\t-\t-\t-\t00000000\t\\x05Summary\n");
}

TEST_F(OleDocument, list_records_what_entries_have) {
  const auto records = recordsOf(ksv({"ole", "list", "--json", "doc"}).out);
  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(records[1],
            nlohmann::json::parse(
                R"({"path":"Store","type":"storage",)"
                R"("modified":"2022-06-18T04:26:40.0000001Z",)"
                R"("classId":"{00020906-0000-0000-C000-000000000046}","stateBits":1})"));
  EXPECT_EQ(records[2],
            nlohmann::json::parse(R"({"path":"Store/a:b\\x2Fc","type":"stream","size":5000})"));
}

TEST_F(OleDocument, large_sectors_are_read) {
  writer_.useVersion4();
  write("large", writer_.write());
  EXPECT_EQ(ksv({"ole", "cat", "large", "Store/a:b\\x2Fc"}).out, pattern(5000));
  EXPECT_EQ(ksv({"ole", "list", "large"}).out.substr(0, 6), "large\n");
}

TEST_F(OleDocument, cat_writes_to_a_file) {
  EXPECT_EQ(ksv({"ole", "cat", "doc", "Store/a:b\\x2Fc", "-o", "out"}).status, 0);
  EXPECT_EQ(read("out"), pattern(5000));
}

TEST_F(OleDocument, cat_leaves_no_part_of_a_damaged_stream_in_a_file) {
  const size_t entry = writer_.entryOffset(large_);
  putDword(bytes_, entry + 120, 6000);
  write("short", bytes_);
  write("out", "before");
  const std::string reason = "ksv: short: has a stream that is shorter than it claims (offset " +
                             std::to_string(entry + 120) +
                             ")\nksv: short: holds only 5120 of 6000 bytes of that stream\n";
  const Outcome outcome = ksv({"ole", "cat", "short", "Store/a:b\\x2Fc"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, reason);
  EXPECT_EQ(outcome.out.substr(0, 5000), pattern(5000));
  const Outcome toFile = ksv({"ole", "cat", "short", "Store/a:b\\x2Fc", "-o", "out"});
  EXPECT_EQ(toFile.status, 1);
  EXPECT_EQ(read("out"), "before");
}

TEST_F(OleDocument, list_shows_what_there_is_of_a_damaged_tree) {
  const size_t top = writer_.entryOffset(storage_);
  putDword(bytes_, top + 76, 100000);
  write("damaged", bytes_);
  const Outcome outcome = ksv({"ole", "list", "damaged"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "damaged\n"
            "├─ Top  3\n"
            "├─ Store/\n"
            "├─ \\x05Summary  1\n"
            "└─ \\orphaned/" +
                std::to_string(writer_.entryId(large_)) + "/a:b\\x2Fc  5000\n");
  EXPECT_EQ(outcome.err, "ksv: damaged: has a link to an entry that is none (offset " +
                             std::to_string(top + 76) + ")\n");
  const std::string path = "\\orphaned/" + std::to_string(writer_.entryId(large_)) + "/a:b\\x2Fc";
  EXPECT_EQ(ksv({"ole", "cat", "damaged", path}).out, pattern(5000));
  const auto records = recordsOf(ksv({"ole", "list", "--json", "damaged"}).out);
  EXPECT_EQ(records[3].at("path"), path);
  EXPECT_EQ(records[3].at("orphaned"), true);
  EXPECT_EQ(records[4].at("error").at("kind"), "link");
}

TEST_F(OleDocument, extract_writes_directories_and_files) {
  const Outcome outcome = ksv({"ole", "extract", "--json", "doc", "all"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(files("all"), (std::vector<std::string>{"Store", "Top", "_x05Summary"}));
  EXPECT_EQ(read("all/Top"), "top");
  EXPECT_EQ(read("all/_x05Summary"), "s");
  EXPECT_EQ(read("all/Store/a_b_x2Fc"), pattern(5000));
  const auto records = recordsOf(outcome.out);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[1].at("path"), "Store/a:b\\x2Fc");
  EXPECT_EQ(records[1].at("size"), 5000);
  EXPECT_TRUE(std::filesystem::path(records[1].at("file").get<std::string>()).filename() ==
              "a_b_x2Fc");
}

TEST_F(OleDocument, extract_stays_in_its_directory) {
  CompoundWriter writer;
  const uint32_t storage = writer.addStorage(0, u"..");
  writer.addStream(storage, u"../../x", "1");
  writer.addStream(0, u"/etc", "2");
  writer.addStream(0, u"nul", "3");
  writer.addStream(0, u"A*", "4");
  writer.addStream(0, u"A?", "5");
  write("odd", writer.write());
  const auto before = files();
  const Outcome outcome = ksv({"ole", "extract", "odd", "in"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  auto after = before;
  after.push_back("in");
  std::sort(after.begin(), after.end());
  EXPECT_EQ(files(), after);
  EXPECT_EQ(files("in"), (std::vector<std::string>{"A_", "A_-2", "_nul", "_x2Fetc", "part"}));
  EXPECT_EQ(read("in/A_"), "4");
  EXPECT_EQ(read("in/A_-2"), "5");
}

TEST_F(OleDocument, extract_replaces_nothing_unless_it_is_told) {
  EXPECT_EQ(ksv({"ole", "extract", "doc", "all"}).status, 0);
  EXPECT_EQ(ksv({"ole", "extract", "doc", "all"}).status, 0) << "the same bytes are there";
  write("all/Top", "you");
  const Outcome refused = ksv({"ole", "extract", "doc", "all"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("is there already\n"), std::string::npos) << refused.err;
  EXPECT_EQ(read("all/Top"), "you");
  EXPECT_EQ(ksv({"ole", "extract", "--replace", "doc", "all"}).status, 0);
  EXPECT_EQ(read("all/Top"), "top");
}

TEST_F(OleDocument, extract_leaves_out_streams_that_are_not_whole) {
  putDword(bytes_, writer_.entryOffset(large_) + 120, 60000);
  write("short", bytes_);
  const Outcome outcome = ksv({"ole", "extract", "short", "all"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.substr(0, outcome.err.find('\n')),
            "ksv: short: Store/a:b\\x2Fc: holds only 5120 of 60000 bytes");
  EXPECT_EQ(files("all"), (std::vector<std::string>{"Store", "Top", "_x05Summary"}));
  EXPECT_EQ(files("all/Store"), std::vector<std::string>());
}

// A hundred streams of the same sectors would be a hundred times the file.
TEST_F(OleDocument, extract_writes_no_more_than_the_file_has) {
  CompoundWriter writer;
  const uint32_t first = writer.addStream(0, u"000", pattern(100'000));
  for (int i = 1; i < 100; ++i) {
    std::u16string name = u"000";
    name[1] = static_cast<char16_t>(u'0' + i / 10);
    name[2] = static_cast<char16_t>(u'0' + i % 10);
    writer.addStream(0, name, "");
  }
  std::string bytes = writer.write();
  for (uint32_t node = first + 1; node < first + 100; ++node)
    for (const size_t field : {116, 120})
      putDword(bytes, writer.entryOffset(node) + field,
               ksv::test::getDword(bytes, writer.entryOffset(first) + field));
  write("shared", bytes);
  const Outcome outcome = ksv({"ole", "extract", "shared", "all"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(files("all"), std::vector<std::string>{"000"});
}

TEST_F(OleDocument, check_calls_sound_what_is_sound) {
  const Outcome outcome = ksv({"ole", "check", "doc"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "doc: sound\n");
  const auto records = recordsOf(ksv({"ole", "check", "--json", "doc"}).out);
  EXPECT_EQ(records[0].at("verdict"), "sound");
  EXPECT_EQ(records[0].at("version"), 3);
  EXPECT_EQ(records[0].at("sectorSize"), 512);
  EXPECT_EQ(records[0].at("entries"), 5);
  EXPECT_EQ(records[0].at("damages"), nlohmann::json::array());
}

TEST_F(OleDocument, check_tells_each_damage_with_its_place) {
  const size_t size = writer_.entryOffset(large_) + 120;
  putDword(bytes_, size, 6000);
  write("short", bytes_);
  const Outcome outcome = ksv({"ole", "check", "short", "doc"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "short: damaged\n"
            "  has a stream that is shorter than it claims (offset " +
                std::to_string(size) + "): Store/a:b\\x2Fc\ndoc: sound\n");
  const auto records = recordsOf(ksv({"ole", "check", "--json", "short"}).out);
  EXPECT_EQ(records[0].at("damages")[0],
            (nlohmann::json{{"kind", "size"},
                            {"reason", "has a stream that is shorter than it claims"},
                            {"offset", size},
                            {"entry", "Store/a:b\\x2Fc"}}));
}

TEST_F(OleDocument, check_tells_orphans_by_a_status_of_their_own) {
  putDword(bytes_, writer_.entryOffset(storage_) + 76, kNone);
  write("orphan", bytes_);
  const Outcome outcome = ksv({"ole", "check", "orphan", "doc"});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.out, "orphan: orphaned\n  has an orphaned entry: \\orphaned/" +
                             std::to_string(writer_.entryId(large_)) + "/a:b\\x2Fc\ndoc: sound\n");
}

TEST_F(OleDocument, check_fails_for_what_is_no_document) {
  write("text", "text");
  const Outcome outcome = ksv({"ole", "check", "text", "none", "doc"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "doc: sound\n");
  EXPECT_EQ(outcome.err,
            "ksv: text: is not a compound document (offset 0)\n"
            "ksv: none: No such file or directory\n");
}

TEST_F(OleDocument, check_reads_standard_input_and_directories) {
  EXPECT_EQ(ksv({"ole", "check"}, bytes_).out, "standard input: sound\n");
  std::filesystem::create_directory(path("folder"));
  write("folder/a", bytes_);
  write("folder/b", bytes_);
  const Outcome outcome = ksv({"ole", "check", "-r", "-j", "2", "folder"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "folder/a: sound\nfolder/b: sound\n");
}

}  // namespace
}  // namespace ksv_cli_tests
