// The rule base as a packed charset directory has it, without reading its rule files.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cconv/rules/packed_charsets.h"

namespace ksv {

// Whether nothing stands in the directory, by the names of its rule files, that goes before what
// is packed.
bool isAsPacked(const std::vector<std::string>& names, const PackedCharsets& packed);

// The names, and those of the packed files, each once and in ascending order.
std::vector<std::string> withPackedNames(std::vector<std::string> names,
                                         const PackedCharsets& packed);

// Adds what loading all packed rule files, in the order of their names, would add, each charset to
// be made when it is asked for. Returns how many charsets those are. May throw std::bad_alloc.
size_t loadPackedRules(const PackedCharsets& packed);

}  // namespace ksv
