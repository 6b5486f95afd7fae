#include "cli/system/escapes.h"

#include <cstdint>
#include <cstdio>

#include "cli/system/paths.h"

namespace ksv_cli {
namespace {

std::string hexadecimal(const char* format, uint8_t value) {
  char text[16];
  std::snprintf(text, sizeof text, format, unsigned{value});
  return text;
}

std::string escapeOf(char c) {
  switch (c) {
    case '\t':
      return "\\t";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    default:
      return hexadecimal("\\x%02X", static_cast<uint8_t>(c));
  }
}

// U+0080 to U+009F are C2 80 to C2 9F.
bool isLateControl(std::string_view text) {
  if (text.size() < 2 || text[0] != '\xC2') return false;
  const auto second = static_cast<uint8_t>(text[1]);
  return second >= 0x80 && second < 0xA0;
}

}  // namespace

std::string escaped(std::string_view text, Backslash backslash) {
  std::string shown;
  for (size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (isAsciiControl(c)) {
      shown += escapeOf(c);
    } else if (isLateControl(text.substr(at))) {
      shown += hexadecimal("\\u00%02X", static_cast<uint8_t>(text[++at]));
    } else {
      shown += c;
      if (c == '\\' && backslash == Backslash::kIsDoubled) shown += c;
    }
  }
  return shown;
}

std::string shownName(const std::string& name) {
  return escaped(name, platform::backslashSeparates() ? Backslash::kStays : Backslash::kIsDoubled);
}

}  // namespace ksv_cli
