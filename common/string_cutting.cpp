// Where text may be cut. The rules are deliberately simpler than the charsets: they
// look at lead bytes only, and callers rely on where they cut.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "common/utf8.h"
#include "ksv_cut.h"

namespace ksv {
namespace {

constexpr uint8_t kCr = '\r';
constexpr uint8_t kLf = '\n';
constexpr uint8_t kEscape = 0x1B;

constexpr bool isBetween(uint8_t byte, uint8_t low, uint8_t high) {
  return byte >= low && byte <= high;
}

// Steps: how many bytes are accepted at a position with so many bytes left; 0: the
// walk stops there.
using Step = int32_t (*)(const uint8_t* at, int32_t left);

constexpr int32_t ifLeft(int32_t size, int32_t left) { return left >= size ? size : 0; }

int32_t stepShiftJis(const uint8_t* at, int32_t left) {
  return isBetween(at[0], 0x81, 0x9F) || at[0] >= 0xE0 ? ifLeft(2, left) : 1;
}

// Bytes from 0xE0 up count as one each: rows above 62 were never cut as pairs.
int32_t stepEucJp(const uint8_t* at, int32_t left) {
  const bool leads = isBetween(at[0], 0xA1, 0xDF) || at[0] == 0x8E || at[0] == 0x8F;
  return leads ? ifLeft(2, left) : 1;
}

int32_t stepEucJisX0213(const uint8_t* at, int32_t left) {
  // Two of its three bytes are counted, and only where all three fit.
  if (at[0] == 0x8F) return left >= 3 ? 2 : 0;
  return isBetween(at[0], 0xA1, 0xDF) ? ifLeft(2, left) : 1;
}

int32_t stepDoubleByte(const uint8_t* at, int32_t left) {
  return at[0] >= 0x81 ? ifLeft(2, left) : 1;
}

bool isDigit(uint8_t byte) { return isBetween(byte, '0', '9'); }

int32_t stepGb18030(const uint8_t* at, int32_t left) {
  if (!isBetween(at[0], 0x81, 0xFE)) return 1;
  if (left > 3) {
    const bool isFour = isDigit(at[1]) && isBetween(at[2], 0x81, 0xFE) && isDigit(at[3]);
    return isFour ? 4 : 2;
  }
  if (left <= 1) return 0;
  const bool isTrail = isBetween(at[1], 0x40, 0x7E) || isBetween(at[1], 0x80, 0xFE);
  return isTrail ? 2 : 1;
}

int32_t stepUtf8(const uint8_t* at, int32_t left) {
  const bool isLead = isBetween(at[0], 0xC0, 0xFD);
  return ifLeft(isLead ? static_cast<int32_t>(ksv::utf8Length(at[0])) : 1, left);
}

template <Step kStep>
int32_t cutByCharacters(const uint8_t* text, int32_t end) {
  int32_t i = 0;
  while (i < end) {
    const int32_t size = kStep(text + i, end - i);
    if (size == 0) return i;
    i += size;
  }
  return text[end - 1] == kCr && text[end] == kLf ? end - 1 : end;
}

int32_t cutSingleBytes(const uint8_t* text, int32_t end) {
  return text[end - 1] == kCr && text[end] == kLf ? end - 1 : end;
}

// Byte orders are not told apart: either byte of a unit counts.
int32_t cutTwoByteUnits(const uint8_t* text, int32_t end) {
  const int32_t whole = end & ~1;
  if (whole == 0) return 0;
  const uint8_t* next = text + whole;
  if (next[-2] != kCr && next[-1] != kCr) return whole;
  return next[0] == kLf || next[1] == kLf ? whole - 2 : whole;
}

int32_t cutFourByteUnits(const uint8_t* text, int32_t end) {
  const int32_t whole = end & ~3;
  if (whole == 0) return 0;
  const uint8_t* next = text + whole;
  if (next[-4] != kCr && next[-1] != kCr) return whole;
  return next[0] == kLf || next[3] == kLf ? whole - 4 : whole;
}

// ISO-2022-JP keeps a mode from escape sequence to escape sequence.
enum class Mode { kNone, kOneByte, kTwoBytes };

struct Iso2022Walk {
  const uint8_t* text;
  int32_t end;
  int32_t i = 0;
  Mode mode = Mode::kNone;
  // An escape sequence stands before the CR, and goes with it.
  bool escapeBeforeCr = false;

  int32_t left() const { return end - i; }

  bool acceptCharacter() {
    const int32_t size = mode == Mode::kTwoBytes ? 2 : 1;
    if (left() < size) return false;
    i += size;
    return true;
  }

  int32_t result() const {
    if (i != end || text[end - 1] != kCr || text[end] != kLf) return i;
    return escapeBeforeCr ? end - 4 : end - 1;
  }
};

// One step of ISO-2022-JP; false where the walk stops.
bool stepIso2022Jp(Iso2022Walk& walk) {
  const uint8_t* at = walk.text + walk.i;
  if (at[0] == kEscape) {
    if (walk.left() > 3 && at[1] == '(') {
      walk.mode = Mode::kOneByte;
      if (at[3] == kCr) walk.escapeBeforeCr = true;
      walk.i += 3;
    } else if (walk.left() > 4 && at[1] == '$') {
      walk.mode = Mode::kTwoBytes;
      walk.i += 3;
    } else {
      walk.mode = Mode::kNone;
    }
  } else if (at[0] == kCr) {
    walk.escapeBeforeCr = false;
  }
  if (walk.mode == Mode::kNone) {
    if (walk.i != 0) return false;
    walk.mode = Mode::kOneByte;
  }
  return walk.acceptCharacter();
}

// ISO-2022-JP-3 begins with an escape sequence, and four bytes of it are taken.
bool stepIso2022Jp3(Iso2022Walk& walk) {
  const uint8_t* at = walk.text + walk.i;
  if (at[0] != kEscape) {
    if (at[0] == kCr) walk.escapeBeforeCr = false;
    return walk.mode != Mode::kNone && walk.acceptCharacter();
  }
  if (walk.left() <= 3) return false;
  if (at[1] == '(') {
    walk.mode = Mode::kOneByte;
    walk.escapeBeforeCr = at[3] == kCr;
    walk.i += 4;
    return true;
  }
  if (at[1] != '$' || walk.left() <= 4) return false;
  walk.mode = Mode::kTwoBytes;
  walk.i += 4;
  return walk.acceptCharacter();
}

template <bool (*kStep)(Iso2022Walk&)>
int32_t cutIso2022(const uint8_t* text, int32_t end) {
  Iso2022Walk walk{text, end};
  while (walk.i < end && kStep(walk)) {
  }
  return walk.result();
}

using Cut = int32_t (*)(const uint8_t* text, int32_t end);

struct NamedRule {
  const char* prefix;
  Cut cut;
};

// The first prefix decides. "EUC-JP-FIX" is taken by "EUC-JP", and stays so.
constexpr NamedRule kRules[] = {
    {"EUC-JISX0213", cutByCharacters<stepEucJisX0213>},
    {"ISO-2022-JP-3", cutIso2022<stepIso2022Jp3>},
    {"Shift_JISX0213", cutByCharacters<stepShiftJis>},
    {"Shift_JIS", cutByCharacters<stepShiftJis>},
    {"WINDOWS31J", cutByCharacters<stepShiftJis>},
    {"ISO-10646-UCS-2", cutTwoByteUnits},
    {"ISO-10646-UCS-4", cutFourByteUnits},
    {"UTF-16", cutTwoByteUnits},
    {"UTF-8", cutByCharacters<stepUtf8>},
    {"EUC-JP", cutByCharacters<stepEucJp>},
    {"ISO-2022-JP", cutIso2022<stepIso2022Jp>},
    {"ChineseGBK", cutByCharacters<stepDoubleByte>},
    {"GB18030", cutByCharacters<stepGb18030>},
    {"ChineseBIG", cutByCharacters<stepDoubleByte>},
    {"KoreanKSC", cutByCharacters<stepDoubleByte>},
    {"ISO-8859-", cutSingleBytes},
};

Cut findRule(const char* charsetName) {
  if (charsetName == nullptr) return nullptr;
  for (const NamedRule& rule : kRules) {
    if (std::strncmp(charsetName, rule.prefix, std::strlen(rule.prefix)) == 0) return rule.cut;
  }
  return nullptr;
}

}  // namespace
}  // namespace ksv

uint32_t CutStr(const void* buffer, int32_t length, int32_t limit, const char* charsetName) {
  const ksv::Cut cut = ksv::findRule(charsetName);
  if (cut == nullptr) return static_cast<uint32_t>(length);
  const int32_t end = std::min(length, limit);
  if (end <= 0 || buffer == nullptr) return 0;
  return static_cast<uint32_t>(cut(static_cast<const uint8_t*>(buffer), end));
}
