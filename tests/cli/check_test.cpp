// ksv check: charset, declared, mark, byte order and line end of a text.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "command.h"

namespace ksv_cli_tests {
namespace {

class Check : public CommandTest {};

TEST_F(Check, writes_charset_declaration_mark_byte_order_and_line_end) {
  const auto line = [this](const std::string& text) {
    const std::string line = ksv({"check", "--classic"}, text).out;
    EXPECT_EQ(ksv({"check"}, text).out, "-\t" + line);
    return line;
  };
  EXPECT_EQ(line("plain\ntext\nx"), "ISO-646IRV\t-\t-\t-\tlf\n");
  EXPECT_EQ(line("<?xml encoding='Shift_JIS'?>\r\n<a/>"), "Shift_JIS\tdeclared\t-\t-\tcrlf\n");
  EXPECT_EQ(line(bytes({0xFF, 0xFE, 'a', 0})), "UTF-16\t-\tbom\tlittle\t-\n");
  EXPECT_EQ(line(bytes({0xFE, 0xFF, 0, 'a', 0x20, 0x28, 0, 'b'})), "UTF-16\t-\tbom\tbig\tU+2028\n");
  EXPECT_EQ(line(bytes({0x93, 0xFA, '\r', 0x96, 0x7B})), "WINDOWS31J\t-\t-\t-\tcr\n");
  EXPECT_EQ(line(bytes({0, 1, 2})), "unknown\t-\t-\t-\t-\n");
  EXPECT_EQ(line(""), "unknown\t-\t-\t-\t-\n");
}

TEST_F(Check, writes_one_json_object_a_line) {
  write("xml", "<?xml encoding='EUC-JP'?>\n<a/>");
  write("none", bytes({0, 1, 2}));
  const Outcome outcome = ksv({"check", "--json", "xml", "none"});
  const size_t end = outcome.out.find('\n');
  const auto xml = nlohmann::json::parse(outcome.out.substr(0, end));
  EXPECT_EQ(xml.at("path"), "xml");
  EXPECT_EQ(xml.at("charset"), "EUC-JP");
  EXPECT_EQ(xml.at("declared"), true);
  EXPECT_EQ(xml.at("byteOrderMark"), false);
  EXPECT_EQ(xml.at("byteOrder"), nullptr);
  EXPECT_EQ(xml.at("lineEnd"), "lf");
  const auto none = nlohmann::json::parse(outcome.out.substr(end));
  EXPECT_EQ(none.at("path"), "none");
  EXPECT_EQ(none.at("charset"), nullptr);
}

TEST_F(Check, puts_the_path_in_front_of_one_file_and_of_many) {
  write("a", "plain");
  write("b", "\xEF\xBB\xBF");
  const Outcome outcome = ksv({"check", "-j", "4", "a", "missing", "b"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "a\tISO-646IRV\t-\t-\t-\t-\nb\tUTF-8\t-\tbom\t-\t-\n");
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
  EXPECT_EQ(ksv({"check", "a"}).out, "a\tISO-646IRV\t-\t-\t-\t-\n");
}

TEST_F(Check, classic_puts_the_path_in_front_of_many_files_only) {
  write("a", "plain");
  write("b", "\xEF\xBB\xBF");
  EXPECT_EQ(ksv({"check", "--classic", "a", "b"}).out,
            "a\tISO-646IRV\t-\t-\t-\t-\nb\tUTF-8\t-\tbom\t-\t-\n");
  EXPECT_EQ(ksv({"check", "--classic", "a"}).out, "ISO-646IRV\t-\t-\t-\t-\n");
}

TEST_F(Check, records_a_failure_in_its_place) {
  write("a", "plain");
  const Outcome outcome = ksv({"check", "--json", "a", "missing", "a"});
  EXPECT_EQ(outcome.status, 1);
  const std::string line =
      "{\"path\":\"a\",\"charset\":\"ISO-646IRV\",\"declared\":false,"
      "\"byteOrderMark\":false,\"byteOrder\":null,\"lineEnd\":null}\n";
  EXPECT_EQ(outcome.out, line +
                             "{\"path\":\"missing\",\"error\":{\"reason\":\"No such file or "
                             "directory\",\"offset\":null}}\n" +
                             line);
  EXPECT_EQ(outcome.err, "ksv: missing: No such file or directory\n");
  EXPECT_EQ(ksv({"check", "--json", "--classic", "a", "missing"}).out, line);
}

TEST_F(Check, keeps_a_declared_name_on_its_line) {
  const std::string text = "<?xml encoding='a\tb\nc\x1B[1m'?>";
  EXPECT_EQ(ksv({"check"}, text).out, "-\ta\\tb\\nc\\x1B[1m\tdeclared\t-\t-\tlf\n");
  EXPECT_EQ(ksv({"check", "--classic"}, text).out, "a?b?c?[1m\tdeclared\t-\t-\tlf\n");
  EXPECT_EQ(nlohmann::json::parse(ksv({"check", "--json"}, text).out).at("charset"),
            "a\tb\nc\x1B[1m");
}

TEST_F(Check, looks_at_the_first_MiB) {
  const std::string text = "<?xml " + std::string(2 * 1024 * 1024, ' ') + "encoding='EUC-JP'?>";
  EXPECT_EQ(ksv({"check", "--classic"}, text).out, "UTF-8\tdeclared\t-\t-\t-\n");
  const std::string near = "<?xml " + std::string(1000 * 1000, ' ') + "encoding='EUC-JP'?>";
  EXPECT_EQ(ksv({"check", "--classic"}, near).out, "EUC-JP\tdeclared\t-\t-\t-\n");
}

}  // namespace
}  // namespace ksv_cli_tests
