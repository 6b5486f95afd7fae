// How the bulk path finds the characters of each form of input.
//
// next() finds the entry of the character at input, or kNoEntry, and how many bytes
// it is read from. At least kLongestInput bytes of input follow. The length comes
// from the input alone, not from the entry: so the processor begins with the next
// character before the tables have answered for this one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cconv/convert/composition.h"
#include "cconv/convert/direct_table.h"
#include "cconv/rules/text_units.h"

namespace ksv::source_forms {

// Bytes that a character is read from at most.
constexpr ptrdiff_t kLongestInput = 4;

struct Found {
  Entry entry;
  uint32_t length;
};
constexpr Found kNothing = {kNoEntry, 0};

inline void putUnit(uint8_t* bytes, uint32_t value, uint32_t width, bool bigEndian) {
  for (uint32_t i = 0; i < width; ++i) {
    bytes[bigEndian ? width - 1 - i : i] = static_cast<uint8_t>(value >> (8 * i));
  }
}

class BytePairs {
 public:
  static constexpr size_t kPages = 257;
  static constexpr bool kBytes = true;

  explicit BytePairs(const TableCursor& cursor)
      : cursor_(cursor), singles_(cursor.page(kSingleBytes, makeSingle)) {}

  Found next(const uint8_t* input) const {
    if (singles_ == nullptr) return kNothing;
    if (const Entry single = (*singles_)[input[0]]; single != kNoEntry) return {single, 1};
    const auto* pairs = cursor_.page(input[0], makePair);
    return pairs != nullptr ? Found{(*pairs)[input[1]], 2} : kNothing;
  }

 private:
  static constexpr uint32_t kSingleBytes = 256;  // the page of single bytes

  static int32_t makeSingle(uint32_t code, uint8_t* bytes) {
    bytes[0] = static_cast<uint8_t>(code);
    return 1;
  }
  static int32_t makePair(uint32_t code, uint8_t* bytes) {
    putUnit(bytes, code, 2, true);
    return 2;
  }

  const TableCursor cursor_;
  const DirectTable::Page* const singles_;
};

// What the Unicode forms share: entries are found by the value.
class UnicodeSource {
 public:
  static constexpr size_t kPages = 0x110000 >> 8;

 protected:
  explicit UnicodeSource(const TableCursor& cursor) : cursor_(cursor) {}

  // A mark may compose with the character before it. The bulk path stops at it and
  // goes back over that character, so nothing else has to look ahead.
  static bool isMark(uint32_t value) { return standaloneMark(value) != 0; }

  template <typename MakeBytes>
  Entry entryOf(uint32_t value, MakeBytes makeBytes) const {
    if (value > 0x10FFFF) return kNoEntry;
    const auto* page = cursor_.page(value >> 8, makeBytes);
    return page != nullptr ? (*page)[value & 0xFF] : kNoEntry;
  }

 private:
  const TableCursor cursor_;
};

class Utf8 : private UnicodeSource {
 public:
  using UnicodeSource::kPages;
  static constexpr bool kBytes = true;

  explicit Utf8(const TableCursor& cursor) : UnicodeSource(cursor) {}

  // As leniently as the decoder reads.
  Found next(const uint8_t* input) const {
    const uint32_t lead = input[0];
    if (lead < 0xC0) return {entryOf(lead, makeBytes), 1};
    const uint32_t second = input[1] & 0x3Fu;
    if (lead < 0xE0) return {entryOf((lead & 0x1F) << 6 | second, makeBytes), 2};
    const uint32_t third = input[2] & 0x3Fu;
    if (lead < 0xF0) return {entryOf((lead & 0x0F) << 12 | second << 6 | third, makeBytes), 3};
    if (lead >= 0xF8) return kNothing;
    const uint32_t fourth = input[3] & 0x3Fu;
    return {entryOf((lead & 0x07) << 18 | second << 12 | third << 6 | fourth, makeBytes), 4};
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    if (isMark(value)) return 0;
    if (value < 0x80) {
      bytes[0] = static_cast<uint8_t>(value);
      return 1;
    }
    const int32_t length = value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    for (int32_t i = length - 1; i > 0; --i, value >>= 6) {
      bytes[i] = static_cast<uint8_t>(0x80 | (value & 0x3F));
    }
    bytes[0] = static_cast<uint8_t>(0xF00u >> length | value);
    return length;
  }
};

template <bool kBigEndian>
class Utf16 : private UnicodeSource {
 public:
  using UnicodeSource::kPages;
  static constexpr bool kBytes = false;

  explicit Utf16(const TableCursor& cursor) : UnicodeSource(cursor) {}

  Found next(const uint8_t* input) const {
    const uint32_t unit = readUnit(input, 2, kBigEndian);
    if (!isSurrogate(unit)) return {entryOf(unit, makeBytes), 2};
    const uint32_t second = readUnit(input + 2, 2, kBigEndian);
    if (!isHighSurrogate(unit) || !isSurrogate(second) || isHighSurrogate(second)) return kNothing;
    return {entryOf(joinSurrogates(unit, second), makeBytes), 4};
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    if (isSurrogate(value) || isMark(value)) return 0;
    if (value < 0x10000) {
      putUnit(bytes, value, 2, kBigEndian);
      return 2;
    }
    putUnit(bytes, 0xD7C0 + (value >> 10), 2, kBigEndian);
    putUnit(bytes + 2, 0xDC00 | (value & 0x3FF), 2, kBigEndian);
    return 4;
  }
};

// One unit a character: UCS-2 and UCS-4.
template <uint32_t kWidth, bool kBigEndian>
class FixedUnits : private UnicodeSource {
 public:
  using UnicodeSource::kPages;
  static constexpr bool kBytes = false;

  explicit FixedUnits(const TableCursor& cursor) : UnicodeSource(cursor) {}

  Found next(const uint8_t* input) const {
    return {entryOf(readUnit(input, kWidth, kBigEndian), makeBytes), kWidth};
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    putUnit(bytes, value, kWidth, kBigEndian);
    return static_cast<int32_t>(kWidth);
  }
};

}  // namespace ksv::source_forms
