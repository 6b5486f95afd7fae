#include "cli/system/base64.h"

#include <algorithm>
#include <cstdint>

namespace ksv_cli {

std::string base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
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

}  // namespace ksv_cli
