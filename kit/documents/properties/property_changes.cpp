#include "kit/documents/properties/property_changes.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "kit/documents/properties/code_page_text.h"
#include "kit/documents/properties/property_set_writer.h"

namespace ksv_kit::properties {
namespace {

constexpr uint16_t kUsualPage = 1252;
// Properties that are linked to a part of the document have it in their numbers beside those that
// hold the values.
constexpr uint32_t kLinkBit = 0x01000000;
constexpr uint32_t kFirstId = 2;
// The system's own version of 1993, as writers without one of theirs say.
constexpr uint32_t kSystem = 0x00020006;

bool isUnreadable(const std::string& text) { return text.find("\uFFFD") != std::string::npos; }

// Calls the function with each text of the value that stands in the code page.
template <typename Function>
void forEachText(Value& value, Function function) {
  for (Value& element : value.elements) forEachText(element, function);
  if (!value.isSequence() && isCodePageText(value.baseType())) function(value);
}

bool hasTexts(Value& value) {
  bool has = false;
  forEachText(value, [&](const Value&) { has = true; });
  return has;
}

bool canMoveTo(uint16_t codePage, Section& section) {
  bool can = true;
  const auto look = [&](const std::string& text) {
    can = can && !isUnreadable(text) && encodedText(codePage, text).has_value();
  };
  for (Property& property : section.properties)
    forEachText(property.value, [&](const Value& value) { look(value.text); });
  for (const DictionaryEntry& entry : section.dictionary) look(entry.name);
  return can;
}

void encode(Value& value, uint16_t codePage) {
  const std::string head =
      value.baseType() == kVersionedStream ? value.bytes.substr(0, 16) : std::string();
  value.bytes = head + terminatedText(codePage, value.text).value();
}

void declare(Section& section, uint16_t codePage) {
  section.codePage = codePage;
  Property declared;
  declared.id = kCodePageId;
  declared.value = numberValue(kI2, codePage);
  const auto found =
      std::find_if(section.properties.begin(), section.properties.end(),
                   [](const Property& property) { return property.id == kCodePageId; });
  if (found != section.properties.end())
    *found = std::move(declared);
  else
    section.properties.insert(section.properties.begin(), std::move(declared));
}

void moveTo(uint16_t codePage, Section& section) {
  for (Property& property : section.properties) {
    if (!hasTexts(property.value)) continue;
    forEachText(property.value, [&](Value& value) { encode(value, codePage); });
    property.stored.clear();
  }
  for (DictionaryEntry& entry : section.dictionary)
    entry.bytes = terminatedText(codePage, entry.name).value();
  declare(section, codePage);
}

// Has the section take a text in its code page, which may become another one. False: it cannot.
bool makeRoomFor(const std::string& text, Section& section) {
  if (section.codePage != 0 && encodedText(section.codePage, text)) return true;
  std::vector<uint16_t> pages = {kUtf8Page};
  if (section.codePage == 0) pages.insert(pages.begin(), kUsualPage);
  for (const uint16_t page : pages) {
    if (!encodedText(page, text) || !canMoveTo(page, section)) continue;
    moveTo(page, section);
    return true;
  }
  return false;
}

bool haveSameTexts(const Value& one, const Value& other) {
  return one.text == other.text &&
         std::equal(one.elements.begin(), one.elements.end(), other.elements.begin(),
                    other.elements.end(), haveSameTexts);
}

// Whether the section says the same when it is read again. Texts may look as if they were in
// another code page than the one they are in, and one more may make all of them look so.
bool readsBack(const Section& section) {
  PropertySet set;
  set.classId.assign(16, '\0');
  set.sections.push_back(section);
  const std::string bytes = written(set);
  PropertySet again =
      readPropertySet({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
  readTexts(again);
  const Section& other = again.sections.front();
  return std::equal(section.properties.begin(), section.properties.end(), other.properties.begin(),
                    other.properties.end(),
                    [](const Property& a, const Property& b) {
                      return a.id == b.id && haveSameTexts(a.value, b.value);
                    }) &&
         std::equal(section.dictionary.begin(), section.dictionary.end(), other.dictionary.begin(),
                    other.dictionary.end(),
                    [](const auto& a, const auto& b) { return a.name == b.name; });
}

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isSameName(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

std::optional<uint32_t> idOf(const Section& section, std::string_view name) {
  const auto found =
      std::find_if(section.dictionary.begin(), section.dictionary.end(),
                   [&](const DictionaryEntry& entry) { return isSameName(entry.name, name); });
  if (found == section.dictionary.end()) return std::nullopt;
  return found->id;
}

uint32_t freeId(const Section& section) {
  std::set<uint32_t> taken;
  for (const Property& property : section.properties) taken.insert(property.id & ~kLinkBit);
  for (const DictionaryEntry& entry : section.dictionary) taken.insert(entry.id & ~kLinkBit);
  uint32_t id = kFirstId;
  while (taken.count(id) != 0) ++id;
  return id;
}

void placeValue(Section& section, uint32_t id, Value value) {
  Property property;
  property.id = id;
  property.value = std::move(value);
  const auto found = std::find_if(section.properties.begin(), section.properties.end(),
                                  [&](const Property& other) { return other.id == id; });
  if (found == section.properties.end()) {
    section.properties.push_back(std::move(property));
    return;
  }
  property.name = found->name;
  *found = std::move(property);
}

// False, and the section as it was: the text cannot stand there so that it is read back.
template <typename Place>
bool placeText(Section& section, const std::string& text, Place place) {
  const Section before = section;
  if (makeRoomFor(text, section)) {
    place();
    if (readsBack(section)) return true;
    section = before;
  }
  if (!canMoveTo(kUtf8Page, section)) return false;
  moveTo(kUtf8Page, section);
  place();
  if (readsBack(section)) return true;
  section = before;
  return false;
}

// A name has to stand in the code page, unlike a value.
uint32_t nameProperty(Section& section, const std::string& name) {
  const uint32_t id = freeId(section);
  const bool isPlaced = placeText(section, name, [&] {
    section.dictionary.push_back({id, terminatedText(section.codePage, name).value(), name});
  });
  if (!isPlaced)
    throw UnwritableName("the name " + name + " cannot be written beside the texts that are there");
  return id;
}

}  // namespace

PropertySet newPropertySet(std::string_view format) {
  PropertySet set;
  set.system = kSystem;
  set.classId.assign(16, '\0');
  sectionOf(set, format);
  return set;
}

Section& sectionOf(PropertySet& set, std::string_view format) {
  if (Section* const found = set.find(format)) return *found;
  Section section;
  section.format = format;
  set.sections.push_back(std::move(section));
  return set.sections.back();
}

Value textValue(std::string_view utf8) {
  Value value;
  value.type = kLpstr;
  value.text = utf8;
  return value;
}

void setProperty(Section& section, uint32_t id, Value value) {
  if (value.type != kLpstr) return placeValue(section, id, std::move(value));
  const bool isPlaced = placeText(section, value.text, [&] {
    encode(value, section.codePage);
    placeValue(section, id, value);
  });
  if (isPlaced) return;
  value.type = kLpwstr;
  value.bytes = terminatedText(kUtf16Page, value.text).value();
  placeValue(section, id, std::move(value));
}

bool removeProperty(Section& section, uint32_t id) {
  return std::erase_if(section.properties,
                       [&](const Property& property) { return property.id == id; }) != 0;
}

void setCustomProperty(PropertySet& documentSummary, const std::string& name, Value value) {
  Section& section = sectionOf(documentSummary, kUserDefinedFormat);
  const std::optional<uint32_t> known = idOf(section, name);
  const uint32_t id = known ? *known : nameProperty(section, name);
  removeProperty(section, id | kLinkBit);
  setProperty(section, id, std::move(value));
  for (Property& property : section.properties)
    if (property.id == id) property.name = name;
}

bool removeCustomProperty(PropertySet& documentSummary, const std::string& name) {
  Section* const section = documentSummary.find(kUserDefinedFormat);
  if (section == nullptr) return false;
  const std::optional<uint32_t> id = idOf(*section, name);
  if (!id) return false;
  std::erase_if(section->dictionary, [&](const DictionaryEntry& entry) { return entry.id == *id; });
  removeProperty(*section, *id | kLinkBit);
  removeProperty(*section, *id);
  return true;
}

}  // namespace ksv_kit::properties
