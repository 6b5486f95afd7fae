// What kind of character a number is, for reports.
#pragma once

#include <cstdint>
#include <string_view>

namespace ksv_kit {

// "control", "format", "surrogate", "private use", "noncharacter", "unassigned", "variation
// selector", "emoji" (shown in colour of itself), "half-width", "full-width", "combining mark",
// "CJK ideograph", "compatibility ideograph", "hiragana", "katakana", "Hangul", "letter", "number",
// "punctuation", "symbol" or "space", as Unicode 15.0 has it; "no character" above U+10FFFF.
std::string_view classOf(uint32_t character);

// Whether Unicode decomposes the character to others in a circle.
bool isCircled(uint32_t character);

}  // namespace ksv_kit
