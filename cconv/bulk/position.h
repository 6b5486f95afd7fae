// Where a conversion by the bulk path stands, which is kept out of the record meanwhile.
#pragma once

#include <cstdint>

#include "cconv/bulk/entries.h"
#include "ksv_cconv.h"

namespace ksv {

// The pieces of a run have to stand in its loop, or the position would live in memory,
// which every output that is written could change for all the compiler knows.
#define KSV_IN_LOOP [[gnu::always_inline]] inline

// Where a conversion stands.
struct BulkPosition {
  const uint8_t* input;
  uint8_t* output;
  uint32_t characters;
  uint32_t units;
  const uint8_t* behindReturn;  // behind the carriage return that was read last
  uint32_t decoderState;        // the designated groups, of charsets with escape sequences
  uint32_t designatedGroup;

  // Puts a short entry out.
  KSV_IN_LOOP void take(ShortEntry entry) {
    storeShort(output, entry);
    output += shortLength(entry);
  }
  // Takes the character of an entry of any length, read from so many bytes. designates: the output
  // has escape sequences, and so may the entry. The line feed of a pair that is converted is
  // dropped.
  KSV_IN_LOOP void takeWhole(Entry entry, uint32_t bytes, bool designates) {
    const bool isDropped = (entry & kIsLineFeed) != 0 && behindReturn == input;
    input += bytes;
    ++characters;
    if (isDropped) return;
    const bool isDesignated = designates && designatedGroupOf(entry) == designatedGroup;
    const Entry written = isDesignated ? withoutDesignation(entry) : entry;
    storeBytes(output, written);
    output += outputLength(written);
    units += designates ? 1 : unitCount(written);
    if (designates) designatedGroup = designatedGroupOf(entry);
    if ((entry & kIsCarriageReturn) != 0) behindReturn = input;
  }
  KSV_IN_LOOP void advance(uint32_t bytes, uint32_t count) {
    input += bytes;
    characters += count;
    units += count;
  }
};

inline BulkPosition positionOf(const ConverterRecord& record) {
  const uint8_t* const input = record.input + record.inputPosition;
  return {input,
          record.output + record.outputPosition,
          0,
          0,
          record.rawCode == '\r' ? input : nullptr,
          record.decoderState,
          record.designatedGroup};
}

// Leaves the record where the run has come to.
inline void takeOver(ConverterRecord& record, const BulkPosition& end) {
  const auto advanced = [](int32_t count, uint32_t by) {
    return static_cast<int32_t>(static_cast<uint32_t>(count) + by);
  };
  record.inputPosition = static_cast<int32_t>(end.input - record.input);
  record.outputPosition = static_cast<int32_t>(end.output - record.output);
  record.charactersRead = advanced(record.charactersRead, end.characters);
  record.unitsWritten = advanced(record.unitsWritten, end.units);
  record.decoderState = end.decoderState;
  record.designatedGroup = end.designatedGroup;
  // All that the engine asks of the character before.
  record.rawCode = end.behindReturn == end.input ? '\r' : 0;
}

}  // namespace ksv
