// Texts of property sets, which stand in the code page that a section declares - or in another one,
// which is noticed where the bytes say so clearly.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "kit/documents/properties/property_set.h"

namespace ksv_kit::properties {

// The charset of a code page; empty: the directory has none. Throws UnusableEngine.
std::string charsetOf(uint16_t codePage);

// Fills in all texts of the set and the names of its dictionaries as UTF-8. What is no text of the
// code page is shown as U+FFFD; each property tells in a note what was read otherwise than it is
// declared. Throws UnusableEngine.
void readTexts(PropertySet& set);

// The bytes of a text in a code page; none when that cannot hold it.
std::optional<std::string> encodedText(uint16_t codePage, std::string_view utf8);
// The same with the terminator of texts behind it.
std::optional<std::string> terminatedText(uint16_t codePage, std::string_view utf8);

}  // namespace ksv_kit::properties
