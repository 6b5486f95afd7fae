// Wild cards in file names.
#pragma once

#include <string_view>

namespace ksv {

bool hasWildcard(std::string_view pattern);

// Whether name is one that pattern stands for: '*' is any characters, none
// included, '?' is one, everything else is itself. A byte that is no UTF-8
// character counts as one.
bool matchesWildcard(std::string_view pattern, std::string_view name);

}  // namespace ksv
