#include "tests/rules/support.h"

#include <cstdio>

#include "ksv_cconv.h"

namespace ksv::test {
std::string encode(const TextForm& form, std::u32string_view units) {
  std::string bytes;
  for (const char32_t unit : units) {
    for (uint32_t i = 0; i < form.width(); ++i) {
      const uint32_t place = form.bigEndian ? form.width() - 1 - i : i;
      bytes.push_back(static_cast<char>(static_cast<uint32_t>(unit) >> (8 * place)));
    }
  }
  return bytes;
}

std::string encode(const TextForm& form, std::string_view ascii) {
  return encode(form, std::u32string(ascii.begin(), ascii.end()));
}

std::string ruleFile(const TextForm& form, std::string_view body) {
  std::string bytes = encode(form, U"\uFEFF");
  std::string name = "UTF-16";
  if (form.kind == TextEncodingKind::kUcs2) name = "ISO-10646-UCS-2";
  if (form.kind == TextEncodingKind::kUcs4) {
    name = "ISO-10646-UCS-4";
    bytes = form.bigEndian ? std::string("\xFE\0\0\xFF", 4) : std::string("\xFF\0\0\xFE", 4);
  }
  const std::string line = "<?xml version=\"1.0\" encoding=\"" + name + "\"?>\r\n";
  return bytes + encode(form, line) + encode(form, body);
}

RuleText cleaned(std::string_view ascii) {
  RuleText text;
  text.encoding = TextEncodingKind::kUtf16;
  text.chars.assign(ascii.begin(), ascii.end());
  cleanText(text);
  return text;
}

std::string asciiOf(const RuleText& text) {
  std::string ascii;
  for (const uint32_t c : text.chars) ascii.push_back(static_cast<char>(c));
  return ascii;
}

std::set<std::string> CharsetDirectory::names() const {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(pathOf(path("")))) {
    names.insert(textOf(entry.path().filename()));
  }
  return names;
}

StartedRuleBase::StartedRuleBase() { EXPECT_EQ(startProcess(), 1); }

StartedRuleBase::~StartedRuleBase() { endProcess(); }

std::string entity(const std::string& name, const std::string& file) {
  return "<!ENTITY " + name + " SYSTEM \"" + file + "\">\r\n";
}

std::string charset(const std::string& declarations, const std::string& content) {
  return "<!DOCTYPE charset [\r\n" + declarations + "]>\r\n<charset>\r\n" + content +
         "\r\n</charset>\r\n";
}

std::string baseGroup(const std::string& name, const std::string& behindCode) {
  return "<subseta>\r\n<name>" + name + "</name>\r\n<lang domain=\"ja\"/>\r\n" +
         "<code bytenum=\"2\"/>\r\n" + behindCode + "\r\n</subseta>\r\n";
}

std::unique_ptr<CodeTable> tableOf(const std::string& fileName, const TextForm& form,
                                   CodeTable::KeyColumn column, uint16_t valueBytes) {
  auto table = std::make_unique<CodeTable>(column, valueBytes);
  table->fileName = fileName;
  table->sourceEncoding = form.kind;
  table->sourceBigEndian = form.bigEndian;
  return table;
}

std::string tableLines(const Pairs& pairs) {
  std::string lines;
  char line[32];
  for (const auto& [first, second] : pairs) {
    std::snprintf(line, sizeof line, "%X %X\r\n", first, second);
    lines.append(line);
  }
  return lines;
}

std::string compiledBytes(const Pairs& pairs) {
  std::string bytes;
  for (const auto& [first, second] : pairs) {
    for (const uint32_t number : {first, second}) {
      for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<char>(number >> shift));
      }
    }
  }
  return bytes;
}

Pairs manyPairs(uint32_t count) {
  Pairs pairs;
  for (uint32_t i = 0; i < count; ++i) pairs.emplace_back(0x100 + i, 0x10000 + i * 3);
  return pairs;
}

bool mapsAll(const CodeTable& table, const Pairs& pairs) {
  if (!table.isLoaded()) return false;
  for (const auto& [first, second] : pairs) {
    uint32_t value = 0;
    if (!tableLookup(table, first, value) || value != second) return false;
  }
  return true;
}

}  // namespace ksv::test
