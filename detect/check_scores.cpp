#include "detect/check_scores.h"

#include "common/byte_order.h"
#include "detect/candidate.h"
#include "detect/character_sets.h"
#include "detect/text_blocks.h"

namespace ksv::detect {
namespace {

constexpr bool isBlank(uint8_t byte) {
  return byte == ' ' || byte == '\t' || byte == kCarriageReturn || byte == kLineFeed;
}

constexpr bool isPlain(uint8_t byte) { return isPrintable(byte) || isBlank(byte); }
constexpr bool isKatakana(uint8_t byte) { return isBetween(byte, 0xA1, 0xDF); }

class Count {
 public:
  void add(bool isGood) {
    good_ += isGood;
    bad_ += !isGood;
  }
  void addGood(size_t units) { good_ += static_cast<uint32_t>(units); }
  bool isMoreThan(uint32_t mostBad) const { return bad_ > mostBad; }
  int32_t score() const {
    if (good_ == 0) return 0;
    return static_cast<int32_t>(good_ * kFullScore / (good_ + bad_));
  }

 private:
  uint32_t good_ = 0;
  uint32_t bad_ = 0;
};

// ---- ISO-2022-JP

enum class Mode { kUnknown, kSingle, kKatakana, kPairs };

Mode modeBehind(uint8_t second, uint8_t third) {
  if (second == '$' && (third == 'B' || third == '@')) return Mode::kPairs;
  if (second == '(' && (third == 'J' || third == 'B')) return Mode::kSingle;
  if (second == '(' && third == 'I') return Mode::kKatakana;
  return Mode::kUnknown;
}

bool isGoodSingle(uint8_t byte, Mode mode) {
  if (mode == Mode::kUnknown) return false;
  return isBlank(byte) || (mode == Mode::kKatakana ? isKatakana(byte) : isPrintable(byte));
}

// Passes over blocks of good pairs, or of good single bytes.
const uint8_t* passGood7Bit(const uint8_t* at, const uint8_t* end, Mode mode, Count& count) {
  if (mode == Mode::kSingle) {
    const uint8_t* const behind = passText(at, end);
    count.addGood(static_cast<size_t>(behind - at));
    return behind;
  }
  for (; end - at >= static_cast<ptrdiff_t>(kBlock); at += kBlock) {
    if (!areBetween<kFirstPrintable, kLastPrintable>(blockAt(at))) break;
    count.addGood(kBlock / 2);
  }
  return at;
}

// ---- UTF-8

// What begins with a byte of at least leastLead: so many more bytes, of which six bits
// each are taken, and the values that are good.
struct Utf8Form {
  uint8_t leastLead;
  uint8_t leadBits;
  size_t more;
  uint32_t least;
  uint32_t most;
};

constexpr Utf8Form kUtf8Forms[] = {
    {0xFC, 0x01, 5, 0x4000000, 0x7FFFFFFF}, {0xF8, 0x03, 4, 0x200000, 0x3FFFFFF},
    {0xF0, 0x07, 3, 0x10000, 0x1FFFFF},     {0xE0, 0x0F, 2, 0x800, 0xFFFF},
    {0xC0, 0x1F, 1, 0x80, 0x7FF},
};

const Utf8Form& utf8Form(uint8_t lead) {
  size_t i = 0;
  while (lead < kUtf8Forms[i].leastLead) ++i;
  return kUtf8Forms[i];
}

// That the bytes behind the lead have the form 10xxxxxx is not looked at.
uint32_t utf8Value(const uint8_t* at, const Utf8Form& form) {
  uint32_t value = at[0] & form.leadBits;
  for (size_t i = 1; i <= form.more; ++i) value = value << 6 | (at[i] & 0x3Fu);
  return value;
}

// Characters of three bytes come in runs. What E0 begins may be too small a value.
const uint8_t* passThrees(const uint8_t* at, const uint8_t* end, Count& count, Utf8Score& result) {
  constexpr uint32_t kCharacters = 3;
  while (end - at > static_cast<ptrdiff_t>(kBlock) && areThreeThrees(at) && at[0] != 0xE0 &&
         at[3] != 0xE0 && at[6] != 0xE0) {
    at += kBlock + 1;
    count.addGood(kCharacters);
    result.multibyte += kCharacters;
  }
  return at;
}

// ---- UTF-16 and UCS-4

int32_t checkUtf16InOrder(const CheckedText& text, bool bigEndian) {
  Count count;
  bool hasAscii = false;
  for (size_t i = 0; i + 2 <= text.length; i += 2) {
    const uint32_t unit = readUnit16(text.data + i, bigEndian);
    count.add(kCheckedCharacters.contains(unit));
    hasAscii |= isBetween(unit, 0x21, 0x7E);
  }
  return hasAscii ? count.score() : 0;
}

int32_t checkUcs4InOrder(const CheckedText& text, bool bigEndian) {
  Count count;
  for (size_t i = 0; i + 4 <= text.length; i += 4) {
    const uint32_t plane = readUnit16(text.data + i + (bigEndian ? 0 : 2), bigEndian);
    const uint32_t code = readUnit16(text.data + i + (bigEndian ? 2 : 0), bigEndian);
    if (isBetween(plane, 17, 127)) return 0;
    // On every plane the codes of plane 0 are asked for.
    count.add(plane <= 16 && kCheckedCharacters.contains(code));
  }
  return count.score();
}

OrderedScore higherOf(int32_t bigEndian, int32_t littleEndian) {
  if (bigEndian > littleEndian) return {bigEndian, true};
  return {littleEndian, false};
}

}  // namespace

int32_t checkIso2022Jp(const CheckedText& text) {
  Count count;
  Mode mode = Mode::kSingle;
  const uint8_t* at = text.data;
  const uint8_t* const end = text.data + text.length;
  while (at < end) {
    if (mode == Mode::kSingle || mode == Mode::kPairs) at = passGood7Bit(at, end, mode, count);
    if (at == end) break;
    if (*at == kEscape) {
      if (end - at < 3) break;
      const bool hasFour = at[1] == '$' && at[2] == '(';
      if (hasFour && end - at < 4) break;
      // Behind ESC $ ( only D changes the mode.
      if (!hasFour) mode = modeBehind(at[1], at[2]);
      if (hasFour && at[3] == 'D') mode = Mode::kPairs;
      at += hasFour ? 4 : 3;
    } else if (mode == Mode::kPairs && isPrintable(*at)) {
      if (end - at < 2) break;
      count.add(isPrintable(at[1]));
      at += 2;
    } else {
      count.add(mode != Mode::kPairs && isGoodSingle(*at, mode));
      ++at;
    }
  }
  return count.score();
}

int32_t checkEucJp(const CheckedText& text) {
  Count count;
  const uint8_t* at = text.data;
  const uint8_t* const end = text.data + text.length;
  while (at < end) {
    const uint8_t lead = *at;
    if (lead == 0 || lead == kEscape || count.isMoreThan(text.mostBad)) return 0;
    if (lead != 0x8E && lead != 0x8F && !isKatakana(lead)) {
      count.add(isPlain(lead));
      ++at;
      continue;
    }
    if (end - at < 2) break;
    const bool isTwo = isKatakana(lead) ? at[1] >= 0xA1 : isKatakana(at[1]);
    if (lead != 0x8F || !isTwo) {
      count.add(isTwo);
      at += 2;
      continue;
    }
    if (end - at < 3) break;
    count.add(at[2] >= 0xA1);
    at += 3;
  }
  return count.score();
}

int32_t checkEucJpFix(const CheckedText& text) {
  Count count;
  for (size_t i = 0; i + 2 <= text.length; i += 2) {
    const uint8_t first = text.data[i];
    const uint8_t second = text.data[i + 1];
    if (first == kEscape) return 0;
    const bool isNarrow = first == 0 && (isPlain(second) || isKatakana(second));
    const bool isWide = isKatakana(first) && (isPrintable(second) || second >= 0xA1);
    count.add(isNarrow || isWide);
  }
  return count.score();
}

Utf8Score checkUtf8(const CheckedText& text) {
  Utf8Score result;
  Count count;
  const uint8_t* at = text.data;
  const uint8_t* const end = text.data + text.length;
  for (;;) {
    const uint8_t* const behindText = passText(at, end);
    count.addGood(static_cast<size_t>(behindText - at));
    at = passThrees(behindText, end, count, result);
    if (at == end) break;
    const uint8_t lead = *at;
    if (lead == 0 || lead == kEscape || count.isMoreThan(text.mostBad)) return {};
    if (lead < 0xC0 || lead >= 0xFE) {
      if (lead < 0xFE) count.add(isPlain(lead));
      ++at;
      continue;
    }
    const Utf8Form& form = utf8Form(lead);
    if (static_cast<size_t>(end - at) <= form.more) break;
    const uint32_t value = utf8Value(at, form);
    const bool isGood = isBetween(value, form.least, form.most);
    count.add(isGood);
    result.multibyte += isGood;
    at += form.more + 1;
  }
  result.score = count.score();
  return result;
}

Windows31jScore checkWindows31j(const CheckedText& text) {
  Windows31jScore result;
  Count count;
  const uint8_t* at = text.data;
  const uint8_t* const end = text.data + text.length;
  while (at < end) {
    if (end - at >= 2 && kShiftJisCodes.contains(uint32_t{at[0]} << 8 | at[1])) {
      count.add(true);
      ++result.doubleByte;
      at += 2;
      continue;
    }
    const uint8_t byte = *at++;
    if (byte == 0 || byte == kEscape || byte == 0x7F || count.isMoreThan(text.mostBad)) return {};
    count.add(isPlain(byte) || isKatakana(byte));
    result.high += byte > 0x9F;
  }
  result.score = count.score();
  return result;
}

OrderedScore checkUtf16(const CheckedText& text) {
  return higherOf(checkUtf16InOrder(text, true), checkUtf16InOrder(text, false));
}

OrderedScore checkUcs4(const CheckedText& text) {
  return higherOf(checkUcs4InOrder(text, true), checkUcs4InOrder(text, false));
}

}  // namespace ksv::detect
