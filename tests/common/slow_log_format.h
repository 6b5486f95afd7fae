// What a format of a log prints, character by character and by the C library's own family.
#pragma once

#include <cstdint>
#include <string>

namespace ksv::test {

// One conversion by the C library, its argument as wide as the format has it.
std::string printedByLibrary(const std::string& conversion, int32_t argument);

// What is printed of a format that may hold anything.
std::string slowFormat(const std::string& format, int32_t argument);

}  // namespace ksv::test
