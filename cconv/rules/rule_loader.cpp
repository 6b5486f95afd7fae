#include "cconv/rules/rule_loader.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "cconv/rules/packed_rules.h"
#include "cconv/rules/packed_use.h"
#include "cconv/rules/rule_base.h"
#include "cconv/rules/rule_files.h"
#include "cconv/rules/rule_path.h"
#include "common/directory.h"
#include "common/faults.h"
#include "common/guard.h"
#include "ksv_cconv.h"

namespace ksv {
namespace {

constexpr uint16_t kDefaultBytes = 2;

// The element's "bytenum" as a decimal number, 2 when there is none.
uint16_t decimalBytes(const RuleElement& code) {
  const auto value = code.attribute("bytenum=");
  return value ? static_cast<uint16_t>(std::atoi(value->c_str())) : kDefaultBytes;
}

bool fitsName(const std::string& name) { return name.size() < kNameSize; }

// Gives the table the file that the element refers to, as the declaring text declares it.
bool attachTableFile(const RuleText& declaring, const RuleElement& element, CodeTable& table) {
  const auto entity = element.entityReference();
  if (!entity) return false;
  const auto file = entityFile(declaring, *entity);
  if (!file || !fitsName(*file)) return false;
  table.fileName = *file;
  table.sourceEncoding = declaring.encoding;
  table.sourceBigEndian = declaring.bigEndian;
  return true;
}

// Reads the file of the group that a charset file refers to. Null when it cannot.
const RuleText* readReferencedFile(const RuleElement& element, RuleFiles& files) {
  const auto entity = element.entityReference();
  if (!entity) return nullptr;
  const RuleText& charsetText = element.text();
  const auto file = entityFile(charsetText, *entity);
  return file ? files.read(*file, charsetText.encoding, charsetText.bigEndian) : nullptr;
}

void passRanges(RuleReader& reader) {
  while (reader.passElement("range")) continue;
}

// "defined" and "srtable", both optional, in this order.
bool readCodesAndTable(const RuleText& charsetText, RuleReader& reader, GroupDef& group) {
  if (const auto defined = reader.passElement("defined")) {
    if (!parseDefinedRanges(*defined, group.defined)) return false;
  }
  const auto table = reader.findElement("srtable");
  return !table || (attachTableFile(charsetText, *table, group.toUcs) &&
                    attachTableFile(charsetText, *table, group.fromUcs));
}

struct GroupForm {
  const char* rootTag;
  const char* codeTag;
  GroupKind kind;
};
constexpr GroupForm kBaseForm = {"subseta", "code", GroupKind::kBase};
constexpr GroupForm kDifferenceForm = {"subsetb", "codeb", GroupKind::kDifference};

// A base or difference set. Each element is looked for behind the one before.
std::unique_ptr<GroupDef> buildGroup(const RuleElement& element, const GroupForm& form,
                                     RuleFiles& files) {
  const RuleText* const text = readReferencedFile(element, files);
  if (text == nullptr) return nullptr;
  RuleReader reader(*text);
  if (!reader.enterElement(form.rootTag)) return nullptr;
  const auto name = reader.passElement("name");
  if (!name) return nullptr;
  const auto lang = reader.passElement("lang");
  if (!lang) return nullptr;
  const auto code = reader.enterElement(form.codeTag);
  if (!code) return nullptr;

  std::string groupName = name->content();
  if (!fitsName(groupName)) return nullptr;
  auto group = std::make_unique<GroupDef>(std::move(groupName), form.kind, decimalBytes(*code));
  if (form.kind == GroupKind::kBase) {
    passRanges(reader);
  } else {
    group->basedon = code->attribute("basedon=").value_or("");
  }
  if (!readCodesAndTable(element.text(), reader, *group)) return nullptr;
  group->lang = lang->attribute("domain=").value_or("");
  return group;
}

// A quoted hexadecimal attribute, kept to 16 bits, from inside the element on.
std::optional<uint16_t> hexAttribute(const RuleElement& element, const char* word) {
  RuleReader reader(element);
  if (!reader.passString(word)) return std::nullopt;
  const auto value = reader.findQuoted();
  if (!value) return std::nullopt;
  return static_cast<uint16_t>(parseHex(*value));
}

std::unique_ptr<GroupDef> buildUserGroup(const RuleElement& element, RuleFiles& files) {
  const RuleText* const text = readReferencedFile(element, files);
  if (text == nullptr) return nullptr;
  RuleReader reader(*text);
  const auto name = reader.passElement("name");
  if (!name) return nullptr;
  const auto code = reader.enterElement("codec");
  if (!code) return nullptr;
  std::string groupName = name->content();
  if (!fitsName(groupName)) return nullptr;
  auto group =
      std::make_unique<GroupDef>(std::move(groupName), GroupKind::kUser, decimalBytes(*code));
  passRanges(reader);
  if (const auto range = reader.findElement("defrange")) {
    const auto start = hexAttribute(*range, "start=");
    const auto number = hexAttribute(*range, "number=");
    if (!start || !number) return nullptr;
    group->defStart = *start;
    group->defNumber = *number;
  }
  return group;
}

// The codec names of the "rule" element; both or none. The second is searched
// behind the first word, so it may stand anywhere behind it.
bool readRuleNames(RuleReader reader, CharsetDef& charset) {
  if (!reader.enterElement("rule")) return true;
  if (!reader.passString("construle=")) return false;
  const auto construle = reader.findQuoted();
  if (!construle || !reader.passString("destrule=")) return false;
  const auto destrule = reader.findQuoted();
  if (!destrule) return false;
  charset.construle = *construle;
  charset.destrule = *destrule;
  return true;
}

// Unlike other attributes, this one counts only if something stands behind its word in the
// element, and is hexadecimal.
uint16_t hexBytes(const RuleElement& element) {
  RuleReader reader(element);
  if (!reader.passString("bytenum=") || reader.position() >= element.end()) return kDefaultBytes;
  const auto value = reader.findQuoted();
  return value ? static_cast<uint16_t>(parseHex(*value)) : kDefaultBytes;
}

std::unique_ptr<CodeTable> buildDestTable(const RuleElement& element) {
  auto table = std::make_unique<CodeTable>(CodeTable::kSecondColumn, hexBytes(element));
  if (!attachTableFile(element.text(), element, *table)) return nullptr;
  return table;
}

// The "dstable" elements whose content ends inside the group's.
std::unique_ptr<TableList> readDestTables(const RuleElement& group) {
  auto tables = std::make_unique<TableList>();
  RuleReader reader(group);
  while (const auto element = reader.passElement("dstable")) {
    if (element->end() >= group.end()) break;
    auto table = buildDestTable(*element);
    if (table && tables->append(std::move(table)) == 0) return nullptr;
  }
  return tables;
}

struct GroupElement {
  RuleElement content;
  bool isDifference;
};

// The next "baseset" or "diffset", whichever comes first.
std::optional<GroupElement> nextGroup(const RuleReader& reader) {
  const auto base = reader.findElement("baseset");
  const auto difference = reader.findElement("diffset");
  if (difference && (!base || difference->start() < base->start()))
    return GroupElement{*difference, true};
  if (base) return GroupElement{*base, false};
  return std::nullopt;
}

bool readGroups(RuleReader reader, CharsetDef& charset, RuleFiles& files) {
  while (const auto element = nextGroup(reader)) {
    auto group =
        buildGroup(element->content, element->isDifference ? kDifferenceForm : kBaseForm, files);
    if (!group) return false;
    auto tables = readDestTables(element->content);
    if (!tables || charset.destTables.append(std::move(tables)) == 0) return false;
    if (!addGroup(charset, std::move(group))) return false;
    reader.passElement(element->content);
  }
  const auto user = reader.findElement("eudcset");
  if (!user) return true;
  auto group = buildUserGroup(*user, files);
  return group && addGroup(charset, std::move(group));
}

// The group files stand in the charset directory beside the charset files, so this
// is asked to load them, too.
bool loadCharset(const std::string& path, RuleFiles& files) {
  constexpr TextEncodingKind kDefault = TextEncodingKind::kUtf16;
  const RuleText* const known = files.find(path, kDefault, false);
  RuleText own;
  if (known == nullptr && !readRuleText(path, kDefault, false, own)) return false;
  const RuleText& text = known == nullptr ? own : *known;
  RuleReader reader(text);
  if (!reader.enterElement("charset")) return false;
  const auto name = reader.enterElement("name");
  if (!name) return false;

  auto charset = std::make_unique<LoadedCharset>();
  charset->name = name->content();
  if (!fitsName(charset->name)) return false;
  charset->id = nameToId(charset->name.data());
  if (findCharsetById(charset->id) != nullptr) return true;
  // Groups may stand in front of all this.
  if (!readRuleNames(reader, *charset) || !readGroups(RuleReader(text), *charset, files))
    return false;
  charset->buildIndexes();
  return ruleBase.lists->addCharset(std::move(charset));
}

std::vector<std::string> namesOfRuleFiles(const std::string& directory) {
  const PathParts pattern = splitPath(directory + "*.xml");
  platform::SystemError error = 0;
  std::vector<std::string> names = matchingNames(joinPath(pattern).c_str(), &error);
  noteFault(FaultSubject::kCharsetDirectory, directory, error);
  return names;
}

std::atomic<bool> packedCharsetsAreUsed = true;

// Once a process: what has been loaded stays as it is.
void openPackedCharsets() {
  if (ruleBase.lists->packed != nullptr || !packedCharsetsAreUsed) return;
  if (const auto directory = ruleBase.installedPath())
    ruleBase.lists->packed = PackedCharsets::open(*directory);
}

size_t loadAllRuleFiles(const std::string& directory) {
  std::vector<std::string> names = namesOfRuleFiles(directory);
  if (const PackedCharsets* const packed = ruleBase.packed()) {
    if (isAsPacked(names, *packed)) return loadPackedRules(*packed);
    names = withPackedNames(std::move(names), *packed);
  }
  RuleFiles files;
  size_t accepted = 0;
  for (const std::string& name : names) {
    try {
      if (loadCharset(directory + name, files)) ++accepted;
    } catch (const std::bad_alloc&) {
      // As any other failure: this file is skipped and the next one is tried.
      noteNoMemory(directory);
    }
  }
  return accepted;
}

}  // namespace

void usePackedCharsets(bool areUsed) { packedCharsetsAreUsed = areUsed; }

bool loadRuleFile(const std::string& path) {
  RuleFiles files;
  return loadCharset(path, files);
}

bool parseDefinedRanges(const RuleElement& defined, RangeSet& ranges) {
  RuleReader reader(defined);
  while (const auto first = reader.passHexNumber(defined.end())) {
    CodeRange range = {*first, *first};
    if (reader.passCharacter('-', defined.end())) {
      if (const auto last = reader.passHexNumber(defined.end())) {
        range.last = *last;
        if (range.last > ranges.high) ranges.high = range.last;
      }
    }
    if (ranges.ranges.append(range) == 0) return false;
  }
  return true;
}

}  // namespace ksv

int cconvLoadRule() {
  return ksv::guardedAndNoted(0, [] {
    const std::lock_guard<std::mutex> guard(ksv::lifetimeMutex());
    if (ksv::ruleBase.lists == nullptr) return 0;
    ksv::openPackedCharsets();
    return ksv::loadAllRuleFiles(ksv::ruleBase.path()) > 0 ? 1 : 0;
  });
}
