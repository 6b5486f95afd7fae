#include "cli/jobs/property_edits.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "cli/system/failure.h"
#include "kit/documents/document_edit.h"
#include "kit/documents/properties/code_page_text.h"
#include "kit/documents/properties/document_properties.h"
#include "kit/documents/properties/property_changes.h"
#include "kit/documents/properties/property_set_writer.h"
#include "kit/documents/properties/times.h"
#include "kit/text/unicode_check.h"

namespace ksv_cli {
namespace {

namespace documents = ksv_kit::documents;
namespace properties = ksv_kit::properties;
using properties::KnownProperty;
using properties::PropertySet;
using properties::Value;

// ---- The command line ----

struct Assignment {
  std::string name;
  std::string value;
};

Assignment assignmentIn(const char* option, const std::string& text) {
  const size_t sign = text.find('=');
  if (sign == std::string::npos || sign == 0)
    throw UsageError(std::string(option) + " takes NAME=VALUE, and not " + text);
  const ksv_kit::ScanResult scan =
      ksv_kit::scanUnicode(ksv_kit::UnicodeForm::kUtf8, false,
                           reinterpret_cast<const uint8_t*>(text.data()), text.size());
  if (scan.end != ksv_kit::ScanEnd::kAll) throw UsageError(std::string(option) + " takes UTF-8");
  return {text.substr(0, sign), text.substr(sign + 1)};
}

std::optional<int32_t> integerIn(const std::string& text) {
  int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || behind != end || text.empty()) return std::nullopt;
  return number;
}

std::optional<double> realIn(const std::string& text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || behind != end || !std::isfinite(number)) return std::nullopt;
  return number;
}

// A whole number of 32 bits, else one with a fraction.
std::optional<Value> numberIn(const std::string& text) {
  if (const auto number = integerIn(text))
    return properties::numberValue(properties::kI4, static_cast<uint32_t>(*number));
  if (const auto number = realIn(text)) return properties::realValue(*number);
  return std::nullopt;
}

std::optional<Value> booleanIn(const std::string& text) {
  if (text == "yes" || text == "true") return properties::booleanValue(true);
  if (text == "no" || text == "false") return properties::booleanValue(false);
  return std::nullopt;
}

std::optional<Value> timeIn(const std::string& text) {
  const std::optional<uint64_t> time = properties::fileTimeOf(text);
  if (!time) return std::nullopt;
  return properties::numberValue(properties::kFileTime, *time);
}

[[noreturn]] void refuseValue(const std::string& name, const std::string& value,
                              const char* wanted) {
  throw UsageError("the value of " + name + " is " + wanted + ", and not " + value);
}

Value orRefuse(std::optional<Value> value, const Assignment& given, const char* wanted) {
  if (!value) refuseValue(given.name, given.value, wanted);
  return std::move(*value);
}

constexpr char kNumber[] = "a number";
constexpr char kBoolean[] = "yes or no";
constexpr char kTime[] = "a time such as 2024-02-29T12:34:56Z";

Value knownValue(const KnownProperty& known, const Assignment& given) {
  if (known.type == properties::kFileTime) return orRefuse(timeIn(given.value), given, kTime);
  if (known.type == properties::kBool) return orRefuse(booleanIn(given.value), given, kBoolean);
  if (known.type != properties::kI4) return properties::textValue(given.value);
  const std::optional<int32_t> number = integerIn(given.value);
  if (!number) refuseValue(given.name, given.value, kNumber);
  return properties::numberValue(properties::kI4, static_cast<uint32_t>(*number));
}

bool canBeSet(const KnownProperty& known) {
  return known.meaning == properties::Meaning::kAsTyped &&
         (known.type & properties::kVectorBit) == 0;
}

PropertyEdit knownEdit(const std::string& text) {
  const Assignment given = assignmentIn("--set", text);
  const KnownProperty* const known = properties::knownProperty(given.name);
  if (known == nullptr)
    throw UsageError("--set knows no property " + given.name + "; --set-custom sets any");
  if (!canBeSet(*known)) throw UsageError("--set does not set " + given.name);
  return {known, given.name, false, knownValue(*known, given)};
}

// Takes the type off the end of a value.
bool takeType(std::string& value, std::string_view type) {
  if (!value.ends_with(type)) return false;
  value.resize(value.size() - type.size());
  return true;
}

PropertyEdit customEdit(const std::string& text) {
  Assignment given = assignmentIn("--set-custom", text);
  PropertyEdit edit = {nullptr, given.name, false, {}};
  if (takeType(given.value, ":number"))
    edit.value = orRefuse(numberIn(given.value), given, kNumber);
  else if (takeType(given.value, ":boolean"))
    edit.value = orRefuse(booleanIn(given.value), given, kBoolean);
  else if (takeType(given.value, ":time"))
    edit.value = orRefuse(timeIn(given.value), given, kTime);
  else
    takeType(given.value, ":text");
  if (edit.value.type == properties::kEmpty) edit.value = properties::textValue(given.value);
  return edit;
}

// ---- Documents ----

// A set of the document, which is read when something of it is changed.
class EditedSet {
 public:
  EditedSet(documents::Document& document, const char* path, std::string_view format)
      : document_(document), path_(path), format_(format) {}

  PropertySet& set() {
    if (!set_) read();
    return *set_;
  }
  // Whether there is anything that could be removed.
  bool isThere() const { return set_.has_value() || document_.find(path_).has_value(); }
  void store(documents::DocumentEdit& edit) const {
    if (!set_) return;
    const std::string bytes = properties::written(*set_);
    edit.setStream(path_, {bytes.begin(), bytes.end()});
  }

 private:
  void read() {
    set_ = properties::setAt(document_, path_);
    if (!set_) {
      set_ = properties::newPropertySet(format_);
      return;
    }
    for (const properties::DamageNote& damage : set_->damages)
      if (properties::losesSomething(damage.kind))
        throw Failure(std::string("cannot be changed without loss: in ") + path_ + " " +
                      wordsOf(damage.kind) + " (offset " + std::to_string(damage.offset) + ")");
    properties::readTexts(*set_);
  }

  documents::Document& document_;
  const char* const path_;
  const std::string_view format_;
  std::optional<PropertySet> set_;
};

void applyKnown(const PropertyEdit& edit, std::string_view format, EditedSet& edited) {
  if (edit.isRemoved && !edited.isThere()) return;
  properties::Section& section = properties::sectionOf(edited.set(), format);
  if (edit.isRemoved)
    properties::removeProperty(section, edit.known->id);
  else
    properties::setProperty(section, edit.known->id, edit.value);
}

void applyCustom(const PropertyEdit& edit, EditedSet& edited) {
  if (!edit.isRemoved)
    properties::setCustomProperty(edited.set(), edit.name, edit.value);
  else if (edited.isThere())
    properties::removeCustomProperty(edited.set(), edit.name);
}

void apply(const PropertyEdit& edit, EditedSet& summary, EditedSet& documentSummary) {
  if (edit.known == nullptr)
    applyCustom(edit, documentSummary);
  else if (edit.known->isOfSummary)
    applyKnown(edit, properties::kSummaryFormat, summary);
  else
    applyKnown(edit, properties::kDocumentSummaryFormat, documentSummary);
}

}  // namespace

std::vector<PropertyEdit> propertyEdits(const PropertyOptions& options) {
  std::vector<PropertyEdit> edits;
  for (const std::string& name : options.removed)
    edits.push_back({properties::knownProperty(name), name, true, {}});
  for (const std::string& text : options.set) edits.push_back(knownEdit(text));
  for (const std::string& text : options.custom) edits.push_back(customEdit(text));
  return edits;
}

void writeEdited(documents::Document& document, const std::vector<PropertyEdit>& edits,
                 ByteSink& sink) {
  try {
    EditedSet summary(document, properties::kSummaryPath, properties::kSummaryFormat);
    EditedSet documentSummary(document, properties::kDocumentSummaryPath,
                              properties::kDocumentSummaryFormat);
    for (const PropertyEdit& edit : edits) apply(edit, summary, documentSummary);
    documents::DocumentEdit edited(document);
    summary.store(edited);
    documentSummary.store(edited);
    edited.write([&](const uint8_t* bytes, size_t count) { sink.write(bytes, count); });
  } catch (const documents::LossyEdit& lossy) {
    throw Failure::at(lossy.offset(),
                      std::string("cannot be changed without loss: ") + lossy.what());
  } catch (const documents::UnfitPath& unfit) {
    throw Failure(unfit.what());
  }
}

}  // namespace ksv_cli
