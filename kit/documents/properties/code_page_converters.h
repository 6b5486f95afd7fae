// Converters between charsets and UTF-8, which are made once a process for each charset that a
// document asks for.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ksv_kit::properties {

struct DecodedText {
  std::string text;     // UTF-8
  bool isSound = true;  // else U+FFFD stands for what is no text
};
bool isUtf8(std::string_view bytes);

// charset: one of the directory. Throws UnusableEngine.
DecodedText decodedText(const std::string& charset, std::string_view bytes);

// None where the charset lacks a character, or cannot be written.
std::optional<std::string> encodedIn(const std::string& charset, std::string_view utf8);

}  // namespace ksv_kit::properties
