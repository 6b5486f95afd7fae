// Bytes as text for JSON, which has none of its own for them.
#pragma once

#include <string>
#include <string_view>

namespace ksv_cli {

// The standard alphabet, with padding and without line ends.
std::string base64(std::string_view bytes);

}  // namespace ksv_cli
