// What bytes mean in a charset, asked of the engine.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace ksv_kit::judge {

using Bytes = std::span<const uint8_t>;

// The characters of the text; none when it is not wholly of the charset, or the directory does not
// have it. mayEndInside: up to three bytes at the end may be left over. Throws UnusableEngine.
std::optional<std::u16string> decodeSound(const char* charset, Bytes text, bool mayEndInside);

// The same of a damaged text: U+FFFD stands for what is none.
std::optional<std::u16string> decodeDamaged(const char* charset, Bytes text);

// What each byte of a charset of single bytes is; kNoCharacter where it is none. Null when the
// directory does not have it.
using ByteTable = std::array<char16_t, 256>;
inline constexpr char16_t kNoCharacter = 0xFFFF;
const ByteTable* byteTable(const char* charset);
// Whether every character of a charset with this table is one byte: leads of others are none.
bool isOfSingleBytes(const ByteTable& table);

}  // namespace ksv_kit::judge
