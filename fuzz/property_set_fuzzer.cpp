// A property set of any bytes: it is read without end in sight, texts are UTF-8, what is written of
// it reads back the same, and what is changed in it says what it was told to.
//
// Input: a code page to be set, or 0; the bytes of the set.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/support.h"
#include "kit/documents/properties/code_page_text.h"
#include "kit/documents/properties/property_changes.h"
#include "kit/documents/properties/property_set.h"
#include "kit/documents/properties/property_set_writer.h"
#include "kit/text/unicode_check.h"
#include "tests/system/system.h"

namespace {

using namespace ksv_kit::properties;
using ksv_fuzz::require;

constexpr char kText[] = "\u8868 \u00E9\u00DF a";

Bytes bytesOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

bool isUtf8(const std::string& text) {
  const auto* const bytes = reinterpret_cast<const uint8_t*>(text.data());
  return ksv_kit::scanUnicode(ksv_kit::UnicodeForm::kUtf8, false, bytes, text.size()).end ==
         ksv_kit::ScanEnd::kAll;
}

void checkTexts(const Value& value) {
  require(isUtf8(value.text), "texts are UTF-8");
  for (const Value& element : value.elements) checkTexts(element);
}

// How far texts in vectors are filled up is told by what follows them.
bool isReadAlone(const Value& value) {
  return layoutOf(value.baseType()) != Layout::kUnknown && value.elements.empty();
}

void checkReadBack(const PropertySet& set) {
  const PropertySet again = readPropertySet(bytesOf(written(set)));
  require(again.sections.size() == set.sections.size(), "there are as many sections");
  for (size_t i = 0; i < set.sections.size(); ++i) {
    const Section& before = set.sections[i];
    const Section& after = again.sections[i];
    require(before.format == after.format, "a section keeps its format");
    require(before.dictionary.size() == after.dictionary.size(), "names stay");
    for (const Property& property : before.properties) {
      const Property* const found = after.find(property.id);
      if (!isReadAlone(property.value)) continue;
      require(found != nullptr, "a property stays");
      require(found->value.bytes == property.value.bytes, "a value stays");
    }
  }
}

void checkChanges(PropertySet set) {
  try {
    setProperty(sectionOf(set, kSummaryFormat), 2, textValue(kText));
    setProperty(sectionOf(set, kSummaryFormat), 14, numberValue(kI4, 77));
    setCustomProperty(set, "Name \u00E9", textValue(kText));
  } catch (const UnwritableName&) {
    return;
  }
  PropertySet again = readPropertySet(bytesOf(written(set)));
  readTexts(again);
  const Section* const summary = again.find(kSummaryFormat);
  require(summary != nullptr, "the section is there");
  const Property* const title = summary->find(2);
  require(title != nullptr && title->value.text == kText, "a text is what it was set to");
  const Property* const pages = summary->find(14);
  require(pages != nullptr && signedOf(pages->value) == 77, "a number is what it was set to");
  removeCustomProperty(set, "name \u00E9");
  removeProperty(sectionOf(set, kSummaryFormat), 2);
  require(readPropertySet(bytesOf(written(set))).find(kSummaryFormat)->find(2) == nullptr,
          "what is removed is gone");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool isSet = [] {
    ksv::test::setVariable("Charsetpath", KSV_FUZZ_CHARSET_DIRECTORY);
    return true;
  }();
  require(isSet, "the charset directory is known");
  ksv_fuzz::Input input(data, size);
  const uint16_t page = input.word();
  PropertySet set = readPropertySet(bytesOf(input.rest()));
  if (page != 0)
    for (Section& section : set.sections) section.codePage = page;
  readTexts(set);
  for (const Section& section : set.sections)
    for (const Property& property : section.properties) {
      checkTexts(property.value);
      require(isUtf8(property.name), "names are UTF-8");
    }
  // Of damaged ones each writing leaves out what could not be read.
  if (page != 0) return 0;
  for (const DamageNote& damage : set.damages)
    if (losesSomething(damage.kind) || damage.kind == Damage::kUnknownType) return 0;
  checkReadBack(set);
  checkChanges(std::move(set));
  return 0;
}
