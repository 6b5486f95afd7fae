// Moments as text, in the form of RFC 3339 and in UTC.
#pragma once

#include <string>

#include "cli/system/files.h"

namespace ksv_cli {

// When a file was written to last: "2026-11-22T20:47:11.123456789Z".
std::string modificationMoment(const platform::FileFacts& facts);

// To the second.
std::string presentMoment();

}  // namespace ksv_cli
