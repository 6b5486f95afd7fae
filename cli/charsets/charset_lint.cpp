#include "cli/charsets/charset_lint.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>

#include "cli/charsets/codec_names.h"
#include "kit/charsets/name_matching.h"

namespace ksv_cli {

using ksv_kit::lowered;

namespace {

bool isCodec(const std::string& name, const std::string& prefix) {
  return std::any_of(std::begin(kCodecNames), std::end(kCodecNames),
                     [&](const char* codec) { return name == prefix + codec; });
}

unsigned widthOf(const std::optional<std::string>& value, int base) {
  constexpr unsigned kDefault = 2;
  return value ? static_cast<unsigned>(std::strtoul(value->c_str(), nullptr, base)) : kDefault;
}

}  // namespace

// The members of a charset, and how the files that they name begin.
struct CharsetLint::MemberForm {
  const char* element;
  const char* root;  // null: it has none
  const char* code;
};

std::optional<NameRegister::Entry> NameRegister::clashOf(const std::string& name,
                                                         const std::string& file) {
  std::string key = name;
  const ksv::CharsetId id = ksv::nameToId(key.data());
  const auto [entry, isNew] = entries_.emplace(id, Entry{key, file});
  if (isNew || (entry->second.name == key && entry->second.file == file)) return std::nullopt;
  return entry->second;
}

void CharsetLint::add(const std::string& file, size_t line, const std::string& reason) {
  faults_.push_back({file, line, reason});
}

void CharsetLint::lint(const std::string& file, const RuleSource& source, Span root) {
  const auto name = source.element("name", root.start);
  if (!name) return add(file, source.lineAt(root.start), "has a charset without a <name>");
  const std::string charset = source.textOf(*name);
  if (!checkName(file, source.lineAt(name->start), charset)) return;
  charsets_.push_back(lowered(charset));
  if (const auto other = charsetNames_.clashOf(charset, file))
    add(file, source.lineAt(name->start),
        "gives the charset " + charset + " the number that " + other->name + " of " + other->file +
            " has: only one of them is loaded");
  lintCodecs(file, source, name->start);
  lintMembers(file, source);
}

bool CharsetLint::checkName(const std::string& file, size_t line, const std::string& name) {
  if (!name.empty() && name.size() < ksv::kNameSize) return true;
  add(file, line, name.empty() ? "has an empty <name>" : "has a <name> that is too long");
  return false;
}

void CharsetLint::lintCodecs(const std::string& file, const RuleSource& source, size_t from) {
  const auto rule = source.element("rule", from);
  if (!rule) return add(file, source.lineAt(from), "has no <rule>, which names the codecs");
  for (const auto& [word, prefix] : {std::pair{"construle=", "const"}, {"destrule=", "dest"}}) {
    const auto value = source.attribute({rule->start, std::string::npos}, word);
    if (!value)
      add(file, source.lineAt(rule->start), std::string("has a <rule> without ") + word);
    else if (!isCodec(*value, prefix))
      add(file, source.lineAt(rule->start), std::string("names the unknown codec ") + *value);
  }
}

void CharsetLint::lintMembers(const std::string& file, const RuleSource& source) {
  static constexpr MemberForm kMemberForms[] = {{"baseset", "subseta", "code"},
                                                {"diffset", "subsetb", "codeb"},
                                                {"eudcset", nullptr, "codec"}};
  for (const MemberForm& form : kMemberForms)
    for (auto member = source.element(form.element, 0); member;
         member = source.element(form.element, member->end)) {
      lintMember(file, source, *member, form);
      lintOneWayTables(file, source, *member);
    }
}

void CharsetLint::lintMember(const std::string& file, const RuleSource& source, Span member,
                             const MemberForm& form) {
  const auto set = referenced(file, source, source, member);
  if (!set) return;
  const size_t line = source.lineAt(member.start);
  if (!files_.isThere(*set))
    return add(file, line, "names the set file " + *set + ", which is missing");
  const RuleSource* text = files_.read(*set);
  if (text == nullptr)
    return add(file, line, "names the set file " + *set + ", which cannot be read");
  lintSet(*set, *text, file, source, form);
}

// The file, as it is opened, that the entity in a span of text stands for.
std::optional<std::string> CharsetLint::referenced(const std::string& textFile,
                                                   const RuleSource& text,
                                                   const RuleSource& declaring, Span span) {
  const size_t line = text.lineAt(span.start);
  const auto entity = text.entity(span);
  if (!entity) {
    add(textFile, line, "names no file: an entity such as &name; is needed");
    return std::nullopt;
  }
  const auto file = declaring.fileOf(*entity);
  if (!file) {
    add(textFile, line,
        declaring.namesTooMuch() ? "uses more entities than are looked for in a file of this size"
                                 : "uses the entity &" + *entity + ";, which is not declared");
    return std::nullopt;
  }
  return lowered(*file);
}

void CharsetLint::lintSet(const std::string& file, const RuleSource& text,
                          const std::string& charsetFile, const RuleSource& charset,
                          const MemberForm& form) {
  const auto root = form.root == nullptr ? std::optional(Span{0, 0}) : text.element(form.root, 0);
  if (!root)
    return add(file, 1,
               std::string("has no <") + form.root + ">, which a " + form.element + " needs");
  size_t at = root->start;
  for (const char* tag : {"name", "lang", form.code}) {
    if (form.root == nullptr && std::strcmp(tag, "lang") == 0) continue;
    const auto element = text.element(tag, at);
    if (!element)
      return add(file, text.lineAt(at), std::string("has no <") + tag + "> behind this line");
    if (std::strcmp(tag, "name") == 0) lintSetName(file, text, *element);
    at = element->start;
  }
  const auto code = text.element(form.code, root->start);
  const unsigned width = widthOf(text.attribute(*code, "bytenum="), 10);
  if (const auto table = text.element("srtable", at))
    lintTableOf(file, text, charsetFile, charset, *table, width);
}

void CharsetLint::lintSetName(const std::string& file, const RuleSource& text, Span name) {
  const std::string set = text.textOf(name);
  if (!lintedSets_.insert(file).second) return;
  if (!checkName(file, text.lineAt(name.start), set)) return;
  if (const auto other = setNames_.clashOf(set, file))
    add(file, text.lineAt(name.start),
        "gives the set " + set + " the number that " + other->name + " of " + other->file +
            " has: only one of them is used");
}

void CharsetLint::lintOneWayTables(const std::string& file, const RuleSource& source, Span member) {
  size_t from = member.start;
  while (const auto table = source.element("dstable", from)) {
    if (table->end >= member.end) break;
    lintTableOf(file, source, file, source, *table,
                widthOf(source.attribute(*table, "bytenum="), 16));
    from = table->end;
  }
}

void CharsetLint::lintTableOf(const std::string& textFile, const RuleSource& text,
                              const std::string& declaringFile, const RuleSource& declaring,
                              Span span, unsigned width) {
  const auto table = referenced(textFile, text, declaring, span);
  if (!table) return;
  const TextForm form = declaring.form();
  tables_.insert(*table);
  if (!lintedTables_.insert({*table, form.unitSize, form.bigEndian}).second) return;
  lintTable(files_.directory(), {*table, form, declaringFile, width}, faults_);
}

}  // namespace ksv_cli
