// Bytes as text for JSON, which has none of its own for them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksv_cli {

// The standard alphabet, with padding and without line ends.
std::string base64(std::string_view bytes);

// The bytes that were written so; none where the text is not.
std::optional<std::string> fromBase64(std::string_view text);

}  // namespace ksv_cli
