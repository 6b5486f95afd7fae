#include "cli/system/base64.h"

#include <algorithm>
#include <cstdint>

namespace ksv_cli {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string base64(std::string_view bytes) {
  std::string text;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    const size_t count = std::min<size_t>(3, bytes.size() - at);
    uint32_t group = 0;
    for (size_t i = 0; i < 3; ++i)
      group = group << 8 | (i < count ? static_cast<uint8_t>(bytes[at + i]) : 0u);
    for (size_t i = 0; i < 4; ++i) text += i <= count ? kDigits[group >> (18 - 6 * i) & 0x3F] : '=';
  }
  return text;
}

std::optional<std::string> fromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  while (text.ends_with('=')) text.remove_suffix(1);
  std::string bytes;
  uint32_t group = 0;
  size_t bits = 0;
  for (const char digit : text) {
    const size_t value = kDigits.find(digit);
    if (value == kDigits.npos) return std::nullopt;
    group = group << 6 | static_cast<uint32_t>(value);
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes += static_cast<char>(group >> bits & 0xFF);
  }
  return bytes;
}

}  // namespace ksv_cli
