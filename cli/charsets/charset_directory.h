// Where the charset directory is that the library loads.
#pragma once

#include <optional>
#include <string>

namespace ksv_cli {

// Without a separator at its end. None when no setting names one and none is installed.
std::optional<std::string> charsetDirectory();

}  // namespace ksv_cli
