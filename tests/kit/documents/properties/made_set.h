// Property sets that tests make byte by byte.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "kit/documents/properties/property_set.h"
#include "tests/ole/compound_writer.h"
#include "tests/ole/property_set_writer.h"

namespace ksv_kit::properties {

inline Bytes bytesOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// A property with the type and the bytes behind it.
ksv::test::Property typed(uint32_t id, uint32_t type, std::string_view bytes);

// Bytes with a terminator or without, as LPSTR and BSTR have them: behind their number.
std::string counted(std::string_view bytes);
// The same of UTF-16.
std::string countedUnits(std::u16string_view units);

// A dictionary, in a code page of bytes.
ksv::test::Property dictionary(std::initializer_list<std::pair<uint32_t, std::string_view>> names);

// A set with the section, of summaries' format, read with its texts.
PropertySet readSummary(const std::vector<ksv::test::Property>& properties);

// The property with the id in the first section.
const Property& propertyOf(const PropertySet& set, uint32_t id);
const std::string& textOf(const PropertySet& set, uint32_t id);
std::vector<std::string> notesOf(const PropertySet& set, uint32_t id);

}  // namespace ksv_kit::properties
