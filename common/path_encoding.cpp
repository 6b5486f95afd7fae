#include "common/path_encoding.h"

#include <cstring>
#include <string>

#include "common/guard.h"
#include "common/platform.h"
#include "common/utf16.h"
#include "common/utf8.h"
#include "ksv_file.h"

namespace ksv {
namespace {

struct LeadByte {
  size_t length;  // of the whole sequence, 0 for a byte that leads none
  char32_t bits;
  char32_t smallest;  // a smaller value has a shorter form
};

LeadByte classifyLead(unsigned char byte) {
  if (byte < 0x80) return {1, byte, 0};
  const size_t length = utf8Length(byte);
  if (length < 2 || length > 4) return {0, 0, 0};
  constexpr char32_t kSmallest[] = {0x80, 0x800, 0x10000};
  return {length, byte & (0x7Fu >> length), kSmallest[length - 2]};
}

// Takes one character off a terminated string.
char32_t decodeUtf16(const uint16_t*& source) {
  const char32_t first = *source++;
  if (!isSurrogate(first)) return first;
  if (!isHighSurrogate(first) || !isLowSurrogate(*source)) return kIllFormed;
  return joinSurrogates(first, *source++);
}

size_t encodeUtf8(char32_t character, char bytes[4]) {
  if (character < 0x80) {
    bytes[0] = static_cast<char>(character);
    return 1;
  }
  const size_t length = character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
  for (size_t i = length - 1; i > 0; --i) {
    bytes[i] = static_cast<char>(0x80 | (character & 0x3F));
    character >>= 6;
  }
  constexpr unsigned char kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
  bytes[0] = static_cast<char>(kLeads[length] | character);
  return length;
}

size_t encodeUtf16(char32_t character, uint16_t units[2]) {
  if (character < 0x10000) {
    units[0] = static_cast<uint16_t>(character);
    return 1;
  }
  units[0] = highSurrogateOf(character);
  units[1] = lowSurrogateOf(character);
  return 2;
}

}  // namespace

char32_t decodeUtf8(std::string_view& text) {
  const LeadByte lead = classifyLead(static_cast<unsigned char>(text[0]));
  char32_t character = lead.bits;
  bool whole = lead.length > 0 && lead.length <= text.size();
  for (size_t i = 1; whole && i < lead.length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    whole = isUtf8Continuation(byte);
    character = character << 6 | (byte & 0x3F);
  }
  if (!whole || character < lead.smallest || character > 0x10FFFF || isSurrogate(character)) {
    text.remove_prefix(1);
    return kIllFormed;
  }
  text.remove_prefix(lead.length);
  return character;
}

std::optional<size_t> utf16Length(std::string_view text) {
  size_t units = 0;
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {  // as most of most paths are
      text.remove_prefix(1);
      ++units;
      continue;
    }
    const char32_t character = decodeUtf8(text);
    if (character == kIllFormed) return std::nullopt;
    units += character < 0x10000 ? 1 : 2;
  }
  return units;
}

bool utf8ToUtf16(const char* source, uint16_t* dest, size_t capacity) {
  std::string_view text(source);
  size_t position = 0;
  while (!text.empty()) {
    const char32_t character = decodeUtf8(text);
    if (character == kIllFormed) return false;
    uint16_t units[2];
    const size_t count = encodeUtf16(character, units);
    if (position + count >= capacity) return false;
    std::memcpy(dest + position, units, count * sizeof units[0]);
    position += count;
  }
  if (position >= capacity) return false;
  dest[position] = 0;
  return true;
}

bool utf16ToUtf8(const uint16_t* source, char* dest, size_t capacity) {
  size_t position = 0;
  while (*source != 0) {
    const char32_t character = decodeUtf16(source);
    if (character == kIllFormed) return false;
    char bytes[4];
    const size_t count = encodeUtf8(character, bytes);
    if (position + count >= capacity) return false;
    std::memcpy(dest + position, bytes, count);
    position += count;
  }
  if (position >= capacity) return false;
  dest[position] = '\0';
  return true;
}

bool copyText(std::string_view text, char* dest, size_t capacity) {
  const bool fits = text.size() < capacity;
  // Not memcpy: callers may copy within one buffer, and end the text only then.
  if (fits) std::memmove(dest, text.data(), text.size());
  if (capacity > 0) dest[fits ? text.size() : 0] = '\0';
  return fits;
}

bool isUsablePath(const char* path) {
  if (path == nullptr) return true;
  const std::optional<size_t> units = utf16Length(path);
  return units && *units < KSV_PATH_UNITS;
}

namespace {

// What the four transcoders have in common: the destination is empty before the
// source is looked at, and again after a failure.
template <class To, class From, class Convert>
int transcode(To* dest, const From* source, int32_t capacity, Convert convert) {
  if (dest == nullptr) return 0;
  if (capacity > 0) dest[0] = 0;
  if (source == nullptr || source[0] == 0) return 0;
  if (capacity <= 0) return KSV_PATH_NOT_CONVERTED;
  if (convert(source, dest, static_cast<size_t>(capacity))) return 0;
  dest[0] = 0;
  return KSV_PATH_NOT_CONVERTED;
}

bool ansiPathToUtf8(const char* source, char* dest, size_t capacity) {
  return guarded(false, [&] {
    const std::optional<std::string> utf8 = platform::ansiToUtf8(source);
    return utf8 && isUsablePath(utf8->c_str()) && copyText(*utf8, dest, capacity);
  });
}

bool utf8PathToAnsi(const char* source, char* dest, size_t capacity) {
  return guarded(false, [&] {
    if (!isUsablePath(source)) return false;
    const std::optional<std::string> ansi = platform::utf8ToAnsi(source);
    return ansi && copyText(*ansi, dest, capacity);
  });
}

}  // namespace
}  // namespace ksv

int KSV_FilePathTransAnsiToUTF8(char* dest, const char* src, int32_t capacity) {
  return ksv::transcode(dest, src, capacity, ksv::ansiPathToUtf8);
}

int KSV_FilePathTransUTF8ToAnsi(char* dest, const char* src, int32_t capacity) {
  return ksv::transcode(dest, src, capacity, ksv::utf8PathToAnsi);
}

int KSV_FilePathTransUTF16ToUTF8(char* dest, const uint16_t* src, int32_t capacity) {
  return ksv::transcode(dest, src, capacity, ksv::utf16ToUtf8);
}

int KSV_FilePathTransUTF8ToUTF16(uint16_t* dest, const char* src, int32_t capacity) {
  return ksv::transcode(dest, src, capacity, ksv::utf8ToUtf16);
}
