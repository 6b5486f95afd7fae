// Values of properties as a reader sees them, and as values of JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "kit/documents/properties/known_properties.h"
#include "kit/documents/properties/property_set.h"

namespace ksv_cli {

namespace properties = ksv_kit::properties;

// Texts with LF for their line ends. Numbers and booleans as such, times and dates as ISO 8601 has
// them, decimals as texts, so that nothing is rounded; vectors as arrays; bytes as an object with
// their base64.
nlohmann::ordered_json valueOf(const properties::Value& value);
// The same by what the property is known for: lengths of time, thumbnails without their bytes, who
// may do what. Null: there is nothing that people would want to see.
nlohmann::ordered_json valueOf(const properties::Value& value,
                               const properties::KnownProperty& known);

// What stands in a line: texts as they are, several with commas between.
std::string inWords(const nlohmann::ordered_json& value);

}  // namespace ksv_cli
