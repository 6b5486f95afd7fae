// Characters of UTF-8 that is known to be well formed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ksv_kit {

// The bytes of the character that this one begins.
constexpr size_t utf8LengthOf(char lead) {
  const auto byte = static_cast<uint8_t>(lead);
  return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

// The character at the beginning of a text that is not empty.
constexpr char32_t firstCharacter(std::string_view text) {
  const size_t length = utf8LengthOf(text[0]);
  const auto lead = static_cast<uint8_t>(text[0]);
  char32_t character = length == 1 ? lead : lead & (0xFFU >> (length + 1));
  for (size_t at = 1; at < length; ++at) {
    character = character << 6 | (static_cast<uint8_t>(text[at]) & 0x3FU);
  }
  return character;
}

// Where the last character of a text that is not empty begins.
constexpr size_t lastCharacterAt(std::string_view text) {
  size_t at = text.size() - 1;
  while ((static_cast<uint8_t>(text[at]) & 0xC0) == 0x80) --at;
  return at;
}

inline void appendUtf8(char32_t character, std::string& text) {
  const auto continuation = [character](int shift) {
    return static_cast<char>(0x80 | (character >> shift & 0x3F));
  };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += {static_cast<char>(0xC0 | character >> 6), continuation(0)};
  } else if (character < 0x10000) {
    text += {static_cast<char>(0xE0 | character >> 12), continuation(6), continuation(0)};
  } else {
    text += {static_cast<char>(0xF0 | character >> 18), continuation(12), continuation(6),
             continuation(0)};
  }
}

inline std::string utf8Of(char32_t character) {
  std::string text;
  appendUtf8(character, text);
  return text;
}

inline std::string utf8Of(std::u32string_view characters) {
  std::string text;
  for (const char32_t character : characters) appendUtf8(character, text);
  return text;
}

inline std::u32string charactersOf(std::string_view text) {
  std::u32string characters;
  for (; !text.empty(); text.remove_prefix(utf8LengthOf(text[0]))) {
    characters += firstCharacter(text);
  }
  return characters;
}

}  // namespace ksv_kit
