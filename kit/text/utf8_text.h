// Single characters as UTF-8.
#pragma once

#include <cstdint>
#include <string>

namespace ksv_kit {

inline void appendUtf8(std::string& text, uint32_t character) {
  const auto continuation = [](uint32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    text += continuation(character);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    text += continuation(character >> 6);
    text += continuation(character);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    text += continuation(character >> 12);
    text += continuation(character >> 6);
    text += continuation(character);
  }
}

inline std::string utf8Of(uint32_t character) {
  std::string text;
  appendUtf8(text, character);
  return text;
}

}  // namespace ksv_kit
