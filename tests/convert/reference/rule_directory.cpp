#include "reference/rule_directory.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace ksv_reference {
namespace {

const std::string kXmlLine = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n";

void writeUtf16(const std::filesystem::path& path, const std::string& ascii) {
  std::string bytes = "\xFF\xFE";
  for (char c : ascii) {
    bytes += c;
    bytes += '\0';
  }
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

std::string readUtf16(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::string ascii;
  for (size_t i = 2; i + 1 < bytes.size(); i += 2) ascii += bytes[i + 1] == 0 ? bytes[i] : '?';
  return ascii;
}

std::string hexadecimal(uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(number));
  return text;
}

std::string tableText(const std::vector<TablePair>& pairs) {
  std::string text = "<table encoding=\"UTF-16\">\r\n";
  for (const TablePair& pair : pairs) {
    text += hexadecimal(pair.first) + " " + hexadecimal(pair.second) + "\r\n";
  }
  return text + "\r\n\r\n";
}

// Entity names of one length that occur nowhere else in the text.
class EntityNames {
 public:
  std::string nameOf(const std::string& file) {
    const auto known = names_.find(file);
    if (known != names_.end()) return known->second;
    char name[16];
    std::snprintf(name, sizeof name, "zq%04u", static_cast<unsigned>(names_.size()));
    names_[file] = name;
    return name;
  }
  std::string declarations() const {
    std::string text = "<!DOCTYPE charset [\r\n";
    for (const auto& [file, name] : names_) {
      text += "<!ENTITY " + name + " SYSTEM \"" + file + "\">\r\n";
    }
    return text + "]>\r\n";
  }

 private:
  std::map<std::string, std::string> names_;
};

std::string tableEntityName(const std::string& tableFile) {
  std::string name = "tq";
  for (char c : tableFile) name += c == '.' ? 'x' : c;
  return name + "q";
}

std::string memberText(const MemberEntry& member, EntityNames& names) {
  const char* element = member.kind == 1 ? "baseset" : member.kind == 2 ? "diffset" : "eudcset";
  std::string text = std::string("<") + element + ">&" + names.nameOf(member.subsetFile) + ";\r\n";
  for (const DestTableEntry& table : member.destTables) {
    text += "<dstable bytenum=\"" + hexadecimal(table.valueBytes) + "\">&" +
            names.nameOf(table.tableFile) + ";</dstable>\r\n";
  }
  return text + "</" + element + ">\r\n";
}

std::string charsetText(const CharsetFile& charset, const RuleDirectory& rules) {
  EntityNames names;
  std::string body = "<charset>\r\n<name>" + charset.name + "</name>\r\n<rule construle=\"" +
                     charset.construle + "\" destrule=\"" + charset.destrule + "\"/>\r\n";
  std::string tables;
  for (const MemberEntry& member : charset.members) {
    body += memberText(member, names);
    const std::string& tableFile = rules.subsets.at(member.subsetFile).tableFile;
    if (!tableFile.empty()) {
      tables += "<!ENTITY " + tableEntityName(tableFile) + " SYSTEM \"" + tableFile + "\">\r\n";
    }
  }
  return kXmlLine + names.declarations() + tables + body + "</charset>\r\n\r\n";
}

// One file is read as any of the three kinds, so it has the elements of all.
std::string subsetText(const SubsetFile& subset) {
  const std::string bytes = std::to_string(subset.bytesPerCode);
  const std::string table =
      subset.tableFile.empty()
          ? ""
          : "<srtable>&" + tableEntityName(subset.tableFile) + ";</srtable>\r\n";
  return kXmlLine + "<subseta>\r\n<subsetb>\r\n<name>" + subset.name +
         "</name>\r\n<lang domain=\"en\"/>\r\n<code bytenum=\"" + bytes +
         "\"/>\r\n<codeb bytenum=\"" + bytes + "\" basedon=\"none\"/>\r\n<codec bytenum=\"" +
         bytes + "\"/>\r\n<defrange start=\"" + hexadecimal(subset.defStart) + "\" number=\"" +
         hexadecimal(subset.defNumber) + "\"/>\r\n" + table + "</subsetb>\r\n</subseta>\r\n\r\n";
}

std::string between(const std::string& text, const std::string& open, const std::string& close,
                    size_t& from) {
  const size_t start = text.find(open, from);
  if (start == std::string::npos) return "";
  const size_t end = text.find(close, start + open.size());
  from = end;
  return text.substr(start + open.size(), end - start - open.size());
}

std::string firstBetween(const std::string& text, const std::string& open,
                         const std::string& close) {
  size_t from = 0;
  return between(text, open, close, from);
}

std::string entityFile(const std::string& text, const std::string& reference) {
  return firstBetween(text, "<!ENTITY " + reference + " SYSTEM \"", "\"");
}

std::vector<TablePair> parseTable(const std::string& text) {
  std::vector<uint32_t> numbers;
  for (size_t i = 0; i < text.size();) {
    if (text[i] == '<') {
      i = text.find('>', i) + 1;
    } else if (std::isxdigit(static_cast<unsigned char>(text[i])) != 0) {
      uint32_t number = 0;
      for (; i < text.size() && std::isxdigit(static_cast<unsigned char>(text[i])) != 0; ++i) {
        number = number * 16 + static_cast<uint32_t>(std::stoul(text.substr(i, 1), nullptr, 16));
      }
      numbers.push_back(number);
    } else {
      ++i;
    }
  }
  std::vector<TablePair> pairs;
  for (size_t i = 0; i + 1 < numbers.size(); i += 2) pairs.push_back({numbers[i], numbers[i + 1]});
  return pairs;
}

void readTable(const std::filesystem::path& directory, const std::string& name,
               RuleDirectory& rules) {
  if (rules.tables.count(name) == 0) {
    rules.tables[name] = parseTable(readUtf16(directory / name));
  }
}

SubsetFile readSubset(const std::filesystem::path& directory, const std::string& name,
                      const std::string& charsetText, RuleDirectory& rules) {
  const std::string text = readUtf16(directory / name);
  SubsetFile subset;
  subset.name = firstBetween(text, "<name>", "</name>");
  subset.bytesPerCode =
      static_cast<uint16_t>(std::stoul(firstBetween(text, "<code bytenum=\"", "\"")));
  const std::string table = firstBetween(text, "<srtable>&", ";");
  if (!table.empty()) {
    subset.tableFile = entityFile(charsetText, table);
    readTable(directory, subset.tableFile, rules);
  }
  return subset;
}

MemberEntry readMember(const std::filesystem::path& directory, const std::string& element,
                       const std::string& charsetText, RuleDirectory& rules) {
  MemberEntry member;
  member.subsetFile = entityFile(charsetText, firstBetween(element, "&", ";"));
  rules.subsets[member.subsetFile] = readSubset(directory, member.subsetFile, charsetText, rules);
  size_t from = 0;
  for (;;) {
    const std::string bytes = between(element, "<dstable bytenum=\"", "\"", from);
    if (bytes.empty()) return member;
    DestTableEntry table;
    table.valueBytes = static_cast<uint16_t>(std::stoul(bytes, nullptr, 16));
    table.tableFile = entityFile(charsetText, between(element, "&", ";", from));
    readTable(directory, table.tableFile, rules);
    member.destTables.push_back(table);
  }
}

CharsetFile readCharset(const std::filesystem::path& directory, const std::string& text,
                        RuleDirectory& rules) {
  CharsetFile charset;
  charset.name = firstBetween(text, "<name>", "</name>");
  charset.construle = firstBetween(text, "construle=\"", "\"");
  charset.destrule = firstBetween(text, "destrule=\"", "\"");
  size_t from = 0;
  for (;;) {
    const std::string element = between(text, "<baseset>", "</baseset>", from);
    if (element.empty()) return charset;
    charset.members.push_back(readMember(directory, element, text, rules));
  }
}

}  // namespace

void writeRuleDirectory(const RuleDirectory& rules, const std::filesystem::path& directory) {
  std::filesystem::create_directories(directory);
  for (const auto& [name, charset] : rules.charsets) {
    writeUtf16(directory / name, charsetText(charset, rules));
  }
  for (const auto& [name, subset] : rules.subsets) {
    writeUtf16(directory / name, subsetText(subset));
  }
  for (const auto& [name, pairs] : rules.tables) writeUtf16(directory / name, tableText(pairs));
}

RuleDirectory readRuleDirectory(const std::filesystem::path& directory) {
  RuleDirectory rules;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    if (entry.path().extension() != ".xml") continue;
    const std::string text = readUtf16(entry.path());
    if (text.find("<charset>") == std::string::npos) continue;
    rules.charsets[entry.path().filename().string()] = readCharset(directory, text, rules);
  }
  return rules;
}

}  // namespace ksv_reference
