// The properties that documents of all kinds have, by the names that people know.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "kit/documents/properties/value.h"

namespace ksv_kit::properties {

inline constexpr std::string_view kSummaryFormat(
    "\xE0\x85\x9F\xF2\xF9\x4F\x68\x10\xAB\x91\x08\x00\x2B\x27\xB3\xD9", 16);
inline constexpr std::string_view kDocumentSummaryFormat(
    "\x02\xD5\xCD\xD5\x9C\x2E\x1B\x10\x93\x97\x08\x00\x2B\x2C\xF9\xAE", 16);
inline constexpr std::string_view kUserDefinedFormat(
    "\x05\xD5\xCD\xD5\x9C\x2E\x1B\x10\x93\x97\x08\x00\x2B\x2C\xF9\xAE", 16);
// Where the sections stand; the third is the second section of the second stream.
inline constexpr char16_t kSummaryStream[] = u"\u0005SummaryInformation";
inline constexpr char16_t kDocumentSummaryStream[] = u"\u0005DocumentSummaryInformation";

enum class Meaning { kAsTyped, kDuration, kThumbnail, kSecurity, kPacked };

struct KnownProperty {
  const char* key;    // "lastSavedBy"
  const char* label;  // "Last saved by"
  bool isOfSummary;   // of the first stream, else of the second
  uint32_t id;
  uint16_t type;  // the one that it has in documents
  Meaning meaning = Meaning::kAsTyped;
};

// In the order in which a person reads them.
std::span<const KnownProperty> knownProperties();

// Null when none has it.
const KnownProperty* knownProperty(std::string_view key);
const KnownProperty* knownProperty(std::string_view format, uint32_t id);

// "summary", "documentSummary", "userDefined"; empty for other formats.
const char* formatName(std::string_view format);

}  // namespace ksv_kit::properties
