// How the bulk path finds the characters of ISO-2022-JP: by the group that is
// designated where they stand.
#pragma once

#include <cstring>
#include <string_view>

#include "cconv/bulk/byte_codes.h"
#include "cconv/engine/iso_2022_designations.h"

namespace ksv::source_forms {

class Iso2022Jp {
 public:
  // An escape sequence and a pair; another sequence behind the first is the engine's.
  static constexpr ptrdiff_t kLongestInput = 8;
  static constexpr ptrdiff_t kLongestShortInput = 2;
  static constexpr bool kShifts = true;
  static constexpr bool kIsUnicode = false;
  static constexpr uint32_t kShiftStates = 6;
  static constexpr uint32_t kPagesOfState = 257;
  // The groups that texts are mostly made of: one of two-byte codes, and either of these.
  static constexpr CharsetId kPairGroup = charset_id::kJisX0208;
  static constexpr CharsetId kSingleGroups[] = {charset_id::kIso646Irv, charset_id::kJisX0201Latin};
  static constexpr size_t kPages = kShiftStates * kPagesOfState;

  explicit Iso2022Jp(const TableCursor& cursor) : cursor_(cursor) {}

  // The last byte of what designates a group.
  static char finalOf(CharsetId group) { return designationBytes(group).back(); }

  // The place of the designated group among those that can be read; kShiftStates for
  // any other.
  static uint32_t shiftOf(const BulkPosition& at) {
    uint32_t state = 0;
    while (state < kShiftStates && kGroups[state] != at.decoderState) ++state;
    return state;
  }

  // Takes an escape sequence in front of a character. False where the engine has to:
  // at an unknown one, and at that of plane 2, which holds for one character only.
  static bool takeShift(BulkPosition& at) {
    if (at.input[0] != kEscape) return true;
    const std::string_view text(reinterpret_cast<const char*>(at.input) + 1, 3);
    const Designation* designation = designationAt(text);
    if (designation == nullptr || designation->codeFlag != 0) return false;
    at.decoderState = designation->group;
    at.input += 1 + designation->bytes.size();
    return true;
  }

  Found next(const BulkPosition& at) const {
    const uint32_t state = shiftOf(at);
    if (state >= kShiftStates) return kNothing;
    const uint32_t first = at.input[0];
    const auto* singles = cursor_.page(state * kPagesOfState + kSingleBytes, makeCode);
    if (singles == nullptr) return kNothing;
    if (const Entry single = (*singles)[first]; single != kNoEntry)
      return {single, 1, ShortTable::kSingles + first};
    const auto* pairs = cursor_.page(state * kPagesOfState + first, makeCode);
    if (pairs == nullptr) return kNothing;
    return {(*pairs)[at.input[1]], 2, first << 8 | at.input[1]};
  }

  template <AsciiOutput kAscii>
  static void runShort(const RunTables& run, BulkPosition& position, uint32_t wanted) {
    ByteCodes::runShort<kAscii>(run, position, wanted);
  }

  static uint32_t putSingle(uint32_t code, uint8_t* bytes) {
    return ByteCodes::putSingle(code, bytes);
  }
  // Of one group by itself there is too little in a row.
  static RunFunction runByVectors(AsciiOutput) { return nullptr; }
  static RunFunction runDesignating() { return nullptr; }

  static bool takeLast(const RunTables& run, BulkPosition& at, ptrdiff_t left) {
    return ByteCodes::takeLast(run, at, left);
  }

 private:
  static constexpr uint32_t kSingleBytes = 256;  // the page of single bytes
  static constexpr CharsetId kGroups[kShiftStates] = {
      charset_id::kIso646Irv, charset_id::kJisX0201Latin, charset_id::kJisX0201Kana,
      charset_id::kJisC6226,  charset_id::kJisX0208,      charset_id::kJisX0213};

  // The code behind the escape sequence of its group.
  static int32_t makeCode(uint32_t index, uint8_t* bytes) {
    const uint32_t page = index >> 8;
    const std::string_view escape = designationBytes(kGroups[page / kPagesOfState]);
    uint8_t* end = bytes;
    *end++ = kEscape;
    std::memcpy(end, escape.data(), escape.size());
    end += escape.size();
    const uint32_t first = page % kPagesOfState;
    if (first != kSingleBytes) *end++ = static_cast<uint8_t>(first);
    *end++ = static_cast<uint8_t>(index);
    return static_cast<int32_t>(end - bytes);
  }

  const TableCursor cursor_;
};

}  // namespace ksv::source_forms
