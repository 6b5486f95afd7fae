// The scores of the encoding check. They are its own: coarser than the scorers of
// text detection in places and finer in others, and callers know its answers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv::detect {

// Good characters of ten thousand, cut off to a whole number; 0 when there are none.
constexpr int32_t kFullScore = 10000;

// The bytes that are scored.
struct CheckedText {
  const uint8_t* data;
  size_t length;
  // A score of bytes may be given up, as 0, where more units than that are bad.
  uint32_t mostBad = UINT32_MAX;
};

struct Utf8Score {
  int32_t score = 0;
  uint32_t multibyte = 0;  // characters of two bytes and more
};

struct Windows31jScore {
  int32_t score = 0;
  uint32_t doubleByte = 0;  // good pairs
  uint32_t high = 0;        // single bytes above 0x9F
};

struct OrderedScore {
  int32_t score = 0;
  bool isBigEndian = false;  // scored higher in that order than in the other
};

int32_t checkIso2022Jp(const CheckedText& text);
int32_t checkEucJp(const CheckedText& text);
int32_t checkEucJpFix(const CheckedText& text);
Utf8Score checkUtf8(const CheckedText& text);
Windows31jScore checkWindows31j(const CheckedText& text);
OrderedScore checkUtf16(const CheckedText& text);
OrderedScore checkUcs4(const CheckedText& text);

}  // namespace ksv::detect
