// The charset directory as a set of files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cconv/rules/rule_base.h"
#include "tests/common/temporary_directory.h"
#include "tests/repertoire/converter.h"
#include "tests/repertoire/repertoire.h"

namespace repertoire {
namespace {

namespace fs = std::filesystem;

Bytes readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& path, const Bytes& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
}

std::vector<fs::path> filesOf(const fs::path& directory, const std::string& extension) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    if (extension.empty() || entry.path().extension() == extension) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The ASCII text of a UTF-16 file, least significant byte first, or nothing if it is not
// one.
std::optional<std::string> asciiOf(const Bytes& content) {
  if (!content.starts_with("\xFF\xFE") || content.size() % 2 != 0) {
    return std::nullopt;
  }
  std::string text;
  for (size_t place = 2; place < content.size(); place += 2) {
    if (content[place + 1] != '\0' || static_cast<uint8_t>(content[place]) >= 0x80) {
      return std::nullopt;
    }
    text += content[place];
  }
  return text;
}

// ASCII text as a file of the directory: UTF-16 with a mark, lines ended by CR LF.
Bytes fileOf(const std::string& ascii) {
  Bytes content = "\xFF\xFE";
  for (const char character : ascii) {
    if (character == '\n') {
      content += Bytes({'\r', '\0'});
    }
    content += Bytes({character, '\0'});
  }
  return content;
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\r')); }

// The texts between each opening and the next closing mark.
std::vector<std::string> textsBetween(const std::string& text, std::string_view open,
                                      std::string_view close) {
  std::vector<std::string> found;
  for (size_t place = text.find(open); place != std::string::npos; place = text.find(open, place)) {
    place += open.size();
    const size_t end = text.find(close, place);
    if (end == std::string::npos) {
      break;
    }
    found.push_back(text.substr(place, end - place));
    place = end + close.size();
  }
  return found;
}

bool isRemark(const std::string& line) {
  return line.size() > 1 && line.find('<') == 0 && line.find('>') == line.size() - 1;
}

// A code and a character, both hexadecimal.
bool isTableLine(const std::string& line) {
  const size_t blank = line.find(' ');
  constexpr const char* kDigits = "0123456789ABCDEF";
  return blank != std::string::npos && blank > 0 && blank <= 8 && line.size() - blank - 1 >= 4 &&
         line.find_first_not_of(kDigits) == blank &&
         line.find_first_not_of(kDigits, blank + 1) == std::string::npos;
}

// Makes every table of every charset ready: both tables of each member by naming the
// charset as target and as source, the one-way tables by a character that is in none.
void fillAllTables(const RuleBase& rules) {
  constexpr char32_t kNowhere = 0x10FFFD;
  for (const std::string& charset : rules.charsetNames()) {
    LibraryCodec codec(charset);
    codec.encode(kNowhere);
  }
}

TEST(CharsetDirectory, has_lower_case_ascii_file_names_of_four_kinds) {
  for (const fs::path& file : filesOf(charsetDirectory(), "")) {
    EXPECT_EQ(file.filename().string().find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789._-"),
              std::string::npos)
        << file;
    EXPECT_TRUE(std::set<fs::path>({".xml", ".txt", ".cmp", ".pack"}).contains(file.extension())) << file;
  }
}

TEST(CharsetDirectory, has_rule_files_in_utf16_that_name_it_in_the_first_line) {
  for (const fs::path& file : filesOf(charsetDirectory(), ".xml")) {
    const std::optional<std::string> text = asciiOf(readFile(file));
    ASSERT_TRUE(text) << file;
    EXPECT_EQ(firstLine(*text), "<?xml version=\"1.0\" encoding=\"UTF-16\"?>") << file;
    EXPECT_TRUE(text->ends_with(">\r\n")) << file;
    // Two hyphens open and close comments and stand nowhere else.
    const std::vector<std::string> comments = textsBetween(*text, "<!--", "-->");
    EXPECT_EQ(textsBetween(*text, "--", "--"), comments) << file;
  }
}

TEST(CharsetDirectory, has_tables_in_utf16_that_end_in_an_empty_line) {
  for (const fs::path& file : filesOf(charsetDirectory(), ".txt")) {
    const std::optional<std::string> text = asciiOf(readFile(file));
    ASSERT_TRUE(text) << file;
    EXPECT_EQ(firstLine(*text), "<table encoding=\"UTF-16\">") << file;
    ASSERT_TRUE(text->ends_with("\r\n\r\n")) << file;
    for (size_t start = 0; start < text->size() - 2;) {
      const size_t end = text->find("\r\n", start);
      const std::string line = text->substr(start, end - start);
      ASSERT_TRUE(isRemark(line) || isTableLine(line)) << file << ": " << line;
      start = end + 2;
    }
  }
}

TEST(CharsetDirectory, declares_every_entity_of_a_file_that_is_there) {
  for (const fs::path& file : filesOf(charsetDirectory(), ".xml")) {
    const std::string text = *asciiOf(readFile(file));
    if (text.find("<charset>") == std::string::npos) {
      continue;
    }
    std::set<std::string> declared;
    std::string texts = text;
    for (const std::string& declaration : textsBetween(text, "<!ENTITY ", ">")) {
      declared.insert(declaration.substr(0, declaration.find(' ')));
      const std::string target = textsBetween(declaration, " SYSTEM \"", "\"").at(0);
      ASSERT_TRUE(fs::exists(charsetDirectory() / target)) << file << target;
      if (target.ends_with(".xml")) {
        texts += *asciiOf(readFile(charsetDirectory() / target));
      }
    }
    for (const std::string& entity : declared) {
      for (const std::string& other : declared) {
        EXPECT_TRUE(entity == other || !other.ends_with(entity)) << file << other;
      }
    }
    for (const std::string& entity : textsBetween(texts, "&", ";")) {
      EXPECT_TRUE(declared.contains(entity)) << file << entity;
    }
  }
}

TEST(CharsetDirectory, gives_every_name_an_id_of_its_own) {
  const RuleBase rules;
  std::set<std::string> names;
  std::map<uint32_t, std::string> owners;
  for (const std::string& name : rules.charsetNames()) {
    EXPECT_TRUE(names.insert(name).second) << name;
    ConverterRecord record{};
    ASSERT_EQ(cconvInitConvert(&record, nullptr, name.c_str()), KSV_STATUS_DONE) << name;
    const auto [owner, isNew] = owners.emplace(record.targetCharsetId, name);
    EXPECT_TRUE(isNew) << name << " and " << owner->second;
  }
  // A charset whose id another one has would be missing.
  for (const fs::path& file : filesOf(charsetDirectory(), ".xml")) {
    if (asciiOf(readFile(file))->find("<charset>") != std::string::npos) {
      EXPECT_TRUE(names.contains(file.stem().string())) << file;
    }
  }
}

// Of two subsets with one id the second would not be there.
TEST(CharsetDirectory, gives_every_subset_an_id_of_its_own) {
  const RuleBase rules;
  size_t files = 0;
  for (const fs::path& file : filesOf(charsetDirectory(), ".xml"))
    files += file.filename().string().starts_with("set.") ? 1 : 0;
  EXPECT_EQ(ksv::ruleBase.lists->groups().count(), files);
  std::set<ksv::CharsetId> ids;
  for (const auto& subset : ksv::ruleBase.lists->groups())
    EXPECT_TRUE(ids.insert(subset->id).second);
}

TEST(CharsetDirectory, puts_each_code_into_its_own_subset) {
  struct Case {
    const char* charset;
    const char* code;
    uint32_t group;
  };
  const std::vector<Case> cases = {
      {"WINDOWS31J", "5C", 2002},         {"WINDOWS31J", "B1", 2003},
      {"WINDOWS31J", "88B0", 2006},       {"WINDOWS31J", "8740", 2008},
      {"WINDOWS31J", "FA54", 2009},       {"WINDOWS31J", "ED40", 2012},
      {"WINDOWS31J", "F040", 3001},       {"Shift_JIS-2004", "82F5", 2011},
      {"Shift_JIS-2004", "F040", 2011},   {"UTF-8", "41", 6661},
      {"UTF-16", "0041", 6661},           {"ISO-10646-UCS-4", "00000041", 6661},
      {"ISO-10646-UCS-2", "0041", 10953},
  };
  const RuleBase rules;
  for (const auto& [charset, code, group] : cases) {
    EXPECT_EQ(Converter(charset, "UTF-8", ByteOrder::kBig).convert(parseBytes(code)).decodedGroup,
              group)
        << charset << ' ' << code;
  }
}

TEST(CharsetDirectory, has_the_compiled_tables_that_the_library_makes_itself) {
  const ksv::test::TemporaryDirectory copy("repertoire");
  for (const fs::path& file : filesOf(charsetDirectory(), "")) {
    if (file.extension() != ".cmp") {
      fs::copy(file, copy.path());
    }
  }
  {
    const RuleBase rules(copy.path());
    fillAllTables(rules);
  }
  const std::vector<fs::path> shipped = filesOf(charsetDirectory(), ".cmp");
  EXPECT_EQ(shipped.size(), filesOf(charsetDirectory(), ".txt").size());
  for (const fs::path& file : shipped) {
    const fs::path compiled = copy.path() / file.filename();
    ASSERT_TRUE(fs::exists(compiled)) << compiled;
    EXPECT_TRUE(readFile(compiled) == readFile(file)) << file;
  }
}

// The tables that a pair of charsets has made the library read, by their files.
std::set<std::string> tablesReadFor(const std::string& source, const std::string& target) {
  const RuleBase rules;
  Converter(source, target, ByteOrder::kBig).convert("A");
  std::set<std::string> files;
  for (const auto& subset : ksv::ruleBase.lists->groups()) {
    for (const ksv::CodeTable* table : {&subset->toUcs, &subset->fromUcs})
      if (table->isLoaded()) files.insert(table->fileName);
  }
  return files;
}

TEST(CharsetDirectory, has_only_the_tables_read_that_a_conversion_needs) {
  using Files = std::set<std::string>;
  EXPECT_EQ(tablesReadFor("KOI8-R", "UTF-8"), Files({"koi8-r.txt"}));
  EXPECT_EQ(tablesReadFor("UTF-8", "ISO-8859-2"), Files({"iso-8859-2.txt"}));
  EXPECT_EQ(tablesReadFor("Shift_JIS", "UTF-16"),
            Files({"jis_x0201latin.txt", "jis_x0201kana.txt", "jis_x0208-1990.txt"}));
}

TEST(CharsetDirectory, is_read_without_being_written_to) {
  const ksv::test::TemporaryDirectory copy("repertoire");
  fs::copy(charsetDirectory(), copy.path(), fs::copy_options::recursive);
  const std::vector<fs::path> before = filesOf(copy.path(), "");
  {
    const RuleBase rules(copy.path());
    fillAllTables(rules);
  }
  EXPECT_EQ(filesOf(copy.path(), ""), before);
}

TEST(CharsetDirectory, takes_a_charset_of_one_rule_file_and_one_table) {
  const ksv::test::TemporaryDirectory copy("repertoire");
  fs::copy(charsetDirectory(), copy.path(), fs::copy_options::recursive);
  const fs::path example = fs::path(REPERTOIRE_SOURCE_DIRECTORY) / "example";
  for (const char* name : {"example-quay.xml", "example-quay.txt"}) {
    writeFile(copy.path() / name, fileOf(readFile(example / name)));
  }
  const RuleBase rules(copy.path());
  Converter fromExample("Example-Quay", "UTF-8", ByteOrder::kBig);
  Converter toExample("UTF-8", "Example-Quay", ByteOrder::kBig);
  const Bytes text = "AB C\r\n\x80\x81\x82";
  const Bytes utf8 = "AB C\r\n\xE2\x9A\x93\xE2\x9B\xB5\xF0\x9F\x9A\xA2";
  const ConversionResult read = fromExample.convert(text);
  EXPECT_EQ(read.status, KSV_STATUS_DONE);
  EXPECT_EQ(read.output, utf8);
  const ConversionResult written = toExample.convert(utf8);
  EXPECT_EQ(written.status, KSV_STATUS_DONE);
  EXPECT_EQ(written.output, text);
  EXPECT_EQ(fromExample.convert("\x83").status, KSV_STATUS_INVALID);
  EXPECT_EQ(toExample.convert("D").status, KSV_STATUS_UNMAPPABLE);
}

}  // namespace
}  // namespace repertoire
