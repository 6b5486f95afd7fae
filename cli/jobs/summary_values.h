// The properties of documents as values of JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace ksv_cli {

enum class ValueType { kText, kNumber, kTime };

// A number as a number, a time as RFC 3339 has it. What is neither stays the text that
// it is.
nlohmann::ordered_json valueOf(const std::string& text, ValueType type);

// Of "2024-02-29 12:34:56", in UTC, as documents keep their times. An hour that was
// rounded up into the next day may have left a day beyond its month, which is carried.
// Empty for what is no time of the calendar.
std::string rfc3339(const std::string& text);

}  // namespace ksv_cli
