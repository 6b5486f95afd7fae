#include "tests/kit/documents/properties/made_set.h"

#include <gtest/gtest.h>

#include "kit/documents/properties/code_page_text.h"

namespace ksv_kit::properties {

using ksv::test::dwords;

ksv::test::Property typed(uint32_t id, uint32_t type, std::string_view bytes) {
  return {id, dwords({type}) + std::string(bytes)};
}

std::string counted(std::string_view bytes) {
  return dwords({static_cast<uint32_t>(bytes.size())}) + std::string(bytes);
}

std::string countedUnits(std::u16string_view units) {
  return dwords({static_cast<uint32_t>(units.size())}) + ksv::test::words(units);
}

ksv::test::Property dictionary(std::initializer_list<std::pair<uint32_t, std::string_view>> names) {
  std::string bytes = dwords({static_cast<uint32_t>(names.size())});
  for (const auto& [id, name] : names) {
    bytes += dwords({id, static_cast<uint32_t>(name.size() + 1)});
    bytes += name;
    bytes += '\0';
  }
  return {kDictionaryId, bytes};
}

PropertySet readSummary(const std::vector<ksv::test::Property>& properties) {
  PropertySet set = readPropertySet(bytesOf(ksv::test::summary(properties)));
  readTexts(set);
  return set;
}

const Property& propertyOf(const PropertySet& set, uint32_t id) {
  static const Property none;
  const Property* const found = set.sections.empty() ? nullptr : set.sections[0].find(id);
  EXPECT_NE(found, nullptr) << id;
  return found == nullptr ? none : *found;
}

const std::string& textOf(const PropertySet& set, uint32_t id) {
  return propertyOf(set, id).value.text;
}

std::vector<std::string> notesOf(const PropertySet& set, uint32_t id) {
  return propertyOf(set, id).notes;
}

}  // namespace ksv_kit::properties
