#include "cli/jobs/summary_lines.h"

#include <string_view>
#include <utility>

#include "cli/jobs/property_values.h"
#include "cli/jobs/result_line.h"
#include "cli/system/escapes.h"
#include "kit/documents/properties/times.h"

namespace ksv_cli {
namespace {

using nlohmann::ordered_json;
using properties::DocumentKind;
using properties::KnownProperty;
using properties::Property;
using properties::PropertySet;
using properties::Section;
using properties::StreamSet;

constexpr size_t kIndent = 2;
constexpr size_t kLabelWidth = 21;

// Calls the function with each property that people know, and what it says.
template <typename Function>
void forEachKnown(const DocumentSummary& summary, Function function) {
  for (const KnownProperty& known : properties::knownProperties()) {
    const Property* const property = summary.properties.find(known);
    if (property == nullptr) continue;
    ordered_json value = valueOf(property->value, known);
    if (!value.is_null()) function(known, *property, std::move(value));
  }
}

std::string wordsOfKind(const DocumentKind& kind) {
  std::string words = kind.description;
  const auto add = [&](bool holds, const char* word) {
    if (holds) words += (words.empty() ? std::string() : ", ") + word;
  };
  add(kind.isTemplate.value_or(false), "template");
  add(kind.isEncrypted, "encrypted");
  add(kind.hasMacros, "with macros");
  return words;
}

std::string notesOf(const Property& property) {
  std::string notes;
  for (const std::string& note : property.notes) notes += (notes.empty() ? "" : "; ") + note;
  return notes.empty() ? "" : " (" + notes + ")";
}

// What is seldom true is told where it is.
bool isWorthALine(const ordered_json& value) {
  return !(value.is_boolean() && !value.get<bool>()) && !(value.is_array() && value.empty());
}

std::string knownLines(const DocumentSummary& summary) {
  std::string lines;
  if (const std::string kind = wordsOfKind(summary.kind); !kind.empty())
    lines += labelled("Kind", kind);
  forEachKnown(summary, [&](const KnownProperty& known, const Property& property,
                            const ordered_json& value) {
    if (isWorthALine(value)) lines += labelled(known.label, inWords(value) + notesOf(property));
  });
  for (const Property* const property : summary.properties.custom())
    lines += labelled("[" + property->name + "]",
                      inWords(valueOf(property->value)) + notesOf(*property));
  return lines;
}

// ---- All of them ----

std::string nameIn(const Section& section, const Property& property) {
  if (!property.name.empty()) return property.name;
  const KnownProperty* const known = properties::knownProperty(section.format, property.id);
  if (known != nullptr) return known->key;
  if (property.id == properties::kCodePageId) return "codePage";
  if (property.id == properties::kLocaleId) return "locale";
  return property.id == properties::kBehaviourId ? "behaviour" : "";
}

// A length of time looks like any time, but for what it is known for.
ordered_json valueIn(const Section& section, const Property& property) {
  const KnownProperty* const known = properties::knownProperty(section.format, property.id);
  if (known != nullptr && known->meaning == properties::Meaning::kDuration &&
      property.value.type == properties::kFileTime)
    return properties::isoDuration(properties::unsignedOf(property.value));
  return valueOf(property.value);
}

std::string linesOf(const StreamSet& stream, const Section& section) {
  std::string line = stream.path + " " + properties::guidText(section.format);
  if (const std::string name = properties::formatName(section.format); !name.empty())
    line += " " + name;
  if (section.codePage != 0) line += ", code page " + std::to_string(section.codePage);
  std::string lines = std::string(kIndent, ' ') + line + "\n";
  for (const Property& property : section.properties) {
    const std::string label = "  " + std::to_string(property.id) + " " + nameIn(section, property);
    lines += labelled(label, properties::typeName(property.value.type) + " " +
                                 inWords(valueIn(section, property)) + notesOf(property));
  }
  return lines;
}

std::string allLines(const DocumentSummary& summary) {
  std::string lines;
  for (const StreamSet& stream : summary.properties.sets)
    for (const Section& section : stream.set.sections) lines += linesOf(stream, section);
  return lines;
}

ordered_json propertyRecord(const Section& section, const Property& property) {
  ordered_json record = emptyRecord();
  record["id"] = property.id;
  record["name"] = textOrNull(nameIn(section, property));
  record["type"] = properties::typeName(property.value.type);
  record["value"] = valueIn(section, property);
  if (!property.notes.empty()) record["remarks"] = property.notes;
  return record;
}

ordered_json sectionRecord(const Section& section) {
  ordered_json record = emptyRecord();
  record["format"] = properties::guidText(section.format);
  record["formatName"] = textOrNull(properties::formatName(section.format));
  record["codePage"] = section.codePage == 0 ? ordered_json() : ordered_json(section.codePage);
  ordered_json listed = ordered_json::array();
  for (const Property& property : section.properties)
    listed.push_back(propertyRecord(section, property));
  record["properties"] = std::move(listed);
  if (!section.notes.empty()) record["remarks"] = section.notes;
  return record;
}

ordered_json setRecord(const StreamSet& stream) {
  ordered_json record = emptyRecord();
  record["stream"] = stream.path;
  record["version"] = stream.set.version;
  record["system"] = stream.set.system;
  record["classId"] = textOrNull(properties::guidText(stream.set.classId));
  ordered_json sections = ordered_json::array();
  for (const Section& section : stream.set.sections) sections.push_back(sectionRecord(section));
  record["sections"] = std::move(sections);
  return record;
}

// ---- Records ----

void addKind(ordered_json& record, const DocumentKind& kind) {
  if (kind.key[0] == '\0' && !kind.hasMacros) return;
  ordered_json field = emptyRecord();
  field["name"] = orNull(kind.key[0] == '\0' ? nullptr : kind.key);
  field["description"] = orNull(kind.key[0] == '\0' ? nullptr : kind.description);
  field["confidence"] = kind.confidence;
  field["macros"] = kind.hasMacros;
  field["encrypted"] = kind.isEncrypted;
  field["template"] = kind.isTemplate ? ordered_json(*kind.isTemplate) : ordered_json();
  record["kind"] = std::move(field);
}

ordered_json customRecord(const Property& property) {
  ordered_json record = emptyRecord();
  record["name"] = property.name;
  record["type"] = properties::typeName(property.value.type);
  record["value"] = valueOf(property.value);
  return record;
}

void addRemarks(ordered_json& remarks, const std::string& property, const Property& noted) {
  for (const std::string& note : noted.notes) {
    ordered_json remark = emptyRecord();
    remark["property"] = property;
    remark["remark"] = note;
    remarks.push_back(std::move(remark));
  }
}

void addKnown(ordered_json& record, const DocumentSummary& summary) {
  ordered_json remarks = ordered_json::array();
  forEachKnown(summary,
               [&](const KnownProperty& known, const Property& property, ordered_json value) {
                 record[known.key] = std::move(value);
                 addRemarks(remarks, known.key, property);
               });
  ordered_json custom = ordered_json::array();
  for (const Property* const property : summary.properties.custom()) {
    custom.push_back(customRecord(*property));
    addRemarks(remarks, property->name, *property);
  }
  if (!custom.empty()) record["custom"] = std::move(custom);
  if (!remarks.empty()) record["remarks"] = std::move(remarks);
}

ordered_json damageRecord(const char* reason, uint64_t offset, const ordered_json& stream) {
  ordered_json record = emptyRecord();
  record["reason"] = reason;
  record["stream"] = stream;
  record["offset"] = offset;
  return record;
}

void addDamages(ordered_json& record, const DocumentSummary& summary) {
  ordered_json damages = ordered_json::array();
  for (const ksv_kit::documents::Damage& damage : summary.damages)
    damages.push_back(damageRecord(damage.reason, damage.offset, nullptr));
  for (const StreamSet& stream : summary.properties.sets)
    for (const properties::DamageNote& damage : stream.set.damages)
      damages.push_back(damageRecord(wordsOf(damage.kind), damage.offset, stream.path));
  if (!damages.empty()) record["damages"] = std::move(damages);
}

}  // namespace

std::string labelled(const std::string& label, const std::string& text) {
  std::string lines = std::string(kIndent, ' ') + label;
  const size_t width = kIndent + kLabelWidth;
  lines.resize(std::max(lines.size() + 1, width), ' ');
  for (const char c : text) {
    if (c == '\n')
      lines += "\n" + std::string(width, ' ');
    else if (isAsciiControl(c) && c != '\t')
      lines += "\uFFFD";
    else
      lines += c;
  }
  return lines + "\n";
}

std::string summaryLines(const std::string& name, const DocumentSummary& summary,
                         SummaryForm form) {
  return name + "\n" + (form == SummaryForm::kAll ? allLines(summary) : knownLines(summary));
}

void addSummary(ordered_json& record, const DocumentSummary& summary, SummaryForm form) {
  addKind(record, summary.kind);
  if (form == SummaryForm::kAll) {
    ordered_json sets = ordered_json::array();
    for (const StreamSet& stream : summary.properties.sets) sets.push_back(setRecord(stream));
    record["sets"] = std::move(sets);
  } else {
    addKnown(record, summary);
  }
  addDamages(record, summary);
}

}  // namespace ksv_cli
