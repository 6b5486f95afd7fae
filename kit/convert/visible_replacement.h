// What is written for characters that a charset lacks.
#pragma once

#include <string>

#include "ksv_cconv.h"

namespace ksv_kit {

// The library's own replacement for wide characters is a wide one, and a charset without it
// gets nothing for them. There it becomes the narrow one, a question mark.
void makeReplacementVisible(const std::string& targetCharset, ConvertOptions& options);

}  // namespace ksv_kit
