// What the tests of the rule base have in common: charset directories of their
// own, and rule files and tables in every encoding.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cconv/rules/code_table.h"
#include "cconv/rules/rule_base.h"
#include "cconv/rules/rule_files.h"
#include "cconv/rules/table_loader.h"
#include "tests/common/support.h"

namespace ksv::test {

// An encoding in which rule files and tables can be read.
struct TextForm {
  const char* label;
  TextEncodingKind kind;
  bool bigEndian;

  uint32_t width() const { return kind == TextEncodingKind::kUcs4 ? 4 : 2; }
};

inline constexpr TextForm kUtf16Little = {"Utf16Little", TextEncodingKind::kUtf16, false};
inline constexpr TextForm kUtf16Big = {"Utf16Big", TextEncodingKind::kUtf16, true};
inline constexpr TextForm kUcs2Little = {"Ucs2Little", TextEncodingKind::kUcs2, false};
inline constexpr TextForm kUcs2Big = {"Ucs2Big", TextEncodingKind::kUcs2, true};
inline constexpr TextForm kUcs4Little = {"Ucs4Little", TextEncodingKind::kUcs4, false};
inline constexpr TextForm kUcs4Big = {"Ucs4Big", TextEncodingKind::kUcs4, true};
inline constexpr TextForm kAllForms[] = {kUtf16Little, kUtf16Big,   kUcs2Little,
                                         kUcs2Big,     kUcs4Little, kUcs4Big};

// Bytes of a form, one unit for each character: surrogates are given as units.
std::string encode(const TextForm& form, std::u32string_view units);
std::string encode(const TextForm& form, std::string_view ascii);

// The bytes of a rule file that marks and names its encoding and then holds body.
std::string ruleFile(const TextForm& form, std::string_view body);

// A cleaned text, as it stands behind the first line of a rule file.
RuleText cleaned(std::string_view ascii);
// The characters of a text, each of them below 0x80.
std::string asciiOf(const RuleText& text);

// A charset directory, made the current directory and the value of "Charsetpath".
class CharsetDirectory {
 public:
  CharsetDirectory() : setting_("Charsetpath", temporary_.path() + "/") {}

  std::string path(const std::string& name) const { return temporary_.path() + "/" + name; }
  void write(const std::string& name, const std::string& bytes) const {
    writeFile(path(name), bytes);
  }
  // A rule file that holds body.
  void writeRule(const std::string& name, std::string_view body,
                 const TextForm& form = kUtf16Little) const {
    write(name, ruleFile(form, body));
  }
  // A table text, closed by two line ends as a table has to be.
  void writeTable(const std::string& name, std::string_view body,
                  const TextForm& form = kUtf16Little) const {
    write(name, encode(form, std::string(body) + "\r\n\r\n"));
  }
  std::string read(const std::string& name) const { return readFile(path(name)); }
  bool has(const std::string& name) const { return exists(path(name)); }
  // All names in it, spelled as they are there.
  std::set<std::string> names() const;

 private:
  TempDirectory temporary_;
  ScopedVariable setting_;
};

// A charset directory without, and with, a started rule base.
class CharsetDirectoryTest : public testing::Test {
 protected:
  CharsetDirectory directory_;
};

// The rule base from its start to its end.
class StartedRuleBase {
 public:
  StartedRuleBase();
  ~StartedRuleBase();
  StartedRuleBase(const StartedRuleBase&) = delete;
  StartedRuleBase& operator=(const StartedRuleBase&) = delete;
};

class RuleBaseTest : public CharsetDirectoryTest {
 private:
  StartedRuleBase started_;
};

// An entity declaration, and a document type declaration of several.
std::string entity(const std::string& name, const std::string& file);
// A charset file: the declarations stand in front of the element.
std::string charset(const std::string& declarations, const std::string& content);
// A group file of kind 1, its code element two bytes wide.
std::string baseGroup(const std::string& name, const std::string& behindCode = "");

// A table of 32-bit values with a file. A file makes the difference between a
// table that is not loaded and one that never will be.
std::unique_ptr<CodeTable> tableOf(const std::string& fileName, const TextForm& form = kUtf16Little,
                                   CodeTable::KeyColumn column = CodeTable::kFirstColumn,
                                   uint16_t valueBytes = 4);

using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;
// The lines of a table, and the bytes of its compiled file.
std::string tableLines(const Pairs& pairs);
std::string compiledBytes(const Pairs& pairs);
// Distinct keys in order, values that depend on them.
Pairs manyPairs(uint32_t count);
// Whether a loaded table maps every first number to its second.
bool mapsAll(const CodeTable& table, const Pairs& pairs);

}  // namespace ksv::test
