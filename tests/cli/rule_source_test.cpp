// How a rule file is looked at for faults, and the faults of files that are hardly rule files.

#include "cli/charsets/rule_source.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/charsets/rule_lint.h"
#include "tests/system/system.h"

namespace ksv_cli_tests {
namespace {

using ksv_cli::RuleSource;
using ksv_cli::TextForm;
using namespace std::string_literals;

std::vector<uint8_t> bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// Each character in a unit of so many bytes.
std::string units(const std::string& text, size_t size, bool bigEndian) {
  std::string all;
  const std::string zeroes(size - 1, '\0');
  for (const char c : text) all += bigEndian ? zeroes + c : c + zeroes;
  return all;
}

std::string utf16(const std::string& text) { return "\xFF\xFE" + units(text, 2, false); }

// The form, "4 big-endian" or the like, or what is wrong.
std::string formOf(const std::string& text) {
  const auto finding = ksv_cli::formOf(bytesOf(text));
  if (!finding.form) return finding.fault;
  return std::to_string(finding.form->unitSize) + (finding.form->bigEndian ? " big" : " little");
}

TEST(RuleSource, has_the_form_that_its_beginning_tells) {
  EXPECT_EQ(formOf(""), "is empty");
  EXPECT_EQ(formOf(utf16("encoding=\"UTF-16\"\r\n")), "2 little");
  EXPECT_EQ(formOf(utf16("anything")), "2 little");
  EXPECT_EQ(formOf("\xFE\xFF" + units("encoding=\"UTF-16\"", 2, true)), "2 big");
  EXPECT_EQ(formOf("\xFE\xFF" + units("encoding=\"ISO-10646-UCS-2\"", 2, true)), "2 big");
  EXPECT_EQ(formOf("\xFE\xFF" + units("\nencoding=\"UTF-16\"", 2, true)),
            "is big-endian, which its first line has to tell by the name UTF-16");
  EXPECT_EQ(formOf("\xFF\0\0\xFE"s + units("a", 4, false)), "4 little");
  EXPECT_EQ(formOf("\xFE\0\0\xFF"s + units("a", 4, true)), "4 big");
  EXPECT_EQ(formOf(units("a", 2, false)), "2 little") << "without a mark";
}

TEST(RuleSource, of_single_bytes_is_called_what_it_says_it_is) {
  EXPECT_EQ(formOf("<?xml encoding=\"utf-8\"?>"), "is UTF-8, and has to be UTF-16");
  EXPECT_EQ(formOf("<?xml encoding=\"shift_jis\"?>"), "is Shift_JIS, and has to be UTF-16");
  EXPECT_EQ(formOf("<charset>"), "is not UTF-16");
  EXPECT_EQ(formOf("\xFF"), "is not UTF-16");
  EXPECT_EQ(formOf("\xFF\x41"), "is not UTF-16");
}

TEST(RuleSource, has_lines_that_end_as_any_system_ends_them) {
  const ksv_cli::LinedText text("a\nb\rc\r\nd\r");
  for (const auto& [position, line] : {std::pair<size_t, size_t>{0, 1},
                                       {1, 1},
                                       {2, 2},
                                       {4, 3},
                                       {5, 3},
                                       {6, 3},
                                       {7, 4},
                                       {8, 4},
                                       {9, 5}}) {
    EXPECT_EQ(text.lineAt(position), line) << position;
  }
}

TEST(RuleSource, keeps_a_place_for_what_is_no_ASCII) {
  EXPECT_EQ(ksv_cli::decoded(bytesOf("\xFF\xFE"s + "a\0\0\0B0"s), {2, false}).text(), "a\x7F\x7F");
  EXPECT_EQ(ksv_cli::decoded(bytesOf("a\0\xFF\xFE"s), {2, false}).text(), "a\x7F");
}

TEST(RuleSource, has_no_mark_of_two_or_four_bytes_in_its_text) {
  EXPECT_EQ(ksv_cli::decoded(bytesOf("\xFF\xFE"s + "a\0"s), {2, false}).text(), "a");
  EXPECT_EQ(ksv_cli::decoded(bytesOf("\xFE\xFF\0a"s), {2, true}).text(), "a");
  EXPECT_EQ(ksv_cli::decoded(bytesOf("\xFF\0\0\xFE"s + "a\0\0\0"s), {4, false}).text(), "a");
  EXPECT_EQ(ksv_cli::decoded(bytesOf("\xFE\0\0\xFF\0\0\0a\0"s), {4, true}).text(), "a")
      << "a byte is left over";
}

RuleSource source(const std::string& text) { return {bytesOf(utf16(text)), {2, false}}; }

TEST(RuleSource, finds_elements_with_and_without_an_end_of_their_own) {
  const RuleSource text = source("<a x=\"1\"/><b>in</b><c <d>");
  ASSERT_TRUE(text.element("a", 0));
  EXPECT_EQ(text.textOf(*text.element("a", 0)), "x=\"1\"");
  ASSERT_TRUE(text.element("b", 0));
  EXPECT_EQ(text.textOf(*text.element("b", 0)), "in");
  EXPECT_FALSE(text.element("d", 0)) << "it has no end";
  EXPECT_FALSE(text.element("c", 0));
  EXPECT_FALSE(text.element("e", 0));
}

TEST(RuleSource, leaves_out_comments_and_instructions_that_have_an_end) {
  const RuleSource text = source("<?xml <a>1</a> ?><!-- <a>2</a> --><a>3</a><!-- <b>4</b>");
  EXPECT_EQ(text.textOf(*text.element("a", 0)), "3");
  EXPECT_EQ(text.textOf(*text.element("b", 0)), "4") << "nothing ends the comment";
}

TEST(RuleSource, has_attributes_in_their_element_and_quotes_only) {
  const auto attribute = [](const std::string& text, size_t end = 99) {
    return source(text).attribute({0, end}, "n=").value_or("none");
  };
  EXPECT_EQ(attribute("n=\"1\""), "1");
  EXPECT_EQ(attribute("n=\"1"), "none");
  EXPECT_EQ(attribute("n="), "none");
  EXPECT_EQ(attribute("m=\"1\""), "none");
  EXPECT_EQ(attribute("    n=\"1\"", 3), "none") << "behind the element";
}

TEST(RuleSource, has_entities_that_end_in_their_element) {
  const auto entity = [](const std::string& text, size_t end = 99) {
    return source(text).entity({0, end}).value_or("none");
  };
  EXPECT_EQ(entity("&name;"), "name");
  EXPECT_EQ(entity("& name;"), "name");
  EXPECT_EQ(entity("&name"), "none");
  EXPECT_EQ(entity("&  "), "none");
  EXPECT_EQ(entity("name;"), "none");
  EXPECT_EQ(entity("    &name;", 3), "none");
  EXPECT_EQ(entity("&name;", 3), "none") << "its end stands behind the element";
}

TEST(RuleSource, has_a_file_for_an_entity_that_is_declared_whole) {
  const auto file = [](const std::string& text) {
    return source(text).fileOf("e").value_or("none");
  };
  EXPECT_EQ(file("<!ENTITY e SYSTEM \"f.txt\">"), "f.txt");
  for (const char* text :
       {"<!ENTITY f SYSTEM \"f.txt\">", "<!ENTITY e PUBLIC \"f.txt\">", "<!ENTITY e SYSTEM f.txt>",
        "<!ENTITY e SYSTEM \"f.txt", "<!ENTITY e SYSTEM "}) {
    EXPECT_EQ(file(text), "none") << text;
  }
  EXPECT_FALSE(source("<!ENTITY  SYSTEM \"f.txt\">").fileOf(""));
}

// What is wrong with a directory of these files, each "FILE:LINE: REASON".
class RareDirectory : public testing::Test {
 protected:
  ~RareDirectory() override { std::filesystem::remove_all(path_); }

  void put(const std::string& name, const std::string& text) const { write(name, utf16(text)); }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path_ + "/" + name, std::ios::binary) << bytes;
  }

  std::string faults() const {
    const ksv_cli::LintFindings found = ksv_cli::lintCharsetDirectory(path_);
    std::string all;
    for (const ksv_cli::Fault& fault : found.faults) all += ksv_cli::shownFault(fault) + "\n";
    for (const std::string& file : found.unreadable) all += file + "\n";
    return all;
  }

  // Behind the first line, which names the form.
  void putCharset(const std::string& members, const std::string& name = "Quay",
                  const std::string& rule = kRule) const {
    put("quay.xml",
        "<?xml encoding=\"UTF-16\"?>\n<!ENTITY s SYSTEM \"set.xml\">\n"
        "<!ENTITY t SYSTEM \"t.txt\">\n<charset>\n<name>" +
            name + "</name>\n" + rule + members + "</charset>\n");
  }

  static constexpr char kRule[] = "<rule construle=\"constSAME\" destrule=\"destSAME\"/>\n";
  const std::string path_ = ksv::test::makeTemporaryDirectory("ksv_lint");
};

TEST_F(RareDirectory, without_a_charset_says_so) {
  EXPECT_EQ(faults(), ".: holds no charset rule file that can be read\n");
  put("set.xml", "<subseta><name>set</name></subseta>");
  put("other.xml", "<nothing/>");
  EXPECT_EQ(faults(),
            ".: holds no charset rule file that can be read\n"
            "other.xml:1: holds neither a charset nor a set\n");
}

TEST_F(RareDirectory, tells_charsets_without_a_usable_name) {
  putCharset("", "");
  EXPECT_EQ(faults(),
            ".: holds no charset rule file that can be read\n"
            "quay.xml:5: has an empty <name>\n");
  putCharset("", std::string(260, 'n'));
  EXPECT_EQ(faults(),
            ".: holds no charset rule file that can be read\n"
            "quay.xml:5: has a <name> that is too long\n");
}

TEST_F(RareDirectory, tells_a_charset_without_codecs) {
  putCharset("", "Quay", "");
  EXPECT_EQ(faults(), "quay.xml:5: has no <rule>, which names the codecs\n");
}

TEST_F(RareDirectory, tells_members_without_a_file) {
  putCharset("<baseset>no entity</baseset>\n");
  EXPECT_EQ(faults(), "quay.xml:7: names no file: an entity such as &name; is needed\n");
  putCharset("<diffset>&none;</diffset>\n");
  EXPECT_EQ(faults(), "quay.xml:7: uses the entity &none;, which is not declared\n");
  putCharset("<baseset>&s;</baseset>\n");
  EXPECT_EQ(faults(), "quay.xml:7: names the set file set.xml, which is missing\n");
  write("set.xml", "<subseta>");
  EXPECT_EQ(faults(),
            "quay.xml:7: names the set file set.xml, which cannot be read\n"
            "set.xml: is not UTF-16\n");
}

TEST_F(RareDirectory, tells_what_a_set_lacks) {
  const std::string name = "<name>set</name>\n";
  putCharset("<baseset>&s;</baseset>\n");
  put("set.xml", name);
  EXPECT_EQ(faults(), "set.xml:1: has no <subseta>, which a baseset needs\n");
  put("set.xml", "<subseta>\n" + name + "</subseta>");
  EXPECT_EQ(faults(), "set.xml:2: has no <lang> behind this line\n");
  put("set.xml", "<subseta>\n" + name + "<lang domain=\"\"/>\n</subseta>");
  EXPECT_EQ(faults(), "set.xml:3: has no <code> behind this line\n");
  put("set.xml", "<subseta>\n<name></name><lang domain=\"\"/><code />\n</subseta>");
  EXPECT_EQ(faults(), "set.xml:2: has an empty <name>\n");
}

TEST_F(RareDirectory, looks_for_no_language_of_a_users_set) {
  putCharset("<eudcset>&s;</eudcset>\n");
  put("set.xml", "<name>set</name><codec />");
  EXPECT_EQ(faults(), "");
  put("set.xml", "<name>set</name>\n<code />");
  EXPECT_EQ(faults(), "set.xml:1: has no <codec> behind this line\n");
}

TEST_F(RareDirectory, tells_two_sets_of_one_name) {
  put("quay.xml",
      "<!ENTITY s SYSTEM \"set.xml\"><!ENTITY o SYSTEM \"other.xml\">\n<charset>"
      "<name>Quay</name>" +
          std::string(kRule) +
          "<baseset>&s;</baseset><baseset>&s;</baseset><baseset>&o;</baseset></charset>");
  for (const char* file : {"set.xml", "other.xml"})
    put(file, "<subseta><name>one</name><lang domain=\"\"/><code /></subseta>");
  EXPECT_EQ(faults(),
            "other.xml:1: gives the set one the number that one of set.xml has: only one of "
            "them is used\n");
}

TEST_F(RareDirectory, tells_codes_that_are_wider_than_their_set) {
  putCharset("<baseset>&s;</baseset>\n");
  for (const char* width : {"bytenum=\"1\"", "bytenum=\"2\"", ""}) {
    put("set.xml", "<subseta><name>set</name><lang domain=\"\"/><code " + std::string(width) +
                       "/><srtable>&t;</srtable></subseta>");
    put("t.txt", "41 0041\n1fFFFF 0042\n123456789 0043\n43 110000\r\n");
    const std::string bytes = width[0] != '\0' && width[9] == '1' ? "1 byte" : "2 bytes";
    EXPECT_EQ(faults(), "t.txt:2: has a code of more than " + bytes +
                            "\nt.txt:3: has a number of more than 8 digits\n"
                            "t.txt:4: has a character beyond U+10FFFF\n");
  }
}

TEST_F(RareDirectory, takes_a_table_of_one_digit_and_of_letters_of_either_case) {
  putCharset("<baseset>&s;</baseset>\n");
  put("set.xml",
      "<subseta><name>set</name><lang domain=\"\"/><code /><srtable>&t;</srtable></subseta>");
  put("t.txt", "a 00AbG\nFf 00fE\n4\r\n");
  EXPECT_EQ(faults(), "t.txt:3: holds 1 number, not a code and a character\n");
}

TEST_F(RareDirectory, reads_aliases_as_text_only) {
  putCharset("");
  write("aliases.txt",
        "\xEF\xBB\xBF# a comment\n\nharbour quay little\nhaven quay big\nport quay -\n");
  EXPECT_EQ(faults(), "");
  write("aliases.txt", "harbour\nhaven quay wide\n");
  EXPECT_EQ(faults(),
            "aliases.txt:1: names no charset for harbour\n"
            "aliases.txt:2: has wide in place of little, big or -\n");
  write("aliases.txt", utf16("haven quay\n"));
  EXPECT_EQ(faults(), "aliases.txt: is not UTF-8\n");
}

}  // namespace
}  // namespace ksv_cli_tests
