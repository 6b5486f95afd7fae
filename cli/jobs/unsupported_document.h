// Documents that are sound, and yet cannot be read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/system/failure.h"

namespace ksv_cli {

// What the reader of documents is not made for, and the file at path has; none when a
// file that cannot be read is damaged.
std::optional<Failure> unsupportedFile(const std::string& path);

// The same of a stream of so many bytes in it.
std::optional<Failure> unsupportedStream(const std::string& path, uint32_t size);

}  // namespace ksv_cli
