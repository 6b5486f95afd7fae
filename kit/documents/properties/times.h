// Times of properties as ISO 8601 writes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ksv_kit::properties {

// Of a FILETIME: steps of 100 nanoseconds since 1601, in UTC: "2024-02-29T12:34:56Z",
// "2024-02-29T12:34:56.1234567Z". Empty beyond the year 9999.
std::string isoTime(uint64_t fileTime);
// Of a length of time in the same steps: "PT1H23M45S", "PT0.0000001S".
std::string isoDuration(uint64_t steps);
// Of a DATE: days since the end of 1899, of no zone: "2024-02-29T12:34:56". Empty for what the type
// does not have.
std::string isoDate(double days);

// The reverse of the first; "2024-02-29" and times with an offset as well. None when it is no such
// time.
std::optional<uint64_t> fileTimeOf(std::string_view text);

}  // namespace ksv_kit::properties
