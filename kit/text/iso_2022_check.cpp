#include "kit/text/iso_2022_check.h"

#include <string_view>

#include "common/byte_blocks.h"

namespace ksv_kit {
namespace {

constexpr uint8_t kEscape = 0x1B;

constexpr std::string_view kDesignations[] = {
    "\x1B(B", "\x1B(J", "\x1B(I", "\x1B$B", "\x1B$@", "\x1B$(Q", "\x1B$(P",
};

bool isBetween(uint8_t byte, uint8_t low, uint8_t high) { return byte >= low && byte <= high; }

bool isPairByte(uint8_t byte) { return isBetween(byte, 0x21, 0x7E); }

// An escape sequence is ESC, a few bytes 20-2F, and one of 30-7E.
ScanResult unknownEscape(const uint8_t* text, size_t length) {
  constexpr size_t kMostBytesBetween = 3;
  size_t at = 1;
  while (at < length && at <= kMostBytesBetween && isBetween(text[at], 0x20, 0x2F)) ++at;
  if (at == length) return {0, ScanEnd::kIncomplete, length};
  return {0, ScanEnd::kInvalid, isBetween(text[at], 0x30, 0x7E) ? at + 1 : at};
}

// The length of the known escape sequence that the text begins with; 0: there is none.
size_t designationLength(std::string_view text) {
  for (const std::string_view designation : kDesignations)
    if (text.starts_with(designation)) return designation.size();
  return 0;
}

}  // namespace

Designation designationIn(std::string_view text) {
  for (const std::string_view designation : kDesignations)
    if (designation.starts_with(text))
      return text.size() == designation.size() ? Designation::kWhole : Designation::kBeginning;
  return Designation::kNone;
}

ScanResult Iso2022Scanner::scanEscape(const uint8_t* text, size_t length) {
  const std::string_view rest(reinterpret_cast<const char*>(text), length);
  if (const size_t known = designationLength(rest); known != 0) {
    set_ = text[1] == '$' ? Set::kPairs : text[2] == 'I' ? Set::kKana : Set::kSingle;
    return {known, ScanEnd::kAll, 0};
  }
  return unknownEscape(text, length);
}

ScanResult Iso2022Scanner::scanCharacter(const uint8_t* text, size_t length) const {
  constexpr ScanResult kOne = {1, ScanEnd::kAll, 0};
  constexpr ScanResult kBad = {0, ScanEnd::kInvalid, 1};
  const uint8_t first = text[0];
  if (set_ == Set::kSingle) return first < 0x80 ? kOne : kBad;
  if (set_ == Set::kKana) return first < 0x60 || isBetween(first, 0xA1, 0xDF) ? kOne : kBad;
  if (first == '\r' || first == '\n' || first == '\t') return kOne;
  if (!isPairByte(first)) return kBad;
  if (length == 1) return {0, ScanEnd::kIncomplete, 1};
  return isPairByte(text[1]) ? ScanResult{2, ScanEnd::kAll, 0} : kBad;
}

// Behind blocks of eight bytes that hold nothing but characters of the set.
size_t Iso2022Scanner::skipPlainBlocks(const uint8_t* text, size_t at, size_t length) const {
  constexpr uint64_t kOnes = 0x0101010101010101u;
  constexpr uint64_t kHighBits = 0x80 * kOnes;
  for (; length - at >= 8; at += 8) {
    const uint64_t block = ksv::blockAt(text + at);
    if ((block & kHighBits) != 0) break;
    const uint64_t escapes = block ^ kEscape * kOnes;
    const bool hasEscape = ((escapes - kOnes) & ~escapes & kHighBits) != 0;
    const bool arePairs =
        ((block + 0x5F * kOnes) & kHighBits) == kHighBits && ((block + kOnes) & kHighBits) == 0;
    if (set_ == Set::kSingle ? hasEscape : !arePairs) break;
  }
  return at;
}

// The length of the sound character that is no escape sequence, 0 for everything else.
size_t Iso2022Scanner::plainLength(const uint8_t* text, size_t length) const {
  const uint8_t first = text[0];
  if (set_ == Set::kSingle) return first < 0x80 && first != kEscape ? 1 : 0;
  const bool isPair = set_ == Set::kPairs && length > 1 && isPairByte(first) && isPairByte(text[1]);
  return isPair ? 2 : 0;
}

// Most text is plain characters in short runs, with longer ones among them.
size_t Iso2022Scanner::skipPlain(const uint8_t* text, size_t at, size_t length) {
  constexpr size_t kWorthBlocks = 8;
  const size_t begin = at;
  size_t count = 0;
  while (at < length) {
    const size_t plain = plainLength(text + at, length - at);
    if (plain == 0) break;
    at += plain;
    if (++count % kWorthBlocks == 0) at = skipPlainBlocks(text, at, length);
  }
  if (at != begin) escapesAtEnd_ = 0;
  return at;
}

ScanResult Iso2022Scanner::scan(const uint8_t* text, size_t length) {
  size_t at = 0;
  for (;;) {
    at = skipPlain(text, at, length);
    if (at == length) break;
    const bool isEscape = text[at] == kEscape;
    const ScanResult one =
        isEscape ? scanEscape(text + at, length - at) : scanCharacter(text + at, length - at);
    if (one.end != ScanEnd::kAll) return {at, one.end, one.badLength};
    escapesAtEnd_ = isEscape ? escapesAtEnd_ + one.wellFormed : 0;
    at += one.wellFormed;
  }
  return {length, ScanEnd::kAll, 0};
}

}  // namespace ksv_kit
