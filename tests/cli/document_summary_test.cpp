// ksv summary: what it tells of documents beyond the described call.

#include <nlohmann/json.hpp>

#include "command.h"
#include "tests/ole/compound_writer.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_cli_tests {
namespace {

using namespace ksv::test;  // what makes the documents
using std::string_literals::operator""s;

class DocumentSummary : public CommandTest {
 protected:
  nlohmann::json recordOf(const std::string& name, bool all = false) {
    std::vector<std::string> arguments = {"summary", "--json", name};
    if (all) arguments.push_back("--all");
    const Outcome outcome = ksv(arguments);
    EXPECT_EQ(outcome.err, "");
    return nlohmann::json::parse(outcome.out);
  }
};

std::string counted(std::string_view bytes) {
  return dwords({static_cast<uint32_t>(bytes.size())}) + std::string(bytes);
}

Property typed(uint32_t id, uint32_t type, std::string_view bytes) {
  return {id, dwords({type}) + std::string(bytes)};
}

std::string withUserProperties(const std::vector<Property>& properties) {
  const std::string format = "\x05" + kDocumentSummaryFormatId.substr(1);
  return document("", propertySet({{kDocumentSummaryFormatId, section({codePage(1252)})},
                                   {format, section(properties)}}));
}

std::string withStream(std::u16string_view name, std::string_view bytes) {
  CompoundWriter writer;
  writer.addStream(0, name, bytes);
  return writer.write();
}

TEST_F(DocumentSummary, reads_texts_whole_and_in_their_own_code_pages) {
  const std::string longText(5000, 'x');
  write("a",
        document(summary({codePage(1251), text(2, "\xCF\xF0\xE8\xE2\xE5\xF2"), text(6, longText),
                          typed(4, 31, dwords({2}) + words(u"\u8868\0"s))})));
  const auto record = recordOf("a");
  EXPECT_EQ(record["title"], "Привет");
  EXPECT_EQ(record["comments"], longText);
  EXPECT_EQ(record["author"], "表");
}

TEST_F(DocumentSummary, tells_what_is_declared_wrongly) {
  write("a", document(summary({codePage(1200), text(2, "A title of bytes")})));
  const auto record = recordOf("a");
  EXPECT_EQ(record["title"], "A title of bytes");
  EXPECT_EQ(record["remarks"][0]["property"], "title");
  EXPECT_EQ(record["remarks"][0]["remark"],
            "code page 1200 is declared, and the text is read as windows-1252");
  EXPECT_EQ(
      ksv({"summary", "a"}).out,
      "a\n  Title                A title of bytes (code page 1200 is declared, and the text is "
      "read as windows-1252)\n");
}

TEST_F(DocumentSummary, has_times_with_their_fractions_lengths_of_time_and_counts) {
  write("a", document(summary({codePage(1252), time(10, 45 * uint64_t{600'000'000}), time(11, 0),
                               time(12, fileTime(2024, 2, 29) + 1), typed(14, 3, dwords({7})),
                               typed(19, 3, dwords({3}))})));
  const auto record = recordOf("a");
  EXPECT_EQ(record["editingTime"], "PT45M");
  EXPECT_EQ(record["created"], "2024-02-29T00:00:00.0000001Z");
  EXPECT_EQ(record["pages"], 7);
  EXPECT_EQ(record["security"], (nlohmann::json{"password", "readOnlyRecommended"}));
  EXPECT_FALSE(record.contains("lastPrinted"));
}

TEST_F(DocumentSummary, has_the_properties_that_users_have_named) {
  const std::string names = dwords({4, 2, 8}) + "Project\0"s + dwords({3, 5}) + "Done\0"s +
                            dwords({4, 4}) + "Due\0"s + dwords({5, 4}) + "Sum\0"s;
  write("a", withUserProperties({{0, names},
                                 codePage(1252),
                                 text(2, "Tunnel"),
                                 typed(3, 11, "\xFF\xFF"),
                                 time(4, fileTime(2025, 1, 2)),
                                 typed(5, 5, dwords({0, 0x40040000}))}));
  EXPECT_EQ(ksv({"summary", "a"}).out,
            "a\n"
            "  [Project]            Tunnel\n"
            "  [Done]               yes\n"
            "  [Due]                2025-01-02T00:00:00Z\n"
            "  [Sum]                2.5\n");
  const auto custom = recordOf("a")["custom"];
  ASSERT_EQ(custom.size(), 4u);
  EXPECT_EQ(custom[0],
            (nlohmann::json{{"name", "Project"}, {"type", "VT_LPSTR"}, {"value", "Tunnel"}}));
  EXPECT_EQ(custom[1]["value"], true);
  EXPECT_EQ(custom[3]["value"], 2.5);
}

TEST_F(DocumentSummary, has_every_set_as_it_stands_there) {
  CompoundWriter writer;
  writer.addStream(0, u"\u0005SummaryInformation",
                   summary({codePage(1252), text(2, "t"), typed(77, 65, counted("\0\1"s))}));
  const uint32_t storage = writer.addStorage(0, u"Inner");
  writer.addStream(
      storage, u"set",
      propertySet({{std::string(16, '\x11'), section({typed(2, 0x1003, dwords({2, 5, 6}))})}}));
  writer.addStream(storage, u"none", "no set at all, but long enough to be one");
  write("a", writer.write());
  const auto sets = recordOf("a", true)["sets"];
  ASSERT_EQ(sets.size(), 2u);
  EXPECT_EQ(sets[0]["stream"], "\\x05SummaryInformation");
  EXPECT_EQ(sets[0]["sections"][0]["formatName"], "summary");
  EXPECT_EQ(sets[0]["sections"][0]["codePage"], 1252);
  const auto& properties = sets[0]["sections"][0]["properties"];
  EXPECT_EQ(properties[1],
            (nlohmann::json{{"id", 2}, {"name", "title"}, {"type", "VT_LPSTR"}, {"value", "t"}}));
  EXPECT_EQ(properties[2]["value"]["base64"], "AAE=");
  EXPECT_EQ(sets[1]["stream"], "Inner/set");
  EXPECT_EQ(sets[1]["sections"][0]["format"], "{11111111-1111-1111-1111-111111111111}");
  EXPECT_EQ(sets[1]["sections"][0]["formatName"], nullptr);
  EXPECT_EQ(sets[1]["sections"][0]["properties"][0]["value"], (nlohmann::json{5, 6}));
  EXPECT_EQ(
      ksv({"summary", "--all", "a"}).out,
      "a\n"
      "  \\x05SummaryInformation {F29F85E0-4FF9-1068-AB91-08002B27B3D9} summary, code page 1252\n"
      "    1 codePage         VT_I2 1252\n"
      "    2 title            VT_LPSTR t\n"
      "    77                 VT_BLOB 2 bytes\n"
      "  Inner/set {11111111-1111-1111-1111-111111111111}\n"
      "    2                  VT_VECTOR|VT_I4 5, 6\n");
}

TEST_F(DocumentSummary, shows_what_is_sound_of_a_damaged_set_and_fails) {
  std::string set = summary({codePage(1252), text(2, "Title"), text(4, "Author")});
  const size_t value = 48 + getDword(set, 48 + 8 + 8 + 4);
  putDword(set, value + 4, 0x7FFFFFFF);
  write("a", document(set));
  const Outcome outcome = ksv({"summary", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "a\n  Author               Author\n");
  EXPECT_EQ(outcome.err,
            "ksv: a: is damaged: in \\x05SummaryInformation a value is cut (offset 88)\n");
  const Outcome json = ksv({"summary", "--json", "a"});
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(
      nlohmann::json::parse(json.out)["damages"][0],
      (nlohmann::json{
          {"reason", "a value is cut"}, {"stream", "\\x05SummaryInformation"}, {"offset", 88}}));
}

TEST_F(DocumentSummary, tells_that_a_document_is_cut_where_its_directory_is_gone) {
  CompoundWriter writer;
  writer.addStream(0, u"\u0005SummaryInformation", summary({text(2, "Title")}));
  writer.addStream(0, u"large", pattern(9000));
  const std::string bytes = writer.write();
  write("a", bytes.substr(0, 600));
  const Outcome outcome = ksv({"summary", "a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err.find("has no summary"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("(offset "), std::string::npos) << outcome.err;
}

TEST_F(DocumentSummary, tells_the_kind_by_class_and_streams) {
  CompoundWriter writer;
  writer.node(0).classId = "\x06\x09\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"s;
  writer.addStream(0, u"WordDocument",
                   "\xEC\xA5\0\0\0\0\0\0\0\0\x01\x01"s + std::string(100, '\0'));
  const uint32_t macros = writer.addStorage(0, u"Macros");
  const uint32_t code = writer.addStorage(macros, u"VBA");
  writer.addStream(code, u"dir", "x");
  write("a", writer.write());
  EXPECT_EQ(ksv({"summary", "a"}).out,
            "a\n  Kind                 Word document, template, encrypted, with macros\n");
  EXPECT_EQ(recordOf("a")["kind"], (nlohmann::json{{"name", "word"},
                                                   {"description", "Word document"},
                                                   {"confidence", 1.0},
                                                   {"macros", true},
                                                   {"encrypted", true},
                                                   {"template", true}}));
}

TEST_F(DocumentSummary, tells_the_kind_by_streams_alone) {
  const std::tuple<std::u16string, std::string, const char*> rows[] = {
      {u"Workbook", "\x09\x08\x04\0\0\6\0\0\x2F\0\2\0xx"s, "Excel workbook, encrypted"},
      {u"Book", "\x09\x08\x04\0\0\5\0\0\x60\0\0\0\x0A\0\0\0"s, "Excel workbook, template"},
      {u"PowerPoint Document", "x", "PowerPoint presentation"},
      {u"VisioDocument", "Visio (TM) Drawing\r\n", "Visio drawing"},
      {u"__properties_version1.0", "x", "mail message"},
      {u"\u4840\u3F7F\u4164", "x", "installer database"},
      {u"EncryptedPackage", "x", "encrypted zipped office document, encrypted"},
      {u"FileHeader", "HWP Document File"s + std::string(19, '\0') + "\2\0\0\0"s,
       "Hangul word processor document, encrypted"}};
  for (const auto& [stream, bytes, words] : rows) {
    write("a", withStream(stream, bytes));
    EXPECT_EQ(ksv({"summary", "a"}).out, "a\n  Kind                 "s + words + "\n");
  }
}

TEST_F(DocumentSummary, finds_macros_and_encryption_of_presentations) {
  const auto record = [](uint32_t type, const std::string& content) {
    return "\x0F\0"s + std::string(1, static_cast<char>(type)) +
           std::string(1, static_cast<char>(type >> 8)) + counted(content);
  };
  const std::string code = record(1023, record(1024, dwords({1, 1, 2})));
  const std::string stream =
      record(1000, record(1001, "xx") + record(2000, record(5, "y") + code) + record(6, ""));
  write("a", withStream(u"PowerPoint Document", stream));
  EXPECT_EQ(recordOf("a")["kind"]["macros"], true);
  CompoundWriter writer;
  writer.addStream(0, u"PowerPoint Document", stream.substr(0, 20));
  writer.addStream(0, u"Current User", dwords({0, 0, 0x14, 0xF3D1C4DF}));
  write("b", writer.write());
  const auto kind = recordOf("b")["kind"];
  EXPECT_EQ(kind["macros"], false);
  EXPECT_EQ(kind["encrypted"], true);
  EXPECT_EQ(kind["template"], nullptr);
}

std::string zipPart(std::string_view name, std::string_view content) {
  std::string header = "PK\3\4"s + std::string(22, '\0');
  header += words(std::u16string{static_cast<char16_t>(name.size()), 0});
  return header + std::string(name) + std::string(content);
}

TEST_F(DocumentSummary, names_zipped_documents_and_refuses_them) {
  const std::pair<std::string, std::string> rows[] = {
      {zipPart("[Content_Types].xml", "<x/>") + zipPart("word/document.xml", "<y/>"),
       "a zipped Word document"},
      {zipPart("[Content_Types].xml", "<x/>") + zipPart("xl/workbook.xml", ""),
       "a zipped Excel workbook"},
      {zipPart("ppt/presentation.xml", ""), "a zipped PowerPoint presentation"},
      {zipPart("[Content_Types].xml", ""), "a zipped office document"},
      {zipPart("mimetype", "application/vnd.oasis.opendocument.text"), "an OpenDocument text"},
      {zipPart("mimetype", "application/vnd.oasis.opendocument.formula"),
       "an OpenDocument document"}};
  for (const auto& [bytes, words] : rows) {
    write("a", bytes);
    const Outcome outcome = ksv({"summary", "a"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ksv: a: is " + words + ", which is no compound document (offset 0)\n");
  }
  write("a", zipPart("readme.txt", "hello"));
  EXPECT_EQ(ksv({"summary", "a"}).err, "ksv: a: is not a compound document (offset 0)\n");
}

TEST_F(DocumentSummary, reads_documents_with_large_sectors) {
  CompoundWriter writer;
  writer.useVersion4();
  writer.addStream(0, u"\u0005SummaryInformation", summary({codePage(1252), text(2, "Title")}));
  write("a", writer.write());
  EXPECT_EQ(ksv({"summary", "a"}).out, "a\n  Title                Title\n");
}

}  // namespace
}  // namespace ksv_cli_tests
