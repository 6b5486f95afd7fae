#include "kit/text/resynchronisation.h"

#include <algorithm>

#include "kit/text/unicode_check.h"

namespace ksv_kit {
namespace {

bool isBetween(uint8_t byte, uint8_t low, uint8_t high) { return byte >= low && byte <= high; }

bool isAscii(uint8_t byte) { return byte < 0x80; }

bool isShiftJisLead(uint8_t b) { return isBetween(b, 0x81, 0x9F) || isBetween(b, 0xE0, 0xFC); }
bool isShiftJisTrail(uint8_t b) { return isBetween(b, 0x40, 0x7E); }
bool isEucLead(uint8_t b) { return isBetween(b, 0xA1, 0xFE) || b == 0x8E || b == 0x8F; }
bool isNoTrail(uint8_t) { return false; }
bool isGbkLead(uint8_t b) { return isBetween(b, 0x81, 0xFE); }
bool isGbkTrail(uint8_t b) { return isBetween(b, 0x40, 0x7E); }
bool isKoreanTrail(uint8_t b) { return isBetween(b, 0x41, 0x5A) || isBetween(b, 0x61, 0x7A); }
bool isJohabLead(uint8_t b) { return isBetween(b, 0x84, 0xD3) || isBetween(b, 0xD8, 0xF9); }
bool isJohabTrail(uint8_t b) { return isBetween(b, 0x31, 0x7E); }
bool isMacBig5Lead(uint8_t b) { return isBetween(b, 0xA1, 0xFC); }

// The form of the charsets whose characters have several bytes, by how their names begin.
struct Form {
  std::string_view charset;
  bool (*isLead)(uint8_t);
  bool (*isAsciiTrail)(uint8_t);  // a trail below 80
  bool hasThreeBytes = false;     // behind 8F
  bool hasFourBytes = false;
  bool hasPlanes = false;  // four bytes behind 8E
};
constexpr Form kForms[] = {
    {"shift_jis", isShiftJisLead, isShiftJisTrail},
    {"windows31j", isShiftJisLead, isShiftJisTrail},
    {"oasys_win", isShiftJisLead, isShiftJisTrail},
    {"euc-jp", isEucLead, isNoTrail, true},
    {"euc-jis-2004", isEucLead, isNoTrail, true},
    {"chinesegbk", isGbkLead, isGbkTrail},
    {"gb18030", isGbkLead, isGbkTrail, false, true},
    {"chinesebig5", isGbkLead, isGbkTrail},
    {"big5-hkscs", isGbkLead, isGbkTrail},
    {"koreanksc", isGbkLead, isKoreanTrail},
    {"euc-kr", isGbkLead, isKoreanTrail},
    {"johab", isJohabLead, isJohabTrail},
    {"euc-tw", isEucLead, isNoTrail, false, false, true},
    {"x-mac-japanese", isShiftJisLead, isShiftJisTrail},
    {"x-mac-chinesetrad", isMacBig5Lead, isGbkTrail},
    {"x-mac-chinesesimp", isMacBig5Lead, isNoTrail},
    {"x-stateless-iso-2022-kr", isEucLead, isNoTrail},
    {"x-stateless-iso-2022-cn", isEucLead, isNoTrail, false, false, true},
};

bool isDigit(uint8_t byte) { return isBetween(byte, '0', '9'); }

// Bytes of a sequence of four, as far as there are any: behind a digit the next lead and
// digit decide whether it is one.
size_t fourByteLength(const uint8_t* text, size_t length, bool atEnd) {
  if (length > 2 && !isGbkLead(text[2])) return 1;
  if (length > 3) return isDigit(text[3]) ? 4 : 1;
  return atEnd ? 1 : 0;
}

// Bytes of a sequence of four behind 8E, up to one that is no trail.
size_t planeLength(const uint8_t* text, size_t length, bool atEnd) {
  constexpr size_t kWhole = 4;
  size_t count = 1;
  while (count < length && count < kWhole && text[count] >= 0xA1) ++count;
  return count == length && count < kWhole && !atEnd ? 0 : count;
}

size_t lengthIn(const Form& form, const uint8_t* text, size_t length, bool atEnd) {
  if (!form.isLead(text[0])) return 1;
  if (form.hasPlanes && text[0] == 0x8E) return planeLength(text, length, atEnd);
  if (length == 1) return atEnd ? 1 : 0;
  if (form.hasFourBytes && isDigit(text[1])) return fourByteLength(text, length, atEnd);
  if (isAscii(text[1])) return form.isAsciiTrail(text[1]) ? 2 : 1;
  const bool isThree = form.hasThreeBytes && text[0] == 0x8F && text[1] >= 0xA1;
  if (!isThree) return 2;
  if (length == 2) return atEnd ? 2 : 0;
  return isAscii(text[2]) ? 2 : 3;
}

// Line ends of one byte do not put the pairs behind them out of step.
bool standsAlone(const CharsetChoice& charset, uint8_t first) {
  return charset.name == "oasys_online" && isBetween(first, 0x01, 0x20);
}

}  // namespace

size_t unitSize(const CharsetChoice& charset) {
  if (charset.form == UnicodeForm::kUcs4) return 4;
  const bool isPairs = charset.name == "euc-jp-fix" || charset.name == "oasys_online";
  return charset.hasByteOrder() || isPairs ? 2 : 1;
}

size_t badSequenceLength(const CharsetChoice& charset, const uint8_t* text, size_t length,
                         bool atEnd) {
  if (charset.form == UnicodeForm::kUtf8) {
    const ScanResult scan = scanUnicode(charset.form, false, text, 1);
    size_t end = scan.end == ScanEnd::kAll ? 1 : 2;
    while (end < length && end > 1 && (text[end] & 0xC0) == 0x80) ++end;
    return std::min(end, length);
  }
  const size_t unit = unitSize(charset);
  if (unit > 1 && !standsAlone(charset, text[0])) return length >= unit ? unit : atEnd ? length : 0;
  for (const Form& form : kForms)
    if (charset.name.starts_with(form.charset)) return lengthIn(form, text, length, atEnd);
  return 1;
}

}  // namespace ksv_kit
