// Directories as the library itself reads them: UTF-8 on every system.
#pragma once

#include <string>
#include <vector>

namespace ksv {

// The names that the last component of pattern stands for, which may have wild
// cards, in ascending byte order. The wild cards are those of wildcard.h on every system,
// so that a charset directory holds the same rule files. May throw std::bad_alloc.
std::vector<std::string> matchingNames(const char* pattern);

}  // namespace ksv
