// ksv lint, and what ksv tables tells: each fault of a charset directory by file and line.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "cli/charsets/codec_names.h"
#include "command.h"

namespace ksv_cli_tests {
namespace {

namespace fs = std::filesystem;

// In UTF-16, least significant byte first, with its mark.
std::string utf16(const std::string& ascii) {
  std::string text = "\xFF\xFE";
  for (const char c : ascii) text += {c, '\0'};
  return text;
}

const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n";

// The ends of the names in the rows of the table of codecs: "constNAME" and "destNAME".
void addCodecsNamedIn(const fs::path& source, std::set<std::string>& codecs) {
  std::ifstream file(source);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  for (const std::string beginning : {"\"const", "\"dest"})
    for (size_t at = text.find(beginning); at != std::string::npos;
         at = text.find(beginning, at + 1)) {
      const size_t name = at + beginning.size();
      codecs.insert(text.substr(name, text.find('"', name) - name));
    }
}

// A directory with one charset of single bytes, without a fault.
class Lint : public CommandTest {
 protected:
  Lint() {
    fs::create_directory(path("d"));
    setEnvironment("Charsetpath", path("d"));
    put("quay.xml", charset_);
    put("set.quay.xml", set_);
    put("quay.txt", table_);
  }

  void put(const std::string& name, const std::string& text) const {
    write("d/" + name, utf16(text));
  }

  // The file with the first occurrence of a text replaced.
  void change(const std::string& name, std::string text, const std::string& from,
              const std::string& to) const {
    const size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    put(name, text.replace(at, from.size(), to));
  }

  std::string faults() const {
    const Outcome outcome = ksv({"lint", "d"});
    EXPECT_EQ(outcome.status, outcome.out.empty() ? 0 : 1);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }

  const std::string charset_ = kHead +
                               "<!DOCTYPE charset [\r\n"
                               "<!ENTITY set.quay SYSTEM \"set.quay.xml\">\r\n"
                               "<!ENTITY table.quay SYSTEM \"QUAY.TXT\">\r\n"
                               "]>\r\n"
                               "<charset>\r\n"
                               "<name>Quay</name>\r\n"
                               "<rule construle=\"constSAME\" destrule=\"destSAME\"/>\r\n"
                               "<baseset>&set.quay;\r\n"
                               "</baseset>\r\n"
                               "</charset>\r\n";
  const std::string set_ = kHead +
                           "<!-- a comment\r\nof two lines with <name> in it -->\r\n"
                           "<subseta>\r\n"
                           "<name>Quay-Set</name>\r\n"
                           "<lang domain=\"en\"/>\r\n"
                           "<code bytenum=\"1\"/>\r\n"
                           "<srtable>&table.quay;</srtable>\r\n"
                           "</subseta>\r\n";
  const std::string table_ = "<table encoding=\"UTF-16\">\r\n41 0041\r\n42 3042\r\n";
};

TEST_F(Lint, finds_nothing_in_the_directory_that_is_shipped) {
  setEnvironment("Charsetpath", charsetDirectory());
  const Outcome outcome = ksv({"lint"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(Lint, finds_nothing_in_a_sound_directory_and_writes_nothing) {
  EXPECT_EQ(faults(), "");
  EXPECT_EQ(files("d"), (std::vector<std::string>{"quay.txt", "quay.xml", "set.quay.xml"}));
  EXPECT_EQ(ksv({"charsets"}).out, "quay\n");
}

TEST_F(Lint, names_the_codecs_of_the_library) {
  for (const char* codec : ksv_cli::kCodecNames) {
    change("quay.xml", charset_, "constSAME", std::string("const") + codec);
    EXPECT_EQ(faults(), "") << codec;
  }
  change("quay.xml", charset_, "constSAME", "constSame");
  EXPECT_EQ(faults(), "quay.xml:8: names the unknown codec constSame\n");
  change("quay.xml", charset_, "destrule", "distrule");
  EXPECT_EQ(faults(), "quay.xml:8: has a <rule> without destrule=\n");
}

TEST_F(Lint, takes_no_codec_for_one_that_the_library_does_not_set_up) {
  const auto statusWith = [&](const std::string& encoder, const std::string& decoder) {
    std::string text = charset_;
    text.replace(text.find("constSAME"), 9, encoder).replace(text.find("destSAME"), 8, decoder);
    put("quay.xml", text);
    return ksv({"convert", "-f", "quay", "-t", "quay"}).status;
  };
  for (const std::string codec : ksv_cli::kCodecNames)
    EXPECT_EQ(statusWith("const" + codec, "dest" + codec), 0) << codec;
  EXPECT_EQ(statusWith("constSame", "destSAME"), 1);
  EXPECT_EQ(statusWith("constSAME", "destSame"), 1);
}

TEST_F(Lint, knows_every_codec_of_the_library) {
  const fs::path sources = fs::path(KSV_COMMAND_PAGE).parent_path().parent_path();
  std::set<std::string> codecs;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(sources / "cconv"))
    if (entry.path().filename() == "codec_table.cpp") addCodecsNamedIn(entry.path(), codecs);
  EXPECT_EQ(codecs, std::set<std::string>(std::begin(ksv_cli::kCodecNames),
                                          std::end(ksv_cli::kCodecNames)));
}

TEST_F(Lint, tells_files_in_other_encodings) {
  write("d/set.quay.xml", "<?xml version=\"1.0\" encoding=\"utf-8\"?><subseta></subseta>");
  EXPECT_EQ(faults(),
            "quay.xml:9: names the set file set.quay.xml, which cannot be read\n"
            "set.quay.xml: is UTF-8, and has to be UTF-16\n");
  put("set.quay.xml", set_);
  write("d/quay.txt", "41 0041\r\n");
  EXPECT_EQ(faults(), "quay.txt: is not UTF-16\n");
  write("d/quay.txt", "");
  EXPECT_EQ(faults(), "quay.txt: is empty\n");
  std::string big = utf16(table_);
  for (size_t i = 0; i < big.size(); i += 2) std::swap(big[i], big[i + 1]);
  write("d/quay.txt", big);
  EXPECT_EQ(faults(), "quay.txt: is not written as quay.xml, which declares it\n");
}

TEST_F(Lint, tells_missing_files_and_undeclared_entities) {
  fs::remove(path("d/quay.txt"));
  EXPECT_EQ(faults(), "quay.txt: is missing; quay.xml declares it\n");
  fs::remove(path("d/set.quay.xml"));
  EXPECT_EQ(faults(), "quay.xml:9: names the set file set.quay.xml, which is missing\n");
  put("set.quay.xml", set_);
  put("quay.txt", table_);
  change("quay.xml", charset_, "&set.quay;", "&set.quai;");
  EXPECT_EQ(faults(), "quay.xml:9: uses the entity &set.quai;, which is not declared\n");
  change("quay.xml", charset_, "&set.quay;", "");
  EXPECT_EQ(faults(), "quay.xml:9: names no file: an entity such as &name; is needed\n");
  put("quay.xml", charset_);
  change("set.quay.xml", set_, "&table.quay;", "&table.kai;");
  change("two.xml", charset_, ">Quay<", ">Two<");
  EXPECT_EQ(faults(), "set.quay.xml:8: uses the entity &table.kai;, which is not declared\n");
}

// As the library does not look for them all.
TEST_F(Lint, tells_a_rule_file_that_uses_too_many_entities) {
  std::string declarations;
  std::string members;
  for (int i = 0; i < 20000; ++i) {
    const std::string name = "n" + std::to_string(100000 + i);
    declarations += "<!ENTITY " + name + " SYSTEM \"set.quay.xml\">";
    members.insert(0, "<baseset>&" + name + ";</baseset>");
  }
  change("quay.xml", charset_, "<baseset>", declarations + members + "<baseset>");
  EXPECT_EQ(faults(),
            "quay.xml:9: uses more entities than are looked for in a file of this size\n");
}

TEST_F(Lint, tells_what_a_rule_file_lacks) {
  change("set.quay.xml", set_, "<lang domain=\"en\"/>", "");
  EXPECT_EQ(faults(), "set.quay.xml:5: has no <lang> behind this line\n");
  EXPECT_EQ(ksv({"charsets"}).status, 1) << "the library does not load it";
  put("set.quay.xml", set_);
  change("quay.xml", charset_, "<name>Quay</name>", "");
  EXPECT_NE(faults().find("quay.xml:6: has a charset without a <name>\n"), std::string::npos);
  put("quay.xml", charset_);
  put("other.xml", kHead + "<chart/>\r\n");
  EXPECT_EQ(faults(), "other.xml:1: holds neither a charset nor a set\n");
}

TEST_F(Lint, tells_the_lines_of_a_table_that_are_of_no_use) {
  const std::string head = "<table encoding=\"UTF-16\">\r\n";
  put("quay.txt", head + "41\r\n42 3042 9\r\n1FF 3043\r\n43 110000\r\n44 0000000041\r\n");
  EXPECT_EQ(faults(),
            "quay.txt:2: holds 1 number, not a code and a character\n"
            "quay.txt:3: holds 3 numbers, not a code and a character\n"
            "quay.txt:4: has a code of more than 1 byte\n"
            "quay.txt:5: has a character beyond U+10FFFF\n"
            "quay.txt:6: has a number of more than 8 digits\n");
  put("quay.txt", head + "41 0041\r\n42 3042\n");
  EXPECT_EQ(faults(), "quay.txt:3: loses its last number: a line end of CR LF has to follow it\n");
  put("quay.txt", head + "41 0041\r\n<never closed\r\n42 3042\r\n");
  EXPECT_EQ(faults(), "quay.txt:3: opens a '<' that nothing closes\n");
  std::string many = head;
  for (int i = 0; i < 100; ++i) many += "41\r\n";
  put("quay.txt", many);
  const std::string all = faults();
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 11);
}

TEST_F(Lint, tells_a_compiled_table_that_is_stale) {
  EXPECT_EQ(ksv({"tables"}).status, 0);
  ASSERT_EQ(read("d/quay.cmp"),
            bytes({0x41, 0, 0, 0, 0x41, 0, 0, 0, 0x42, 0, 0, 0, 0x42, 0x30, 0, 0}));
  EXPECT_EQ(faults(), "");
  change("quay.txt", table_, "3042", "3044");
  const std::string stale = "quay.cmp: is not what quay.txt says; without it, it is made anew\n";
  EXPECT_EQ(faults(), stale);
  const Outcome tables = ksv({"tables"});
  EXPECT_EQ(tables.status, 1);
  EXPECT_EQ(tables.out, "the code tables of 1 charsets are filled\n");
  EXPECT_EQ(tables.err, "ksv: " + stale);
  write("d/quay.cmp", "");
  EXPECT_EQ(faults(), "quay.cmp: is empty; without it, it is made anew\n");
  fs::remove(path("d/quay.txt"));
  EXPECT_EQ(faults(), "quay.txt: is missing; quay.xml declares it\n");
  write("d/quay.cmp", bytes({0x41, 0, 0, 0, 0x41, 0, 0, 0}));
  EXPECT_EQ(faults(), "") << "a compiled table that is filled needs no text";
}

// "ad" and "cc" weigh 1*97 + 2*100 and 1*99 + 2*99: both are 297.
TEST_F(Lint, tells_names_that_share_a_number) {
  change("quay.xml", charset_, ">Quay<", ">cc<");
  change("zz.xml", charset_, ">Quay<", ">ad<");
  EXPECT_EQ(faults(),
            "zz.xml:7: gives the charset ad the number that cc of quay.xml has: only one of them "
            "is loaded\n");
  EXPECT_EQ(ksv({"charsets"}).out, "cc\n");
  put("zz.xml", charset_);
  put("quay.xml", charset_);
  EXPECT_EQ(faults(),
            "zz.xml:7: gives the charset Quay the number that quay of quay.xml has: only one of "
            "them is loaded\n");
}

TEST_F(Lint, gives_json_and_tells_a_directory_that_is_not_there) {
  change("quay.xml", charset_, "destSAME", "dest");
  EXPECT_EQ(ksv({"lint", "--json"}).out,
            "{\"path\":\"quay.xml\",\"line\":8,\"reason\":\"names the unknown codec dest\"}\n");
  const Outcome none = ksv({"lint", "none"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, "ksv: none: No such file or directory\n");
  fs::create_directory(path("empty"));
  EXPECT_EQ(ksv({"lint", "empty"}).out, ".: holds no charset rule file that can be read\n");
}

TEST_F(Lint, looks_at_the_aliases) {
  write("d/aliases.txt",
        "# names\n\nwharf Quay\npier Quay sideways\nlonely\nWHARF quay big\nw-harf quay -\n"
        "ship Vessel big ours\nquay ship\n");
  EXPECT_EQ(faults(),
            "aliases.txt:4: has sideways in place of little, big or -\n"
            "aliases.txt:5: names no charset for lonely\n"
            "aliases.txt:6: WHARF stands for Quay already, in line 3\n"
            "aliases.txt:8: the directory has no charset Vessel\n"
            "aliases.txt:9: quay is a charset of the directory itself\n"
            "aliases.txt:9: the directory has no charset ship\n");
}

TEST_F(Lint, aliases_of_the_directory_name_its_charsets) {
  write("d/aliases.txt", "# names\nwharf\tQuay\t-\tours\r\nlatin1 Quay\n");
  EXPECT_EQ(faults(), "");
  EXPECT_EQ(ksv({"charsets"}).out, "Quay\twharf latin1\n");
  for (const std::string name : {"WHARF", "wh-arf", "latin1", "quay"})
    EXPECT_EQ(ksv({"convert", "-f", name, "-t", name}, "AB").out, "AB") << name;
}

}  // namespace
}  // namespace ksv_cli_tests
