#include "cli/charsets/rule_lint.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "cconv/rules/names.h"
#include "cli/charsets/alias_lint.h"
#include "cli/charsets/charset_names.h"
#include "cli/charsets/codec_names.h"
#include "cli/charsets/name_matching.h"
#include "cli/charsets/rule_source.h"
#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

using Span = RuleSource::Span;

// The members of a charset, and how the files that they name begin.
struct MemberForm {
  const char* element;
  const char* root;  // null: it has none
  const char* code;
};
constexpr MemberForm kMemberForms[] = {
    {"baseset", "subseta", "code"}, {"diffset", "subsetb", "codeb"}, {"eudcset", nullptr, "codec"}};

// Which names have been given to what, so that those that clash are found.
class NameRegister {
 public:
  struct Entry {
    std::string name;
    std::string file;
  };

  // The entry that has the number of this name already, if it is another one.
  std::optional<Entry> clashOf(const std::string& name, const std::string& file) {
    std::string key = name;
    const ksv::CharsetId id = ksv::nameToId(key.data());
    const auto [entry, isNew] = entries_.emplace(id, Entry{key, file});
    if (isNew || (entry->second.name == key && entry->second.file == file)) return std::nullopt;
    return entry->second;
  }

 private:
  std::map<ksv::CharsetId, Entry> entries_;
};

class DirectoryLint {
 public:
  explicit DirectoryLint(const std::string& directory) : directory_(directory) {}

  LintFindings run() {
    for (const std::string& name : platform::filesIn(directory_))
      unlessUnreadable([&] { lintFile(name); });
    unlessUnreadable([&] { lintWhole(); });
    std::stable_sort(faults_.begin(), faults_.end(), [](const Fault& a, const Fault& b) {
      return std::tie(a.file, a.line, a.reason) < std::tie(b.file, b.line, b.reason);
    });
    // A set that several charsets name is looked at for each of them.
    faults_.erase(std::unique(faults_.begin(), faults_.end()), faults_.end());
    return {std::move(faults_), std::move(unreadable_), std::move(tables_)};
  }

 private:
  // What cannot be read is told in place of what would follow from its absence.
  template <typename Action>
  void unlessUnreadable(Action action) {
    try {
      action();
    } catch (const UnreadableFile& file) {
      unreadable_.emplace_back(file.what());
    }
  }

  // What rests on all rule files says nothing while one of them is not known.
  void lintWhole() {
    if (!unreadable_.empty()) return;
    if (charsets_.empty()) add(".", 0, "holds no charset rule file that can be read");
    lintAliases(directory_, charsets_, faults_);
  }

  void add(const std::string& file, size_t line, const std::string& reason) {
    faults_.push_back({file, line, reason});
  }

  void lintFile(const std::string& name) {
    const std::string lower = lowered(name);
    const bool isRuleFile = lower.ends_with(".xml");
    if ((isRuleFile || lower.ends_with(".txt") || lower.ends_with(".cmp")) && name != lower &&
        !platform::namesHaveNoCase())
      return add(name, 0, "has capital letters in its name, and is never opened");
    if (!isRuleFile) return;
    const RuleSource* source = read(name);
    if (source == nullptr) return;
    if (const auto root = source->element("charset", 0)) return lintCharset(name, *source, *root);
    for (const char* tag : {"subseta", "subsetb", "name"})
      if (source->element(tag, 0)) return;
    add(name, 1, "holds neither a charset nor a set");
  }

  // Null when the file cannot be read, which is told once.
  const RuleSource* read(const std::string& name) {
    const auto known = sources_.find(name);
    if (known != sources_.end()) return known->second ? &*known->second : nullptr;
    const auto bytes = fileBytes(platform::joinPath(directory_, name));
    std::optional<RuleSource>& source = sources_[name];
    const FormFinding finding =
        bytes ? formOf(*bytes) : FormFinding{std::nullopt, "cannot be read"};
    if (finding.form)
      source.emplace(*bytes, *finding.form);
    else
      add(name, 0, finding.fault);
    return source ? &*source : nullptr;
  }

  void lintCharset(const std::string& file, const RuleSource& source, Span root) {
    const auto name = source.element("name", root.start);
    if (!name) return add(file, source.lineAt(root.start), "has a charset without a <name>");
    const std::string charset = source.textOf(*name);
    if (!checkName(file, source.lineAt(name->start), charset)) return;
    charsets_.push_back(lowered(charset));
    if (const auto other = charsetNames_.clashOf(charset, file))
      add(file, source.lineAt(name->start),
          "gives the charset " + charset + " the number that " + other->name + " of " +
              other->file + " has: only one of them is loaded");
    lintCodecs(file, source, name->start);
    lintMembers(file, source);
  }

  bool checkName(const std::string& file, size_t line, const std::string& name) {
    if (!name.empty() && name.size() < ksv::kNameSize) return true;
    add(file, line, name.empty() ? "has an empty <name>" : "has a <name> that is too long");
    return false;
  }

  void lintCodecs(const std::string& file, const RuleSource& source, size_t from) {
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

  static bool isCodec(const std::string& name, const std::string& prefix) {
    return std::any_of(std::begin(kCodecNames), std::end(kCodecNames),
                       [&](const char* codec) { return name == prefix + codec; });
  }

  void lintMembers(const std::string& file, const RuleSource& source) {
    for (const MemberForm& form : kMemberForms)
      for (auto member = source.element(form.element, 0); member;
           member = source.element(form.element, member->end)) {
        lintMember(file, source, *member, form);
        lintOneWayTables(file, source, *member);
      }
  }

  void lintMember(const std::string& file, const RuleSource& source, Span member,
                  const MemberForm& form) {
    const auto set = referenced(file, source, source, member);
    if (!set) return;
    const size_t line = source.lineAt(member.start);
    if (!isThere(*set)) return add(file, line, "names the set file " + *set + ", which is missing");
    const RuleSource* text = read(*set);
    if (text == nullptr)
      return add(file, line, "names the set file " + *set + ", which cannot be read");
    lintSet(*set, *text, file, source, form);
  }

  bool isThere(const std::string& name) const {
    return isRegularFile(platform::joinPath(directory_, name));
  }

  // The file, as it is opened, that the entity in a span of text stands for.
  std::optional<std::string> referenced(const std::string& textFile, const RuleSource& text,
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

  void lintSet(const std::string& file, const RuleSource& text, const std::string& charsetFile,
               const RuleSource& charset, const MemberForm& form) {
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

  void lintSetName(const std::string& file, const RuleSource& text, Span name) {
    const std::string set = text.textOf(name);
    if (!lintedSets_.insert(file).second) return;
    if (!checkName(file, text.lineAt(name.start), set)) return;
    if (const auto other = setNames_.clashOf(set, file))
      add(file, text.lineAt(name.start),
          "gives the set " + set + " the number that " + other->name + " of " + other->file +
              " has: only one of them is used");
  }

  void lintOneWayTables(const std::string& file, const RuleSource& source, Span member) {
    size_t from = member.start;
    while (const auto table = source.element("dstable", from)) {
      if (table->end >= member.end) break;
      lintTableOf(file, source, file, source, *table,
                  widthOf(source.attribute(*table, "bytenum="), 16));
      from = table->end;
    }
  }

  void lintTableOf(const std::string& textFile, const RuleSource& text,
                   const std::string& declaringFile, const RuleSource& declaring, Span span,
                   unsigned width) {
    const auto table = referenced(textFile, text, declaring, span);
    if (!table) return;
    const TextForm form = declaring.form();
    tables_.insert(*table);
    if (!lintedTables_.insert({*table, form.unitSize, form.bigEndian}).second) return;
    lintTable(directory_, {*table, form, declaringFile, width}, faults_);
  }

  static unsigned widthOf(const std::optional<std::string>& value, int base) {
    constexpr unsigned kDefault = 2;
    return value ? static_cast<unsigned>(std::strtoul(value->c_str(), nullptr, base)) : kDefault;
  }

  const std::string& directory_;
  std::vector<Fault> faults_;
  std::vector<std::string> unreadable_;
  std::set<std::string> tables_;
  std::map<std::string, std::optional<RuleSource>> sources_;
  std::vector<std::string> charsets_;  // in lower case
  NameRegister charsetNames_;
  NameRegister setNames_;
  std::set<std::string> lintedSets_;
  std::set<std::tuple<std::string, uint32_t, bool>> lintedTables_;
};

}  // namespace

LintFindings lintCharsetDirectory(const std::string& directory) {
  return DirectoryLint(directory).run();
}

std::string shownFault(const Fault& fault) {
  return fault.file + (fault.line == 0 ? "" : ":" + std::to_string(fault.line)) + ": " +
         fault.reason;
}

}  // namespace ksv_cli
