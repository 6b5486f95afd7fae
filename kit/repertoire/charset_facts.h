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
const RegistryEntry* registryEntryOfCodePage(uint32_t codePage);

// A charset with what its names say of it.
struct NamedCharset {
  CharsetListing listing;
  CharsetChoice choice;  // as it is written, if it can be
  const RegistryEntry* registered = nullptr;

  bool canBeWritten() const { return !listing.sourceOnly; }
  bool isStateful() const { return choice.kind != CharsetKind::kCharset; }
  // Null, and 0, where there is none.
  const char* mimeName() const { return registered == nullptr ? nullptr : registered->mimeName; }
  const char* webName() const { return registered == nullptr ? nullptr : registered->webName; }
  uint32_t codePage() const { return registered == nullptr ? 0 : registered->codePage; }
};

// All of them, in the order of the list.
std::vector<NamedCharset> namedCharsets(const CharsetNames& names);

// The one of any of its names, as it is written, if it can be.
std::optional<CharsetChoice> findWrittenOrRead(const CharsetNames& names, std::string_view name);

// The characters that a charset has.
struct Repertoire {
  std::vector<uint32_t> ranges;   // first and last of each, ascending
  uint32_t longestCharacter = 0;  // bytes, without what switches between sets

  bool has(uint32_t character) const;
};

// Asks the engine for every character: a few tenths of a second.
Repertoire repertoireOf(const CharsetChoice& charset);

}  // namespace ksv_kit
