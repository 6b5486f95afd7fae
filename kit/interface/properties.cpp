// Properties of documents.
#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/documents/properties/code_page_text.h"
#include "kit/documents/properties/document_kind.h"
#include "kit/documents/properties/document_properties.h"
#include "kit/interface/document_handle.h"
#include "kit/interface/errors.h"
#include "ksv.h"

using namespace ksv_kit::properties;

struct ksv_properties {
  explicit ksv_properties(DocumentProperties found);

  DocumentProperties read;
  std::vector<ksv_property_section> sections;
  std::vector<std::vector<ksv_property>> properties;  // of each section
  std::vector<const Value*> values;                   // of all properties, in their order
  std::vector<ksv_property_damage> damages;
  std::deque<std::string> texts;  // that stand nowhere else

 private:
  void addSection(const StreamSet& stream, uint32_t index);
  void addDamages(const StreamSet& stream);
  const char* kept(std::string text);
};

namespace ksv_kit {
namespace {

ksv_value_form formOf(const Value& value) {
  if (value.isSequence()) return KSV_VALUE_SEQUENCE;
  if (value.isText()) return KSV_VALUE_TEXT;
  switch (properties::formOf(value.baseType())) {
    case Form::kNothing:
      return KSV_VALUE_NOTHING;
    case Form::kInteger:
      return KSV_VALUE_INTEGER;
    case Form::kNatural:
      return KSV_VALUE_NATURAL;
    case Form::kReal:
      return KSV_VALUE_REAL;
    case Form::kBoolean:
      return KSV_VALUE_BOOLEAN;
    case Form::kTime:
      return KSV_VALUE_TIME;
    case Form::kDate:
      return KSV_VALUE_DATE;
    case Form::kDecimal:
      return KSV_VALUE_DECIMAL;
    case Form::kClassId:
      return KSV_VALUE_CLASS_ID;
    case Form::kClipboard:
      return KSV_VALUE_CLIPBOARD;
    case Form::kBytes:
      break;
  }
  return KSV_VALUE_BYTES;
}

void setBytes(std::string_view bytes, ksv_property_value& value) {
  value.bytes = reinterpret_cast<const uint8_t*>(bytes.data());
  value.byte_count = bytes.size();
}

void setText(const std::string& text, ksv_property_value& value) {
  value.text = text.c_str();
  value.text_length = text.size();
}

// All but texts that stand nowhere in the set. bytes: those of the set, which stay.
ksv_property_value valueOf(const Value& from, std::string_view bytes) {
  ksv_property_value value{};
  value.type = from.type;
  value.form = formOf(from);
  value.element_count = from.elementCount();
  setBytes(bytes, value);
  switch (value.form) {
    case KSV_VALUE_INTEGER:
      value.integer = signedOf(from);
      break;
    case KSV_VALUE_BOOLEAN:
      value.integer = truthOf(from) ? 1 : 0;
      break;
    case KSV_VALUE_NATURAL:
    case KSV_VALUE_TIME:
      value.natural = unsignedOf(from);
      break;
    case KSV_VALUE_REAL:
    case KSV_VALUE_DATE:
      value.real = realOf(from);
      break;
    case KSV_VALUE_CLIPBOARD:
      setBytes(bytes.substr(bytes.size() - clipboardBytes(from).size()), value);
      break;
    default:
      break;
  }
  return value;
}

// Of the forms that say it in a text.
std::string textFor(const Value& value, int32_t form) {
  if (form == KSV_VALUE_DECIMAL) return decimalOf(value);
  if (form == KSV_VALUE_CLASS_ID) return guidText(value.bytes);
  if (form == KSV_VALUE_CLIPBOARD) return clipboardFormat(value);
  return "";
}

bool saysItInText(int32_t form) {
  return form == KSV_VALUE_DECIMAL || form == KSV_VALUE_CLASS_ID || form == KSV_VALUE_CLIPBOARD;
}

// The interface numbers damages as they are numbered inside.
static_assert(static_cast<int>(Damage::kNoHeader) == KSV_PROPERTY_NO_HEADER);
static_assert(static_cast<int>(Damage::kBeyondSection) == KSV_PROPERTY_BEYOND_SECTION);
static_assert(static_cast<int>(Damage::kOverlapping) == KSV_PROPERTY_OVERLAPPING);

constexpr char kNotGiven[] = "an argument is null";

ksv_result give(DocumentProperties found, ksv_properties** properties, ksv_error* error) {
  *properties = std::make_unique<ksv_properties>(std::move(found)).release();
  return succeed(error);
}

}  // namespace
}  // namespace ksv_kit

using namespace ksv_kit;

ksv_properties::ksv_properties(DocumentProperties found) : read(std::move(found)) {
  for (const StreamSet& stream : read.sets) {
    for (uint32_t i = 0; i < stream.set.sections.size(); ++i) addSection(stream, i);
    addDamages(stream);
  }
}

const char* ksv_properties::kept(std::string text) {
  if (text.empty()) return nullptr;
  return texts.emplace_back(std::move(text)).c_str();
}

void ksv_properties::addSection(const StreamSet& stream, uint32_t index) {
  const Section& section = stream.set.sections[index];
  const char* const name = formatName(section.format);
  std::vector<ksv_property> listed;
  listed.reserve(section.properties.size());
  for (const Property& from : section.properties) {
    ksv_property property{};
    const KnownProperty* const known = knownProperty(section.format, from.id);
    property.id = from.id;
    property.key = known == nullptr ? nullptr : known->key;
    property.name = from.name.empty() ? nullptr : from.name.c_str();
    std::string note;
    for (const std::string& one : from.notes) note += (note.empty() ? "" : "; ") + one;
    property.note = kept(std::move(note));
    property.offset = from.offset;
    property.value = valueOf(from.value, from.value.bytes);
    if (known != nullptr && known->meaning == Meaning::kDuration &&
        property.value.form == KSV_VALUE_TIME)
      property.value.form = KSV_VALUE_DURATION;
    if (property.value.form == KSV_VALUE_TEXT) setText(from.value.text, property.value);
    if (saysItInText(property.value.form))
      setText(texts.emplace_back(textFor(from.value, property.value.form)), property.value);
    values.push_back(&from.value);
    listed.push_back(property);
  }
  sections.push_back({stream.path.c_str(), kept(guidText(section.format)),
                      name[0] == '\0' ? nullptr : name, section.offset, index, section.codePage,
                      listed.size()});
  properties.push_back(std::move(listed));
}

void ksv_properties::addDamages(const StreamSet& stream) {
  for (const DamageNote& damage : stream.set.damages)
    damages.push_back({static_cast<int32_t>(damage.kind), damage.property ? 1u : 0u,
                       damage.property.value_or(0), 0, damage.offset, stream.path.c_str(),
                       wordsOf(damage.kind)});
}

ksv_result ksv_document_get_kind(ksv_document* document, ksv_document_kind* kind,
                                 ksv_error* error) {
  if (document == nullptr || kind == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNotGiven);
  *kind = {};
  kind->is_template = -1;
  return guarded(error, [&] {
    const DocumentKind found = kindOf(*document->document);
    const bool isKnown = found.key[0] != '\0';
    kind->name = isKnown ? found.key : nullptr;
    kind->description = isKnown ? found.description : nullptr;
    kind->confidence = found.confidence;
    kind->has_macros = found.hasMacros ? 1 : 0;
    kind->is_encrypted = found.isEncrypted ? 1 : 0;
    if (found.isTemplate) kind->is_template = *found.isTemplate ? 1 : 0;
    return succeed(error);
  });
}

ksv_result ksv_document_properties(ksv_document* document, int32_t scope,
                                   ksv_properties** properties, ksv_error* error) {
  if (properties == nullptr || document == nullptr) {
    if (properties != nullptr) *properties = nullptr;
    return refuse(error, KSV_BAD_ARGUMENT, kNotGiven);
  }
  *properties = nullptr;
  if (scope != KSV_PROPERTIES_KNOWN && scope != KSV_PROPERTIES_ALL)
    return refuse(error, KSV_BAD_ARGUMENT, "there is no such scope");
  return guarded(error, [&] {
    const WhichSets which = scope == KSV_PROPERTIES_ALL ? WhichSets::kAll : WhichSets::kKnown;
    return give(propertiesOf(*document->document, which), properties, error);
  });
}

ksv_result ksv_properties_read(const void* bytes, size_t length, ksv_properties** properties,
                               ksv_error* error) {
  if (properties == nullptr) return refuse(error, KSV_BAD_ARGUMENT, kNotGiven);
  *properties = nullptr;
  if (bytes == nullptr && length != 0)
    return refuse(error, KSV_BAD_ARGUMENT, "there are no bytes, and they have a length");
  return guarded(error, [&] {
    DocumentProperties found;
    found.sets.emplace_back();
    found.sets.back().set = readPropertySet({static_cast<const uint8_t*>(bytes), length});
    readTexts(found.sets.back().set);
    return give(std::move(found), properties, error);
  });
}

void ksv_properties_free(ksv_properties* properties) { delete properties; }

size_t ksv_properties_section_count(const ksv_properties* properties) {
  return properties == nullptr ? 0 : properties->sections.size();
}

const ksv_property_section* ksv_properties_section(const ksv_properties* properties, size_t index) {
  if (properties == nullptr || index >= properties->sections.size()) return nullptr;
  return &properties->sections[index];
}

const ksv_property* ksv_properties_at(const ksv_properties* properties, size_t section,
                                      size_t index) {
  if (properties == nullptr || section >= properties->properties.size()) return nullptr;
  const std::vector<ksv_property>& listed = properties->properties[section];
  return index < listed.size() ? &listed[index] : nullptr;
}

const ksv_property* ksv_properties_find(const ksv_properties* properties, const char* key) {
  if (properties == nullptr || key == nullptr) return nullptr;
  const auto isCalled = [&](const char* name) {
    return name != nullptr && std::string_view(name) == key;
  };
  for (const bool byKey : {true, false})
    for (const std::vector<ksv_property>& listed : properties->properties)
      for (const ksv_property& property : listed)
        if (isCalled(byKey ? property.key : property.name)) return &property;
  return nullptr;
}

int ksv_properties_element(const ksv_properties* properties, const ksv_property* property,
                           size_t index, ksv_property_value* element) {
  if (properties == nullptr || property == nullptr || element == nullptr) return 0;
  if (index >= property->value.element_count) return 0;
  size_t before = 0;
  for (const std::vector<ksv_property>& listed : properties->properties) {
    const bool isHere =
        !listed.empty() && property >= listed.data() && property < listed.data() + listed.size();
    if (!isHere) {
      before += listed.size();
      continue;
    }
    const Value& value =
        *properties->values[before + static_cast<size_t>(property - listed.data())];
    const size_t size = fixedSizeOf(value.baseType());
    if (size != 0) {
      *element =
          valueOf(value.element(index), std::string_view(value.bytes).substr(index * size, size));
    } else {
      const Value& stored = value.elements[index];
      *element = valueOf(stored, stored.bytes);
      if (element->form == KSV_VALUE_TEXT) setText(stored.text, *element);
    }
    return 1;
  }
  return 0;
}

size_t ksv_properties_damage_count(const ksv_properties* properties) {
  return properties == nullptr ? 0 : properties->damages.size();
}

const ksv_property_damage* ksv_properties_damage(const ksv_properties* properties, size_t index) {
  if (properties == nullptr || index >= properties->damages.size()) return nullptr;
  return &properties->damages[index];
}
