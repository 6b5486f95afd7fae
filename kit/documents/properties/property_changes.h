// Changes properties in sets that were read, texts and all, or that are new.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "kit/documents/properties/known_properties.h"
#include "kit/documents/properties/property_set.h"

namespace ksv_kit::properties {

// A name cannot be written in the code page of a section, which cannot be changed either.
class UnwritableName : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A set with one section without properties.
PropertySet newPropertySet(std::string_view format);

// Sets a property of a section. Of a text (kLpstr) the value has no more than that. It is written
// in the code page of the section, where that has all its characters; else all texts of the section
// become UTF-8; and where one of them cannot be, since nobody knows what it says, the new text
// stands as UTF-16 beside them.
void setProperty(Section& section, uint32_t id, Value value);
// False: there is none.
bool removeProperty(Section& section, uint32_t id);

// The same of properties that the dictionary of the section for users' own names. The case of ASCII
// in names counts for nothing.
void setCustomProperty(PropertySet& documentSummary, const std::string& name, Value value);
bool removeCustomProperty(PropertySet& documentSummary, const std::string& name);

// The section of a format; added behind the others, if there is none.
Section& sectionOf(PropertySet& set, std::string_view format);

// A text, as setProperty() takes it.
Value textValue(std::string_view utf8);

}  // namespace ksv_kit::properties
