// What is wrong with a text, in words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/system/failure.h"

namespace ksv_cli {

// " at byte offset N"
std::string atOffset(uint64_t offset);

// byte: the first bad one, when there is one to show.
Failure invalidText(const std::string& charset, std::optional<uint8_t> byte, uint64_t offset);
Failure truncatedText(const std::string& charset, uint64_t offset);

}  // namespace ksv_cli
