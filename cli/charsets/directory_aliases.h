// The aliases that a charset directory brings.
#pragma once

#include <string>

#include "kit/charsets/alias_file.h"

namespace ksv_cli {

// A directory need not have the file. Throws UnreadableFile.
ksv_kit::AliasFile directoryAliases(const std::string& directory);

}  // namespace ksv_cli
