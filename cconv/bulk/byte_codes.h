// How the bulk path finds codes of bytes: those of one byte, of two, and of EUC and GB18030.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cconv/bulk/source_form.h"

namespace ksv::source_forms {

// Codes of one byte or more, where a byte that is a code stands alone whatever
// follows, and then a pair; three bytes behind 8F, as EUC has them, and four as
// GB18030 has them, where there is no such pair.
class ByteCodes : public Unshifted {
 public:
  static constexpr uint32_t kFirstTriplePage = 257;
  static constexpr uint32_t kFirstQuadPage = kFirstTriplePage + 256;
  static constexpr uint32_t kQuads = 126 * 10 * 126 * 10;
  static constexpr size_t kPages = kFirstQuadPage + kQuads / 256 + 1;
  static constexpr ptrdiff_t kLongestShortInput = 2;

  explicit ByteCodes(const TableCursor& cursor)
      : cursor_(cursor), singles_(cursor.page(kSingleBytes, makeSingle)) {}

  Found next(const BulkPosition& at) const {
    const uint8_t* const input = at.input;
    if (singles_ == nullptr) return kNothing;
    const uint32_t first = input[0];
    if (const Entry single = (*singles_)[first]; single != kNoEntry)
      return {single, 1, ShortTable::kSingles + first};
    const auto* pairs = cursor_.page(first, makePair);
    if (pairs == nullptr) return kNothing;
    if (const Entry pair = (*pairs)[input[1]]; pair != kNoEntry)
      return {pair, 2, first << 8 | input[1]};
    if (first == kSingleShift3) return nextTriple(input);
    return isQuad(input) ? nextQuad(input) : kNothing;
  }

  template <AsciiOutput kAscii>
  static void runShort(const RunTables& run, BulkPosition& position, uint32_t wanted) {
    BulkPosition at = position;
    while (wanted - at.characters >= 8) {
      const uint64_t eight = blockAt(at.input);
      const uint32_t leading = leadingAscii(eight);
      if (kAscii != AsciiOutput::kOther && leading > 0) {
        if (takeAscii<kAscii>(run, at, wanted, leading) > 0) continue;
      } else if (run.hasSingles(at.input[0]) && runSingles(run, at)) {
        continue;
      }
      if (runPairs(run, at)) continue;
      if (!runOne(run, at)) break;
    }
    while (at.characters < wanted && runOne(run, at)) {
    }
    position = at;
  }

  static RunFunction runByVectors(AsciiOutput ascii) {
    return vector_runs::levelRuns().byteCodes(ascii);
  }
  static RunFunction runDesignating() { return vector_runs::levelRuns().byteCodesDesignating(); }
  static uint32_t putSingle(uint32_t code, uint8_t* bytes) {
    return static_cast<uint32_t>(makeSingle(code, bytes));
  }

  KSV_IN_LOOP static bool takeLast(const RunTables& run, BulkPosition& at, ptrdiff_t left) {
    // A pair is not looked for in the last byte.
    return left >= 2 ? runOne(run, at) : left == 1 && runSingle(run, at);
  }

 private:
  static constexpr uint32_t kSingleBytes = 256;  // the page of single bytes
  static constexpr uint8_t kSingleShift3 = 0x8F;

  KSV_IN_LOOP static bool runPairs(const RunTables& run, BulkPosition& at) {
    const uint32_t pairs[4] = {pairAt(at.input), pairAt(at.input + 2), pairAt(at.input + 4),
                               pairAt(at.input + 6)};
    return takeFour(run, at, pairs, 8);
  }

  // Eight single bytes in a row.
  KSV_IN_LOOP static bool runSingles(const RunTables& run, BulkPosition& at) {
    ShortEntry entries[8];
    ShortEntry all = kIsShortEntry;
    for (int i = 0; i < 8; ++i) {
      entries[i] = run.at(ShortTable::kSingles + at.input[i]);
      all &= entries[i];
    }
    if (all == 0) return false;
    for (int i = 0; i < 8; ++i) at.take(entries[i]);
    at.advance(8, 8);
    return true;
  }

  KSV_IN_LOOP static bool runSingle(const RunTables& run, BulkPosition& at) {
    return takeOne(run, at, ShortTable::kSingles + at.input[0], 1);
  }

  KSV_IN_LOOP static bool runOne(const RunTables& run, BulkPosition& at) {
    return runSingle(run, at) || takeOne(run, at, pairAt(at.input), 2);
  }

  static uint32_t pairAt(const uint8_t* input) {
    return static_cast<uint32_t>(input[0]) << 8 | input[1];
  }

  Found nextTriple(const uint8_t* input) const {
    const auto* triples = cursor_.page(kFirstTriplePage + input[1], makeTriple);
    return triples != nullptr ? Found{(*triples)[input[2]], 3, ShortTable::kNoIndex} : kNothing;
  }

  static bool isQuad(const uint8_t* input) {
    const auto isHigh = [](uint8_t byte) { return byte >= 0x81 && byte <= 0xFE; };
    const auto isDigit = [](uint8_t byte) { return byte >= '0' && byte <= '9'; };
    return isHigh(input[0]) && isDigit(input[1]) && isHigh(input[2]) && isDigit(input[3]);
  }

  Found nextQuad(const uint8_t* input) const {
    const uint32_t index =
        (((input[0] - 0x81u) * 10 + (input[1] - 0x30u)) * 126 + (input[2] - 0x81u)) * 10 +
        (input[3] - 0x30u);
    const auto* quads = cursor_.page(kFirstQuadPage + (index >> 8), makeQuad);
    return quads != nullptr ? Found{(*quads)[index & 0xFF], 4, ShortTable::kNoIndex} : kNothing;
  }

  static int32_t makeSingle(uint32_t code, uint8_t* bytes) {
    bytes[0] = static_cast<uint8_t>(code);
    return 1;
  }
  static int32_t makePair(uint32_t code, uint8_t* bytes) {
    putUnit(bytes, code, 2, true);
    return 2;
  }
  static int32_t makeTriple(uint32_t code, uint8_t* bytes) {
    bytes[0] = kSingleShift3;
    putUnit(bytes + 1, code - (kFirstTriplePage << 8), 2, true);
    return 3;
  }
  static int32_t makeQuad(uint32_t code, uint8_t* bytes) {
    const uint32_t index = code - (kFirstQuadPage << 8);
    if (index >= kQuads) return 0;
    bytes[0] = static_cast<uint8_t>(0x81 + index / 12600);
    bytes[1] = static_cast<uint8_t>(0x30 + index / 1260 % 10);
    bytes[2] = static_cast<uint8_t>(0x81 + index / 10 % 126);
    bytes[3] = static_cast<uint8_t>(0x30 + index % 10);
    return 4;
  }

  const TableCursor cursor_;
  const DirectTable::Page* const singles_;
};

}  // namespace ksv::source_forms
