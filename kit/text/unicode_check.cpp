#include "kit/text/unicode_check.h"

#include <array>
#include <bit>

#include "common/byte_blocks.h"
#include "common/byte_order.h"
#include "common/utf16.h"
#include "kit/text/utf8_validation.h"

namespace ksv_kit {
namespace {

using ksv::blockAt;
using ksv::isHighSurrogate;
using ksv::isLowSurrogate;
using ksv::isSurrogate;
using ksv::readUnit16;

// What may follow a lead byte of UTF-8: the length of the sequence (0: no lead
// byte) and the bounds of its second byte; the later ones are 80-BF.
struct LeadByte {
  uint8_t length;
  uint8_t secondLow;
  uint8_t secondHigh;
};

constexpr std::array<LeadByte, 256> makeLeadBytes() {
  std::array<LeadByte, 256> leads{};
  for (size_t lead = 0xC2; lead <= 0xDF; ++lead) leads[lead] = {2, 0x80, 0xBF};
  for (size_t lead = 0xE0; lead <= 0xEF; ++lead) leads[lead] = {3, 0x80, 0xBF};
  for (size_t lead = 0xF0; lead <= 0xF4; ++lead) leads[lead] = {4, 0x80, 0xBF};
  leads[0xE0].secondLow = 0xA0;
  leads[0xED].secondHigh = 0x9F;
  leads[0xF0].secondLow = 0x90;
  leads[0xF4].secondHigh = 0x8F;
  return leads;
}

constexpr std::array<LeadByte, 256> kLeadBytes = makeLeadBytes();

size_t skipAscii(const uint8_t* text, size_t at, size_t length) {
  constexpr uint64_t kHighBits = 0x8080808080808080u;
  while (length - at >= 16 && ((blockAt(text + at) | blockAt(text + at + 8)) & kHighBits) == 0)
    at += 16;
  while (at < length && text[at] < 0x80) ++at;
  return at;
}

bool isContinuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

// The leads E1-EC have no rule of their own for the second byte, and nearly all
// East Asian text begins with one of them.
size_t skipPlainThreeByte(const uint8_t* text, size_t at, size_t length) {
  while (length - at >= 3 && static_cast<uint8_t>(text[at] - 0xE1) <= 0xEC - 0xE1 &&
         isContinuation(text[at + 1]) && isContinuation(text[at + 2]))
    at += 3;
  return at;
}

// One sequence that does not begin with an ASCII byte: its length when it is
// well-formed (kAll), else how much of it is bad.
ScanResult scanSequence(const uint8_t* text, size_t length) {
  const LeadByte lead = kLeadBytes[text[0]];
  if (lead.length == 0) return {0, ScanEnd::kInvalid, 1};
  for (size_t i = 1; i < lead.length; ++i) {
    if (i == length) return {0, ScanEnd::kIncomplete, length};
    const bool fits =
        i == 1 ? text[i] >= lead.secondLow && text[i] <= lead.secondHigh : isContinuation(text[i]);
    if (!fits) return {0, ScanEnd::kInvalid, i};
  }
  return {lead.length, ScanEnd::kAll, 0};
}

// Where the last character of the text begins, as far as its bytes can tell.
size_t lastCharacterBegin(const uint8_t* text, size_t length) {
  constexpr size_t kMostContinuations = 3;
  size_t at = length - 1;
  while (at > 0 && length - at <= kMostContinuations && isContinuation(text[at])) --at;
  return at;
}

ScanResult scanUtf8(const uint8_t* text, size_t length) {
  constexpr size_t kWorthVectors = 64;
  size_t at = 0;
  if (length >= kWorthVectors) {
    const size_t whole = lastCharacterBegin(text, length);
    if (isSurelyUtf8(text, whole)) at = whole;
  }
  for (;;) {
    at = skipPlainThreeByte(text, at, length);
    at = skipAscii(text, at, length);
    if (at == length) return {length, ScanEnd::kAll, 0};
    const ScanResult one = scanSequence(text + at, length - at);
    if (one.end != ScanEnd::kAll) return {at, one.end, one.badLength};
    at += one.wellFormed;
  }
}

// Four units at a time, as far as none of them is a surrogate. A lane becomes
// zero exactly when its unit's high byte is D8-DF.
size_t skipPlainUnits(const uint8_t* text, size_t at, size_t length, bool bigEndian) {
  const bool highByteFirst = bigEndian == (std::endian::native == std::endian::little);
  const uint64_t mask = highByteFirst ? 0x00F800F800F800F8u : 0xF800F800F800F800u;
  const uint64_t surrogate = highByteFirst ? 0x00D800D800D800D8u : 0xD800D800D800D800u;
  while (length - at >= 8) {
    const uint64_t lanes = (blockAt(text + at) & mask) ^ surrogate;
    if (((lanes - 0x0001000100010001u) & ~lanes & 0x8000800080008000u) != 0) break;
    at += 8;
  }
  return at;
}

ScanResult scanSixteenBit(const uint8_t* text, size_t length, bool bigEndian, bool pairs) {
  size_t at = 0;
  for (;;) {
    at = skipPlainUnits(text, at, length, bigEndian);
    if (length - at < 2) break;
    const uint32_t unit = readUnit16(text + at, bigEndian);
    if (!isSurrogate(unit)) {
      at += 2;
      continue;
    }
    if (!pairs || !isHighSurrogate(unit)) return {at, ScanEnd::kInvalid, 2};
    if (length - at < 4) break;
    if (!isLowSurrogate(readUnit16(text + at + 2, bigEndian))) return {at, ScanEnd::kInvalid, 2};
    at += 4;
  }
  if (at == length) return {length, ScanEnd::kAll, 0};
  return {at, ScanEnd::kIncomplete, length - at};
}

ScanResult scanUcs4(const uint8_t* text, size_t length, bool bigEndian) {
  size_t at = 0;
  for (; length - at >= 4; at += 4) {
    const uint32_t first = readUnit16(text + at, bigEndian);
    const uint32_t second = readUnit16(text + at + 2, bigEndian);
    const uint32_t value = bigEndian ? first << 16 | second : second << 16 | first;
    if (value > 0x10FFFF || isSurrogate(value)) return {at, ScanEnd::kInvalid, 4};
  }
  if (at == length) return {length, ScanEnd::kAll, 0};
  return {at, ScanEnd::kIncomplete, length - at};
}

struct Mark {
  size_t length;
  bool bigEndian;
  uint8_t bytes[4];
};

size_t findMark(const Mark* marks, size_t count, bool orderIsFixed, const uint8_t* text,
                size_t length, bool& bigEndian) {
  for (const Mark* mark = marks; mark != marks + count; ++mark) {
    if (orderIsFixed && mark->bigEndian != bigEndian) continue;
    if (length < mark->length || std::memcmp(text, mark->bytes, mark->length) != 0) continue;
    bigEndian = mark->bigEndian;
    return mark->length;
  }
  return 0;
}

constexpr Mark kUtf8Mark = {3, false, {0xEF, 0xBB, 0xBF, 0}};
constexpr Mark kSixteenBitMarks[] = {{2, true, {0xFE, 0xFF, 0, 0}}, {2, false, {0xFF, 0xFE, 0, 0}}};
constexpr Mark kUcs4Marks[] = {{4, true, {0, 0, 0xFE, 0xFF}}, {4, false, {0xFF, 0xFE, 0, 0}}};

}  // namespace

ScanResult scanUnicode(UnicodeForm form, bool bigEndian, const uint8_t* text, size_t length) {
  switch (form) {
    case UnicodeForm::kUtf8:
      return scanUtf8(text, length);
    case UnicodeForm::kUtf16:
      return scanSixteenBit(text, length, bigEndian, true);
    case UnicodeForm::kUcs2:
      return scanSixteenBit(text, length, bigEndian, false);
    case UnicodeForm::kUcs4:
      return scanUcs4(text, length, bigEndian);
    case UnicodeForm::kNone:
      break;
  }
  return {length, ScanEnd::kAll, 0};
}

size_t byteOrderMark(UnicodeForm form, bool orderIsFixed, const uint8_t* text, size_t length,
                     bool& bigEndian) {
  bool unused = false;
  switch (form) {
    case UnicodeForm::kUtf8:
      return findMark(&kUtf8Mark, 1, false, text, length, unused);
    case UnicodeForm::kUtf16:
    case UnicodeForm::kUcs2:
      return findMark(kSixteenBitMarks, 2, orderIsFixed, text, length, bigEndian);
    case UnicodeForm::kUcs4:
      return findMark(kUcs4Marks, 2, orderIsFixed, text, length, bigEndian);
    case UnicodeForm::kNone:
      break;
  }
  return 0;
}

}  // namespace ksv_kit
