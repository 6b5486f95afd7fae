#include "cconv/rules/rule_loader.h"

#include <cstdlib>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "cconv/rules/rule_base.h"
#include "cconv/rules/rule_path.h"
#include "common/directory.h"
#include "common/faults.h"
#include "ksv_cconv.h"

namespace ksv {
namespace {

constexpr uint16_t kDefaultBytes = 2;

// The word's quoted value as a decimal number, 2 when there is none.
uint16_t decimalBytes(const RuleText& text, Span span) {
  const auto value = attributeInSpan(text, span, "bytenum=");
  return value ? static_cast<uint16_t>(std::atoi(value->c_str())) : kDefaultBytes;
}

bool fitsName(const std::string& name) { return name.size() < kNameSize; }

// Reads the file that the entity reference in the span names. Null when it cannot.
const RuleText* readReferencedFile(const RuleText& charsetText, Span span, RuleFiles& files) {
  const auto entity = entityReference(charsetText, span);
  if (!entity) return nullptr;
  const auto file = entityFile(charsetText, *entity);
  return file ? files.read(*file, charsetText.encoding, charsetText.bigEndian) : nullptr;
}

// The position behind every "range" element at or after from.
size_t passRanges(const RuleText& text, size_t from) {
  while (const auto range = findElement(text, from, "range")) from = range->end;
  return from;
}

// "defined" and "srtable", both optional, in this order.
bool readCodesAndTable(const RuleText& charsetText, const RuleText& text, size_t from,
                       SubsetDef& subset) {
  if (const auto defined = findElement(text, from, "defined")) {
    if (!parseDefinedRanges(text, *defined, subset.defined)) return false;
    from = defined->end;
  }
  const auto table = findElement(text, from, "srtable");
  return !table || (attachTableFile(charsetText, text, *table, subset.toUcs) &&
                    attachTableFile(charsetText, text, *table, subset.fromUcs));
}

struct SubsetForm {
  const char* rootTag;
  const char* codeTag;
  SubsetKind kind;
};
constexpr SubsetForm kBaseForm = {"subseta", "code", SubsetKind::kBase};
constexpr SubsetForm kDifferenceForm = {"subsetb", "codeb", SubsetKind::kDifference};

std::unique_ptr<SubsetDef> buildSubset(const RuleText& charsetText, Span span,
                                       const SubsetForm& form, RuleFiles& files) {
  const RuleText* const referenced = readReferencedFile(charsetText, span, files);
  if (referenced == nullptr) return nullptr;
  const RuleText& text = *referenced;
  const auto root = findElement(text, 0, form.rootTag);
  if (!root) return nullptr;
  const auto name = findElement(text, root->start, "name");
  if (!name) return nullptr;
  const auto lang = findElement(text, name->end, "lang");
  if (!lang) return nullptr;
  const auto code = findElement(text, lang->end, form.codeTag);
  if (!code) return nullptr;

  std::string subsetName = elementText(text, *name);
  if (!fitsName(subsetName)) return nullptr;
  auto subset =
      std::make_unique<SubsetDef>(std::move(subsetName), form.kind, decimalBytes(text, *code));
  size_t from = code->start;
  if (form.kind == SubsetKind::kBase) {
    from = passRanges(text, from);
  } else {
    subset->basedon = attributeInSpan(text, *code, "basedon=").value_or("");
  }
  if (!readCodesAndTable(charsetText, text, from, *subset)) return nullptr;
  subset->lang = attributeInSpan(text, *lang, "domain=").value_or("");
  return subset;
}

// A quoted hexadecimal attribute at or after from, kept to 16 bits.
std::optional<uint16_t> hexAttribute(const RuleText& text, size_t from, const char* word) {
  const auto found = findString(text, from, word);
  if (!found) return std::nullopt;
  const auto value = quotedAfter(text, *found);
  if (!value) return std::nullopt;
  return static_cast<uint16_t>(parseHex(*value));
}

// The codec names of the "rule" element; both or none. The second is searched
// behind the first word, so it may stand anywhere behind it.
bool readRuleNames(const RuleText& text, size_t from, CharsetDef& charset) {
  const auto rule = findElement(text, from, "rule");
  if (!rule) return true;
  const auto construle = findString(text, rule->start, "construle=");
  if (!construle) return false;
  const auto construleValue = quotedAfter(text, *construle);
  const auto destrule = findString(text, *construle, "destrule=");
  if (!construleValue || !destrule) return false;
  const auto destruleValue = quotedAfter(text, *destrule);
  if (!destruleValue) return false;
  charset.construle = *construleValue;
  charset.destrule = *destruleValue;
  return true;
}

// The "dstable" elements whose content ends inside the member's.
std::unique_ptr<TableList> readDestTables(const RuleText& text, Span member) {
  auto tables = std::make_unique<TableList>();
  size_t from = member.start;
  while (const auto element = findElement(text, from, "dstable")) {
    if (element->end >= member.end) break;
    if (auto table = buildDestTable(text, *element)) {
      if (tables->append(std::move(table)) == 0) return nullptr;
    }
    from = element->end;
  }
  return tables;
}

// The first definition of a subset in the process wins; a later one is dropped.
bool addMember(CharsetDef& charset, std::unique_ptr<SubsetDef> subset) {
  const CharsetId id = subset->id;
  if (findSubsetById(id) == nullptr && !ruleBase.lists->addSubset(std::move(subset))) return false;
  return charset.members.append(findSubsetById(id)) != 0;
}

struct MemberElement {
  Span content;
  bool isDifference;
};

// The next "baseset" or "diffset" at or after from, whichever comes first.
std::optional<MemberElement> nextMember(const RuleText& text, size_t from) {
  const auto base = findElement(text, from, "baseset");
  const auto difference = findElement(text, from, "diffset");
  if (difference && (!base || difference->start < base->start)) {
    return MemberElement{*difference, true};
  }
  if (base) return MemberElement{*base, false};
  return std::nullopt;
}

bool readMembers(const RuleText& text, CharsetDef& charset, RuleFiles& files) {
  size_t from = 0;
  while (const auto member = nextMember(text, from)) {
    auto subset = member->isDifference ? buildDiffSubset(text, member->content, files)
                                       : buildBaseSubset(text, member->content, files);
    if (!subset) return false;
    auto tables = readDestTables(text, member->content);
    if (!tables || charset.destTables.append(std::move(tables)) == 0) return false;
    if (!addMember(charset, std::move(subset))) return false;
    from = member->content.end;
  }
  const auto user = findElement(text, from, "eudcset");
  if (!user) return true;
  auto subset = buildEudcSubset(text, *user, files);
  return subset && addMember(charset, std::move(subset));
}

// The subset files stand in the charset directory beside the charset files, so this
// is asked to load them, too.
bool loadCharset(const std::string& path, RuleFiles& files) {
  constexpr TextEncodingKind kDefault = TextEncodingKind::kUtf16;
  const RuleText* const known = files.find(path, kDefault, false);
  RuleText own;
  if (known == nullptr && !readRuleText(path, kDefault, false, own)) return false;
  const RuleText& text = known == nullptr ? own : *known;
  const auto root = findElement(text, 0, "charset");
  if (!root) return false;
  const auto name = findElement(text, root->start, "name");
  if (!name) return false;

  auto charset = std::make_unique<CharsetDef>();
  charset->name = elementText(text, *name);
  if (!fitsName(charset->name)) return false;
  charset->id = nameToId(charset->name.data());
  if (findCharsetById(charset->id) != nullptr) return true;
  if (!readRuleNames(text, name->start, *charset) || !readMembers(text, *charset, files))
    return false;
  charset->buildIndexes();
  return ruleBase.lists->addCharset(std::move(charset));
}

size_t loadAllRuleFiles(const std::string& directory) {
  const PathParts pattern = splitPath(directory + "*.xml");
  RuleFiles files;
  size_t accepted = 0;
  platform::SystemError error = 0;
  const std::vector<std::string> names = matchingNames(joinPath(pattern).c_str(), &error);
  noteFault(FaultSubject::kCharsetDirectory, directory, error);
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

bool loadRuleFile(const std::string& path) {
  RuleFiles files;
  return loadCharset(path, files);
}

std::unique_ptr<SubsetDef> buildBaseSubset(const RuleText& charsetText, Span span,
                                           RuleFiles& files) {
  return buildSubset(charsetText, span, kBaseForm, files);
}

std::unique_ptr<SubsetDef> buildDiffSubset(const RuleText& charsetText, Span span,
                                           RuleFiles& files) {
  return buildSubset(charsetText, span, kDifferenceForm, files);
}

std::unique_ptr<SubsetDef> buildEudcSubset(const RuleText& charsetText, Span span,
                                           RuleFiles& files) {
  const RuleText* const referenced = readReferencedFile(charsetText, span, files);
  if (referenced == nullptr) return nullptr;
  const RuleText& text = *referenced;
  const auto name = findElement(text, 0, "name");
  if (!name) return nullptr;
  const auto code = findElement(text, name->end, "codec");
  if (!code) return nullptr;
  std::string subsetName = elementText(text, *name);
  if (!fitsName(subsetName)) return nullptr;
  auto subset = std::make_unique<SubsetDef>(std::move(subsetName), SubsetKind::kUser,
                                            decimalBytes(text, *code));
  if (const auto range = findElement(text, passRanges(text, code->start), "defrange")) {
    const auto start = hexAttribute(text, range->start, "start=");
    const auto number = hexAttribute(text, range->start, "number=");
    if (!start || !number) return nullptr;
    subset->defStart = *start;
    subset->defNumber = *number;
  }
  return subset;
}

std::unique_ptr<CodeTable> buildDestTable(const RuleText& charsetText, Span span) {
  uint16_t bytes = kDefaultBytes;
  if (const auto word = findString(charsetText, span.start, "bytenum="); word && *word < span.end) {
    if (const auto value = quotedAfter(charsetText, *word)) {
      bytes = static_cast<uint16_t>(parseHex(*value));
    }
  }
  auto table = std::make_unique<CodeTable>(CodeTable::kSecondColumn, bytes);
  if (!attachTableFile(charsetText, charsetText, span, *table)) return nullptr;
  return table;
}

bool parseDefinedRanges(const RuleText& text, Span span, RangeSet& ranges) {
  while (const auto first = nextHexNumber(text, span)) {
    CodeRange range = {first->value, first->value};
    span.start = first->end;
    if (span.start < span.end && text.chars[span.start] == '-') {
      ++span.start;
      if (const auto last = nextHexNumber(text, span)) {
        range.last = last->value;
        if (range.last > ranges.high) ranges.high = range.last;
        span.start = last->end;
      }
    }
    if (ranges.ranges.append(range) == 0) return false;
  }
  return true;
}

bool attachTableFile(const RuleText& declaring, const RuleText& referencing, Span span,
                     CodeTable& table) {
  const auto entity = entityReference(referencing, span);
  if (!entity) return false;
  const auto file = entityFile(declaring, *entity);
  if (!file || !fitsName(*file)) return false;
  table.fileName = *file;
  table.sourceEncoding = declaring.encoding;
  table.sourceBigEndian = declaring.bigEndian;
  return true;
}

}  // namespace ksv

int cconvLoadRule() try {
  const std::lock_guard<std::mutex> guard(ksv::lifetimeMutex());
  if (ksv::ruleBase.lists == nullptr) return 0;
  return ksv::loadAllRuleFiles(ksv::ruleBase.path()) > 0 ? 1 : 0;
} catch (const std::bad_alloc&) {
  ksv::noteNoMemory("");
  return 0;
}
