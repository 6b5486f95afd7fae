// Strict UTF-8 and UTF-16, and the limits of paths in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ksv {

// What decodeUtf8 gives for bytes that are no character.
inline constexpr char32_t kIllFormed = 0xFFFFFFFF;

// Takes one character off text, which is not empty. Overlong forms, surrogates
// and values above U+10FFFF are ill-formed: one byte is taken then.
char32_t decodeUtf8(std::string_view& text);

// How many UTF-16 units text has; none when it is not well-formed.
std::optional<size_t> utf16Length(std::string_view text);

// Convert a string, terminator included, into a buffer of so many units. False
// when the string is not well-formed or does not fit; dest is then half written.
bool utf8ToUtf16(const char* source, uint16_t* dest, size_t capacity);
bool utf16ToUtf8(const uint16_t* source, char* dest, size_t capacity);

// Copies text and a terminator into a buffer of so many bytes. When it does not
// fit dest becomes the empty string, if there is room for that, and the result is
// false.
bool copyText(std::string_view text, char* dest, size_t capacity);

// Whether path may be handed to the system: well-formed, and short enough. Null
// is an empty path.
bool isUsablePath(const char* path);

}  // namespace ksv
