#include "kit/documents/entry_names.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "common/utf16.h"
#include "common/utf8.h"

namespace ksv_kit::documents {
namespace {

struct UpperCaseRow {
  uint16_t first;
  uint16_t last;
  uint16_t step;
  int32_t change;
};

constexpr UpperCaseRow kUpperCase[] = {
#include "kit/documents/upper_case.inc"
};

void appendUtf8(std::string& text, uint32_t character) {
  const auto append = [&](uint32_t value) { text.push_back(static_cast<char>(value)); };
  if (character < 0x80) return append(character);
  if (character < 0x800) {
    append(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      append(0xE0 | character >> 12);
    } else {
      append(0xF0 | character >> 18);
      append(0x80 | (character >> 12 & 0x3F));
    }
    append(0x80 | (character >> 6 & 0x3F));
  }
  append(0x80 | (character & 0x3F));
}

void appendEscape(std::string& text, char16_t unit) {
  char escape[8];
  std::snprintf(escape, sizeof escape, unit < 0x100 ? "\\x%02X" : "\\u%04X", unsigned{unit});
  text += escape;
}

bool turnsDirection(char16_t unit) {
  return unit == 0x61C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069);
}

bool isShown(char16_t unit) {
  const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
  const bool endsLine = unit == 0x2028 || unit == 0x2029;
  const bool isNone = unit == 0xFEFF || unit >= 0xFFFE;
  return !isControl && !endsLine && !isNone && !turnsDirection(unit) && unit != '/' &&
         unit != '\\' && !ksv::isSurrogate(unit);
}

std::optional<uint32_t> hexadecimal(std::string_view digits) {
  uint32_t value = 0;
  for (const char digit : digits) {
    const bool isNumber = digit >= '0' && digit <= '9';
    const char letter = static_cast<char>(digit | 0x20);
    if (!isNumber && (letter < 'a' || letter > 'f')) return std::nullopt;
    value = value << 4 | static_cast<uint32_t>(isNumber ? digit - '0' : letter - 'a' + 10);
  }
  return value;
}

// Takes an escape from the front of a text.
std::optional<char16_t> takeEscape(std::string_view& text) {
  if (text.size() < 2 || (text[1] != 'x' && text[1] != 'u')) return std::nullopt;
  const size_t digits = text[1] == 'x' ? 2 : 4;
  if (text.size() < 2 + digits) return std::nullopt;
  const std::optional<uint32_t> unit = hexadecimal(text.substr(2, digits));
  if (!unit) return std::nullopt;
  text.remove_prefix(2 + digits);
  return static_cast<char16_t>(*unit);
}

// Takes a character of UTF-8 from the front of a text.
std::optional<uint32_t> takeCharacter(std::string_view& text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  const size_t length = lead < 0x80 ? 1 : ksv::utf8Length(lead);
  if (length > 4 || length > text.size() || (length == 1 && lead >= 0x80)) return std::nullopt;
  uint32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
  for (size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<uint8_t>(text[i]);
    if (!ksv::isUtf8Continuation(byte)) return std::nullopt;
    character = character << 6 | (byte & 0x3F);
  }
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  if (length == 0 || character < kLeast[length] || character > ksv::kHighestScalar ||
      ksv::isSurrogate(character))
    return std::nullopt;
  text.remove_prefix(length);
  return character;
}

void appendUtf16(std::u16string& name, uint32_t character) {
  if (character < 0x10000) return name.push_back(static_cast<char16_t>(character));
  name.push_back(static_cast<char16_t>(ksv::highSurrogateOf(character)));
  name.push_back(static_cast<char16_t>(ksv::lowSurrogateOf(character)));
}

}  // namespace

char16_t upperCase(char16_t unit) {
  const UpperCaseRow* row = std::lower_bound(
      std::begin(kUpperCase), std::end(kUpperCase), unit,
      [](const UpperCaseRow& other, char16_t value) { return other.last < value; });
  const bool isIn =
      row != std::end(kUpperCase) && unit >= row->first && (unit - row->first) % row->step == 0;
  return isIn ? static_cast<char16_t>(unit + row->change) : unit;
}

int compareNames(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  for (size_t i = 0; i < a.size(); ++i) {
    const char16_t x = upperCase(a[i]);
    const char16_t y = upperCase(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return 0;
}

std::string shownName(std::u16string_view name) {
  std::string shown;
  for (size_t i = 0; i < name.size(); ++i) {
    const char16_t unit = name[i];
    const bool isPair =
        ksv::isHighSurrogate(unit) && i + 1 < name.size() && ksv::isLowSurrogate(name[i + 1]);
    if (isPair)
      appendUtf8(shown, ksv::joinSurrogates(unit, name[++i]));
    else if (isShown(unit))
      appendUtf8(shown, unit);
    else
      appendEscape(shown, unit);
  }
  return shown;
}

std::optional<std::u16string> nameShownAs(std::string_view shown) {
  std::u16string name;
  while (!shown.empty()) {
    if (shown[0] == '\\') {
      const std::optional<char16_t> unit = takeEscape(shown);
      if (!unit) return std::nullopt;
      name.push_back(*unit);
    } else {
      const std::optional<uint32_t> character = takeCharacter(shown);
      if (!character) return std::nullopt;
      appendUtf16(name, *character);
    }
  }
  return name;
}

}  // namespace ksv_kit::documents
