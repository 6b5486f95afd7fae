// Moments as text, in the form of RFC 3339 and in UTC.
#pragma once

#include <cstdint>
#include <string>

namespace ksv_cli {

// "2026-11-22T20:47:11.123456789Z"
std::string momentWithNanoseconds(int64_t sinceEpoch);

// To the second.
std::string presentMoment();

}  // namespace ksv_cli
