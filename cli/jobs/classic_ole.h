// What 'ksv ole' has always shown: documents as the described calls read them, within their limits.
#pragma once

#include <string>

namespace ksv_cli {

// Both return the exit status, and throw Failure.
int listClassically(const std::string& input, bool asJson);
int catClassically(const std::string& input, const std::string& path);

}  // namespace ksv_cli
