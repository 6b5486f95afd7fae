// What can be written in the place of a character that a charset lacks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ksv_kit {

// Texts that look like the character, the nearest first, as UTF-8; none for most characters. The
// caller takes the first that the target has. An empty text says that the character, which cannot
// be seen, may be left out.
std::vector<std::string> lookAlikes(uint32_t character);

}  // namespace ksv_kit
