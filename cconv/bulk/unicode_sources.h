// How the bulk path finds the characters of the Unicode forms.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cconv/bulk/source_form.h"
#include "cconv/engine/composition.h"
#include "common/byte_order.h"
#include "common/utf16.h"

namespace ksv::source_forms {

// What the Unicode forms share: entries are found by the value.
class UnicodeSource : public Unshifted {
 public:
  static constexpr size_t kPages = 0x110000 >> 8;
  static constexpr bool kIsUnicode = true;

  // A mark may compose with the character before it. The bulk path stops at it and
  // goes back over that character, so nothing else has to look ahead.
  static bool isMark(uint32_t value) { return standaloneMark(value) != 0; }

 protected:
  explicit UnicodeSource(const TableCursor& cursor) : cursor_(cursor) {}

  template <typename MakeBytes>
  Found find(uint32_t value, uint32_t length, MakeBytes makeBytes) const {
    if (value > 0x10FFFF) return kNothing;
    const auto* page = cursor_.page(value >> 8, makeBytes);
    if (page == nullptr) return kNothing;
    return {(*page)[value & 0xFF], length,
            value < ShortTable::kSingles ? value : ShortTable::kNoIndex};
  }

 private:
  const TableCursor cursor_;
};

class Utf8 : public UnicodeSource {
 public:
  static constexpr ptrdiff_t kLongestShortInput = 3;

  explicit Utf8(const TableCursor& cursor) : UnicodeSource(cursor) {}

  // As leniently as the decoder reads.
  Found next(const BulkPosition& at) const {
    const uint8_t* const input = at.input;
    const uint32_t lead = input[0];
    if (lead < 0xC0) return find(lead, 1, makeBytes);
    if (lead < 0xE0) return find(twoBytes(input), 2, makeBytes);
    if (lead < 0xF0) return find(threeBytes(input), 3, makeBytes);
    if (lead >= 0xF8) return kNothing;
    const uint32_t lastThree =
        (input[1] & 0x3Fu) << 12 | (input[2] & 0x3Fu) << 6 | (input[3] & 0x3Fu);
    return find((lead & 0x07) << 18 | lastThree, 4, makeBytes);
  }

  template <AsciiOutput kAscii>
  static void runShort(const RunTables& run, BulkPosition& position, uint32_t wanted) {
    BulkPosition at = position;
    while (wanted - at.characters >= 8) {
      const uint64_t eight = blockAt(at.input);
      if (const uint32_t leading = leadingAscii(eight);
          kAscii != AsciiOutput::kOther && leading > 0) {
        if (takeAscii<kAscii>(run, at, wanted, leading) > 0) continue;
      }
      if (areThreeBytesEach(at.input, eight)) {
        const uint32_t values[4] = {threeBytes(at.input), threeBytes(at.input + 3),
                                    threeBytes(at.input + 6), threeBytes(at.input + 9)};
        if (takeFour(run, at, values, 12)) continue;
      }
      if (!runOne(run, at)) break;
    }
    while (at.characters < wanted && runOne(run, at)) {
    }
    position = at;
  }

  KSV_IN_LOOP static bool runOne(const RunTables& run, BulkPosition& at) {
    const uint32_t lead = at.input[0];
    if (lead < 0xC0) return takeOne(run, at, lead, 1);
    if (lead < 0xE0) return takeOne(run, at, twoBytes(at.input), 2);
    return lead < 0xF0 && takeOne(run, at, threeBytes(at.input), 3);
  }

  static RunFunction runByVectors(AsciiOutput ascii) {
    return vector_runs::levelRuns().utf8(ascii);
  }
  static RunFunction runDesignating() { return vector_runs::levelRuns().utf8Designating(); }
  static uint32_t putSingle(uint32_t code, uint8_t* bytes) {
    return static_cast<uint32_t>(makeBytes(code, bytes));
  }
  Entry entryOf(uint32_t value) const { return find(value, 0, makeBytes).entry; }

  KSV_IN_LOOP static bool takeLast(const RunTables& run, BulkPosition& at, ptrdiff_t left) {
    if (left <= 0) return false;
    const uint32_t lead = at.input[0];
    return left >= (lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : 3) && runOne(run, at);
  }

 private:
  // Whether four characters of three bytes follow each other.
  KSV_IN_LOOP static bool areThreeBytesEach(const uint8_t* input, uint64_t firstEight) {
    return (firstEight & 0xC0F0C0C0F0C0C0F0) == 0x80E08080E08080E0 &&
           (blockAt(input + 4) & 0xC0C0F0C0C0F0C0C0) == 0x8080E08080E08080;
  }

  static uint32_t twoBytes(const uint8_t* input) {
    return (input[0] & 0x1Fu) << 6 | (input[1] & 0x3Fu);
  }
  static uint32_t threeBytes(const uint8_t* input) {
    return (input[0] & 0x0Fu) << 12 | (input[1] & 0x3Fu) << 6 | (input[2] & 0x3Fu);
  }

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

// Units of two bytes.
class TwoByteSource : public UnicodeSource {
 protected:
  explicit TwoByteSource(const TableCursor& cursor) : UnicodeSource(cursor) {}

  template <bool kBigEndian>
  KSV_IN_LOOP static bool takeLastUnit(const RunTables& run, BulkPosition& at, ptrdiff_t left) {
    return left >= 2 && takeOne(run, at, readUnit(at.input, 2, kBigEndian), 2);
  }

  template <AsciiOutput kAscii, bool kBigEndian>
  static void runUnits(const RunTables& run, BulkPosition& position, uint32_t wanted) {
    BulkPosition at = position;
    while (wanted - at.characters >= 8) {
      if (kAscii == AsciiOutput::kBytes && takeAsciiUnits<kBigEndian>(run, at, wanted)) continue;
      const uint32_t values[4] = {
          readUnit(at.input, 2, kBigEndian), readUnit(at.input + 2, 2, kBigEndian),
          readUnit(at.input + 4, 2, kBigEndian), readUnit(at.input + 6, 2, kBigEndian)};
      if (takeFour(run, at, values, 8)) continue;
      if (!takeOne(run, at, values[0], 2)) break;
    }
    while (at.characters < wanted && takeOne(run, at, readUnit(at.input, 2, kBigEndian), 2)) {
    }
    position = at;
  }
};

template <bool kBigEndian>
class Utf16 : public TwoByteSource {
 public:
  static constexpr ptrdiff_t kLongestShortInput = 2;

  explicit Utf16(const TableCursor& cursor) : TwoByteSource(cursor) {}

  Found next(const BulkPosition& at) const {
    const uint8_t* const input = at.input;
    const uint32_t unit = readUnit(input, 2, kBigEndian);
    if (!isSurrogate(unit)) return find(unit, 2, makeBytes);
    const uint32_t second = readUnit(input + 2, 2, kBigEndian);
    if (!isHighSurrogate(unit) || !isLowSurrogate(second)) return kNothing;
    return find(joinSurrogates(unit, second), 4, makeBytes);
  }

  template <AsciiOutput kAscii>
  static void runShort(const RunTables& run, BulkPosition& position, uint32_t wanted) {
    runUnits<kAscii, kBigEndian>(run, position, wanted);
  }

  static RunFunction runByVectors(AsciiOutput ascii) {
    return vector_runs::levelRuns().twoByteUnits(ascii, kBigEndian);
  }
  static RunFunction runDesignating() {
    return vector_runs::levelRuns().twoByteUnitsDesignating(kBigEndian);
  }
  static uint32_t putSingle(uint32_t code, uint8_t* bytes) {
    return static_cast<uint32_t>(makeBytes(code, bytes));
  }
  Entry entryOf(uint32_t value) const { return find(value, 0, makeBytes).entry; }

  static bool takeLast(const RunTables& run, BulkPosition& at, ptrdiff_t left) {
    return takeLastUnit<kBigEndian>(run, at, left);
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    if (isSurrogate(value) || isMark(value)) return 0;
    if (value < 0x10000) {
      putUnit(bytes, value, 2, kBigEndian);
      return 2;
    }
    putUnit(bytes, highSurrogateOf(value), 2, kBigEndian);
    putUnit(bytes + 2, lowSurrogateOf(value), 2, kBigEndian);
    return 4;
  }
};

// One unit a character: UCS-2 and UCS-4, and codes of two bytes each.
template <uint32_t kWidth, bool kBigEndian>
class FixedUnits : public TwoByteSource {
 public:
  static constexpr ptrdiff_t kLongestShortInput = kWidth;

  explicit FixedUnits(const TableCursor& cursor) : TwoByteSource(cursor) {}

  Found next(const BulkPosition& at) const {
    const uint8_t* const input = at.input;
    return find(readUnit(input, kWidth, kBigEndian), kWidth, makeBytes);
  }

  template <AsciiOutput kAscii>
  static void runShort(const RunTables& run, BulkPosition& position, uint32_t wanted) {
    if constexpr (kWidth == 2) runUnits<kAscii, kBigEndian>(run, position, wanted);
  }

  static RunFunction runByVectors(AsciiOutput ascii) {
    return kWidth == 2 ? vector_runs::levelRuns().twoByteUnits(ascii, kBigEndian) : nullptr;
  }
  static RunFunction runDesignating() {
    return kWidth == 2 ? vector_runs::levelRuns().twoByteUnitsDesignating(kBigEndian) : nullptr;
  }
  static uint32_t putSingle(uint32_t code, uint8_t* bytes) {
    return static_cast<uint32_t>(makeBytes(code, bytes));
  }
  Entry entryOf(uint32_t value) const { return find(value, 0, makeBytes).entry; }

  static bool takeLast(const RunTables& run, BulkPosition& at, ptrdiff_t left) {
    if (left < ptrdiff_t{kWidth}) return false;
    const uint32_t value = readUnit(at.input, kWidth, kBigEndian);
    return value < ShortTable::kSingles && takeOne(run, at, value, kWidth);
  }

 private:
  static int32_t makeBytes(uint32_t value, uint8_t* bytes) {
    putUnit(bytes, value, kWidth, kBigEndian);
    return static_cast<int32_t>(kWidth);
  }
};

}  // namespace ksv::source_forms
