// Formats that come from outside.
#pragma once

#include <cstdint>
#include <cstdio>

namespace ksv {

// fprintf with one argument, for a format that may hold anything: what one integer
// cannot serve is written as it stands. ksv_logfprintf says it exactly.
void printFormat(std::FILE* stream, const char* format, int32_t argument);

}  // namespace ksv
