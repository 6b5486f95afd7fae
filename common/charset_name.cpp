#include "ksv_ucs2.h"

namespace {

// Capitals become small letters: that decides where the characters between the two
// stand, such as the underscore.
int lowered(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

const char* orEmpty(const char* text) { return text == nullptr ? "" : text; }

struct NamedWidth {
  const char* name;
  int32_t width;
};

constexpr NamedWidth kWidths[] = {{"ISO-10646-UCS-4", 4}, {"ISO-10646-UCS-2", 2}, {"UTF-16", 2}};

}  // namespace

int KSV_stricmp(const char* a, const char* b) {
  a = orEmpty(a);
  b = orEmpty(b);
  while (*a != '\0' && lowered(*a) == lowered(*b)) {
    ++a;
    ++b;
  }
  return lowered(*a) - lowered(*b);
}

int32_t KSV_GetGroupCharWidth(const char* charsetName) {
  for (const NamedWidth& named : kWidths) {
    if (KSV_stricmp(charsetName, named.name) == 0) return named.width;
  }
  return 1;
}
