// Copying of text, units of one width, with some of them left out.
#include <cstring>

#include "common/byte_order.h"
#include "ksv_ucs2.h"

namespace {

bool isKeptControl(uint32_t unit) {
  constexpr uint32_t kTab = 0x09, kLineFeed = 0x0A, kReturn = 0x0D, kEscape = 0x1B;
  return unit == 0 || unit == kTab || unit == kLineFeed || unit == kReturn || unit == kEscape;
}

bool isText(uint32_t unit) { return unit != 0x7F && (unit >= 0x20 || isKeptControl(unit)); }

struct Text {
  uint8_t* dest;
  const uint8_t* source;
  int32_t length;
  bool bigEndian;
};

// A unit that the length cuts is left out: the bytes behind it are not the caller's.
template <int32_t kWidth, class IsKept>
int32_t copyUnits(const Text& text, IsKept isKept) {
  int32_t written = 0;
  for (int32_t at = 0; at <= text.length - kWidth; at += kWidth) {
    if (!isKept(ksv::readUnit(text.source + at, kWidth, text.bigEndian))) continue;
    std::memmove(text.dest + written, text.source + at, kWidth);
    written += kWidth;
  }
  return written;
}

template <class IsKept>
int32_t copyUnits(void* dest, const void* src, int32_t length, int32_t width, bool bigEndian,
                  IsKept isKept) {
  if (dest == nullptr || src == nullptr || length < 1) return 0;
  const Text text = {static_cast<uint8_t*>(dest), static_cast<const uint8_t*>(src), length,
                     bigEndian};
  switch (width) {
    case 1:
      return copyUnits<1>(text, isKept);
    case 2:
      return copyUnits<2>(text, isKept);
    case 4:
      return copyUnits<4>(text, isKept);
    default:
      return 0;
  }
}

}  // namespace

int32_t KSV_CopyStripNULL(void* dest, const void* src, int32_t length, int32_t width) {
  return copyUnits(dest, src, length, width, false, [](uint32_t unit) { return unit != 0; });
}

int32_t KSV_CopyStripControlCode(void* dest, const void* src, int32_t length, int32_t width,
                                 int32_t bigEndian) {
  return copyUnits(dest, src, length, width, bigEndian != 0, isText);
}
