// What is to be known of a charset, besides how to convert it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/charsets/charset_names.h"

namespace ksv_kit {

// The names and the number that registries give a charset of the directory.
struct RegistryEntry {
  const char* charset;
  const char* mimeName;
  const char* webName;
  uint32_t codePage;
};
// Null when none has it.
const RegistryEntry* registryEntryOf(std::string_view charset);

// The characters that a charset has.
struct Repertoire {
  std::vector<uint32_t> ranges;   // first and last of each, ascending
  uint32_t longestCharacter = 0;  // bytes, without what switches between sets

  bool has(uint32_t character) const;
};

// Asks the engine for every character: a few tenths of a second.
Repertoire repertoireOf(const CharsetChoice& charset);

}  // namespace ksv_kit
