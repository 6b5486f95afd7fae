#include <array>
#include <cstddef>

#include "ksv_sjis.h"
#include "ksv_ucs2.h"

namespace {

struct Range {
  uint16_t first;
  uint16_t last;
};

// The codes of JIS X 0208 that are characters. The last ranges go over many lead
// bytes, the codes between their rows included.
constexpr Range kJisRanges[] = {
    {0x8140, 0x81AC}, {0x81B8, 0x81BF}, {0x81C8, 0x81CE}, {0x81DA, 0x81E8}, {0x81F0, 0x81F7},
    {0x81FC, 0x81FC}, {0x824F, 0x8258}, {0x8260, 0x8279}, {0x8281, 0x829A}, {0x829F, 0x82F1},
    {0x8340, 0x8396}, {0x839F, 0x83B6}, {0x83BF, 0x83D6}, {0x8440, 0x8460}, {0x8470, 0x8491},
    {0x849F, 0x84BE}, {0x889F, 0x9872}, {0x989F, 0x9FFC}, {0xE040, 0xEAA4}};

constexpr uint16_t kFirstCode = 0x8100;
constexpr uint16_t kLastCode = 0xEAFF;

constexpr bool isBetween(unsigned number, unsigned first, unsigned last) {
  return number >= first && number <= last;
}

constexpr bool isTrail(unsigned code) { return isBetween(code & 0xFF, 0x30, 0xFC); }

// One bit a code, 3 KB: an answer takes as long for any code.
class JisCodes {
 public:
  constexpr JisCodes() {
    for (const Range& range : kJisRanges) {
      for (unsigned code = range.first; code <= range.last; ++code) {
        if (isTrail(code)) words_[wordOf(code)] |= bitOf(code);
      }
    }
  }

  constexpr bool contains(unsigned code) const {
    return isBetween(code, kFirstCode, kLastCode) && (words_[wordOf(code)] & bitOf(code)) != 0;
  }

 private:
  static constexpr size_t wordOf(unsigned code) { return (code - kFirstCode) / 32; }
  static constexpr uint32_t bitOf(unsigned code) { return uint32_t{1} << code % 32; }

  std::array<uint32_t, (kLastCode - kFirstCode + 1) / 32> words_ = {};
};

constexpr JisCodes kJisCodes;

bool hasSjisCodeBetween(uint16_t unit, uint16_t first, uint16_t last) {
  return isBetween(KSV_unicodetosjis(unit), first, last);
}

}  // namespace

int KSV_isucs2alnum(uint16_t unit) {
  return isBetween(unit, 'A', 'Z') || isBetween(unit, 'a', 'z') || isBetween(unit, '0', '9');
}

int KSV_isucs2ascii(uint16_t unit) { return unit < 0x80; }

int KSV_isucs2cntrl(uint16_t unit) { return unit < 0x20 || unit == 0x7F; }

int KSV_isucs2digit(uint16_t unit) { return isBetween(unit, '0', '9'); }

int KSV_isjis(uint16_t code) { return kJisCodes.contains(code) ? code : 0; }

// 0xA0 is no katakana, but always has been one of these.
int KSV_isank(uint16_t code) {
  return isBetween(code, 0x20, 0x7E) || isBetween(code, 0xA0, 0xDF) ? code : 0;
}

int KSV_isucs2jis(uint16_t unit) { return KSV_isjis(KSV_unicodetosjis(unit)) != 0 ? unit : 0; }

int KSV_isucs2ank(uint16_t unit) { return KSV_isank(KSV_unicodetosjis(unit)) != 0 ? unit : 0; }

int KSV_isucs2zenhira(uint16_t unit) {
  return hasSjisCodeBetween(unit, 0x829F, 0x82F1) ? unit : 0;
}

int KSV_isucs2zenkata(uint16_t unit) {
  return hasSjisCodeBetween(unit, 0x8340, 0x8396) ? unit : 0;
}
