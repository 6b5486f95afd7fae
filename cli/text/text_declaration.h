// The charset that a text says it is in.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksv_cli {

// What the XML declaration names that the text begins with, or the first meta element of
// HTML that names a charset. beginning: the first bytes of the text; behind them nobody
// looks for one.
std::optional<std::string> declaredCharset(std::string_view beginning);

}  // namespace ksv_cli
