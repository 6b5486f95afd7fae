// What ISO-2022-KR and ISO-2022-CN have in common: bytes of seven bits, shifts, escape sequences.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace ksv_kit::iso_2022 {

constexpr uint8_t kShiftOut = 0x0E;
constexpr uint8_t kShiftIn = 0x0F;
constexpr uint8_t kEscape = 0x1B;

constexpr bool isLineEnd(uint8_t byte) { return byte == '\n' || byte == '\r'; }
constexpr bool isShift(uint8_t byte) {
  return byte == kShiftOut || byte == kShiftIn || byte == kEscape;
}
// Half of a pair, without and with its high bit.
constexpr bool isLowHalf(uint8_t byte) { return byte >= 0x21 && byte <= 0x7E; }
constexpr bool isHighHalf(uint8_t byte) { return byte >= 0xA1 && byte <= 0xFE; }

// How many bytes of ASCII stand at the front, which need no shift.
inline size_t asciiAtFront(std::span<const uint8_t> bytes) {
  const auto end = std::find_if(bytes.begin(), bytes.end(),
                                [](uint8_t byte) { return byte >= 0x80 || isShift(byte); });
  return static_cast<size_t>(end - bytes.begin());
}

// What an escape sequence is.
enum class Escape { kNone, kCut, kKnown };

// Whether the bytes begin with the sequence, or are all of its beginning.
inline Escape matches(std::span<const uint8_t> bytes, std::string_view sequence) {
  const size_t length = std::min(bytes.size(), sequence.size());
  const bool isSame = std::equal(
      bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(length), sequence.begin(),
      [](uint8_t byte, char expected) { return byte == static_cast<uint8_t>(expected); });
  if (!isSame) return Escape::kNone;
  return length == sequence.size() ? Escape::kKnown : Escape::kCut;
}

// The length of an escape sequence that is not known here: up to three bytes of 20 to 2F, and one
// of 30 to 7E that ends it. What breaks off counts up to there; 0 when more bytes must tell.
inline size_t lengthOfUnknown(std::span<const uint8_t> bytes) {
  constexpr size_t kLongest = 5;
  for (size_t length = 1; length < kLongest; ++length) {
    if (length == bytes.size()) return 0;
    const uint8_t byte = bytes[length];
    if (byte >= 0x30 && byte <= 0x7E) return length + 1;
    if (byte < 0x20 || byte > 0x2F) return length;
  }
  return kLongest;
}

}  // namespace ksv_kit::iso_2022
