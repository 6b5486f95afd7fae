#include <windows.h>

#include <stdexcept>
#include <string>

#include "kit/unicode/normalization_system.h"
#include "kit/unicode/utf8_text.h"

namespace ksv_kit {
namespace {

// U+0345, the only mark of the highest combining class: all others are put in front of it.
constexpr char32_t kLastMark = 0x0345;

NORM_FORM systemForm(NormalizationForm form) {
  switch (form) {
    case NormalizationForm::kNfd:
      return NormalizationD;
    case NormalizationForm::kNfkc:
      return NormalizationKC;
    case NormalizationForm::kNfkd:
      return NormalizationKD;
    default:
      return NormalizationC;
  }
}

void appendUtf16(char32_t character, std::wstring& text) {
  if (character >= 0x10000) {
    text += static_cast<wchar_t>(0xD7C0 + (character >> 10));
    text += static_cast<wchar_t>(0xDC00 | (character & 0x3FF));
  } else {
    text += static_cast<wchar_t>(character);
  }
}

std::wstring utf16Of(std::string_view text) {
  std::wstring units;
  for (; !text.empty(); text.remove_prefix(utf8LengthOf(text[0]))) {
    appendUtf16(firstCharacter(text), units);
  }
  return units;
}

char32_t characterAt(const std::wstring& units, size_t at) {
  const char32_t unit = units[at];
  const bool isPair = unit >= 0xD800 && unit <= 0xDBFF && at + 1 < units.size();
  return isPair ? ((unit - 0xD7C0) << 10) + (units[at + 1] & 0x3FFU) : unit;
}

// The system tells a length that may be too small, and then a better one.
std::wstring normalizedUnits(NormalizationForm form, const std::wstring& units) {
  const auto length = static_cast<int>(units.size());
  std::wstring made(units.size() * 3 + 16, L'\0');
  for (;;) {
    const int count = NormalizeString(systemForm(form), units.data(), length, made.data(),
                                      static_cast<int>(made.size()));
    if (count > 0) {
      made.resize(static_cast<size_t>(count));
      return made;
    }
    // A noncharacter, or a character that the system does not know, stays.
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return units;
    made.resize(made.size() * 2);
  }
}

std::wstring unitsOf(char32_t character) {
  std::wstring units;
  appendUtf16(character, units);
  return units;
}

// The system does not tell combining classes, but it puts marks in order.
bool isMark(char32_t character) {
  if (character == kLastMark) return true;
  std::wstring behind = unitsOf(kLastMark);
  behind += unitsOf(character);
  return normalizedUnits(NormalizationForm::kNfd, behind) != behind;
}

bool isCompatible(NormalizationForm form) {
  return form == NormalizationForm::kNfkc || form == NormalizationForm::kNfkd;
}

// Surrogates are no characters; the tables of a page ask for them all the same.
bool isSurrogate(char32_t character) { return character >= 0xD800 && character <= 0xDFFF; }

}  // namespace

bool canNormalize() { return true; }

CharacterInForm characterInForm(NormalizationForm form, char32_t character) {
  if (character < 0x80 || isSurrogate(character)) return {true, true};
  const std::wstring units = unitsOf(character);
  const NormalizationForm apart =
      isCompatible(form) ? NormalizationForm::kNfkd : NormalizationForm::kNfd;
  const char32_t first = characterAt(normalizedUnits(apart, units), 0);
  return {normalizedUnits(form, units) == units, !isMark(first) && !joinsWithFormer(first)};
}

void appendNormalized(NormalizationForm form, std::string_view text, std::string& out) {
  const std::wstring units = normalizedUnits(form, utf16Of(text));
  for (size_t at = 0; at < units.size();) {
    const char32_t character = characterAt(units, at);
    appendUtf8(character, out);
    at += character >= 0x10000 ? 2 : 1;
  }
}

std::string unicodeVersionOfNormalization() { return {}; }

}  // namespace ksv_kit
