// Writes property sets.
#pragma once

#include <string>

#include "kit/documents/properties/property_set.h"

namespace ksv_kit::properties {

// The type, the value, and what fills it up to four bytes.
std::string writtenValue(const Value& value, uint16_t codePage);

// The stream of the set. A property that stands in it as it was read has the same bytes again.
std::string written(const PropertySet& set);

}  // namespace ksv_kit::properties
