// Copying of text, units of one width, with some of them left out.
#include <cstring>

#include "ksv_ucs2.h"

namespace {

bool isKeptControl(uint32_t unit) {
  constexpr uint32_t kTab = 0x09, kLineFeed = 0x0A, kReturn = 0x0D, kEscape = 0x1B;
  return unit == 0 || unit == kTab || unit == kLineFeed || unit == kReturn || unit == kEscape;
}

bool isText(uint32_t unit) { return unit != 0x7F && (unit >= 0x20 || isKeptControl(unit)); }

uint32_t unitAt(const uint8_t* bytes, int32_t width, bool bigEndian) {
  uint32_t unit = 0;
  for (int32_t i = 0; i < width; ++i) unit = unit << 8 | bytes[bigEndian ? i : width - 1 - i];
  return unit;
}

// A unit that the length cuts is left out: the bytes behind it are not the caller's.
template <class IsKept>
int32_t copyUnits(void* dest, const void* src, int32_t length, int32_t width, bool bigEndian,
                  IsKept isKept) {
  const bool isWidth = width == 1 || width == 2 || width == 4;
  if (dest == nullptr || src == nullptr || length < 1 || !isWidth) return 0;
  const auto* from = static_cast<const uint8_t*>(src);
  auto* to = static_cast<uint8_t*>(dest);
  int32_t written = 0;
  for (int32_t left = length; left >= width; left -= width, from += width) {
    if (!isKept(unitAt(from, width, bigEndian))) continue;
    std::memmove(to + written, from, static_cast<size_t>(width));
    written += width;
  }
  return written;
}

}  // namespace

int32_t KSV_CopyStripNULL(void* dest, const void* src, int32_t length, int32_t width) {
  return copyUnits(dest, src, length, width, false, [](uint32_t unit) { return unit != 0; });
}

int32_t KSV_CopyStripControlCode(void* dest, const void* src, int32_t length, int32_t width,
                                 int32_t bigEndian) {
  return copyUnits(dest, src, length, width, bigEndian != 0, isText);
}
