// Documents of newer formats, which are archives.
#pragma once

#include <optional>
#include <string>

namespace ksv_cli {

// "a zipped Word document": what the archive at path is; none when it is no archive, or one of
// something else. Throws Failure when it cannot be read.
std::optional<std::string> zippedDocument(const std::string& path);

}  // namespace ksv_cli
