// Directories as the library itself reads them: UTF-8 on every system.
#pragma once

#include <string>
#include <vector>

#include "common/platform.h"

namespace ksv {

// The names that the last component of pattern stands for, which may have wild
// cards, in ascending byte order. The wild cards are those of wildcard.h on every system,
// so that a charset directory holds the same rule files. May throw std::bad_alloc.
// The error says whether names may be missing, and why; 0 where there is no such directory.
std::vector<std::string> matchingNames(const char* pattern, platform::SystemError* error = nullptr);

}  // namespace ksv
