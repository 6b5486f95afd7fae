// Runs over ISO-2022-JP (RFC 1468) by windows.
#pragma once

#include "cconv/bulk/vectors/read_piece.h"

namespace ksv::vector_runs::by_windows {
namespace {

struct IsByte {
  const char byte;

  KSV_IN_LOOP Bytes operator()(Bytes bytes) const {
    return as<Bytes>(bytes == static_cast<uint8_t>(byte));
  }
};

struct IsGraphic {
  KSV_IN_LOOP Bytes operator()(Bytes bytes) const {
    return as<Bytes>(as<SignedBytes>(bytes) > 0x20) & as<Bytes>(bytes != 0x7F);
  }
};

KSV_IN_LOOP ShiftedBytes shiftedBytes(const ShiftedTables& run, const uint8_t* input,
                                      uint64_t notAscii) {
  const uint64_t graphic = whereInBlock(input, IsGraphic());
  const uint64_t escape = whereInBlock(input, IsByte{0x1B});
  if (escape == 0) return {0, 0, graphic, notAscii};
  return {escape & whereInBlock(input + 1, IsByte{'$'}) &
              whereInBlock(input + 2, IsByte{run.pairFinal}),
          escape & whereInBlock(input + 1, IsByte{'('}) &
              whereInBlock(input + 2, IsByte{run.singleFinal}),
          graphic, notAscii};
}

// Characters of ISO-2022-JP that have been read: pairs as one value, and ASCII.
struct ShiftedPiece : ReadPiece {
  // Goes on as long as there are characters in a row, and leaves the position behind the last; what
  // is designated there stays so.
  KSV_IN_LOOP void read(const ShiftedTables& run, BulkPosition& at, uint32_t wanted) {
    while (count < kMost && wanted - count >= kLeastWanted) {
      const bool inDouble = at.decoderState == run.pairGroup;
      const uint64_t notAscii =
          whereInBlock(at.input, IsHigh()) | stopsInBlock(run.singles, at.input);
      if (!inDouble && notAscii == 0 && count > 0) return;
      const ShiftedPlaces places(shiftedBytes(run, at.input, notAscii), inDouble);
      if (places.starts == 0) return;
      readBlock(at.input, places);
      const uint32_t last = 63 - static_cast<uint32_t>(std::countl_zero(places.starts));
      const uint32_t behind = last + 1 + static_cast<uint32_t>(places.pairs >> last & 1);
      at.decoderState = (places.inDouble >> last & 1) != 0 ? run.pairGroup : run.singleGroup;
      at.input += behind;
    }
  }

  KSV_IN_LOOP void readBlock(const uint8_t* input, const ShiftedPlaces& places) {
    for (uint32_t i = 0; i < kBlock; i += 8) {
      const uint32_t kept = places.starts >> i & 0xFF;
      const uint64_t isPair = kBitsAsBytes.bytes[places.pairs >> i & 0xFF];
      const uint64_t here = blockAt(input + i);
      const uint64_t next = blockAt(input + i + 1);
      const Window lower = as<Window>(TwoHalves{(isPair & next) | (~isPair & here), 0});
      const Window upper = as<Window>(TwoHalves{isPair & here, 0});
      storeWindow(reinterpret_cast<uint8_t*>(values + count),
                  shuffledWindow(zippedLow(lower, upper), windowAt(kKeptOfEight.units[kept])));
      count += kKeptOfEight.counts[kept];
    }
  }
};

// What characters that have been read are written as.
template <AsciiOutput kAscii>
struct ShiftedEntries {
  const RunTables& pairs;

  KSV_IN_LOOP ShortEntry operator()(uint16_t value) const {
    const ShortEntry pair = pairs.at(value);
    return value < 0x80 ? asciiEntry(value) : pair;
  }

 private:
  static ShortEntry asciiEntry(uint32_t code) {
    constexpr uint32_t kLength = kAscii == AsciiOutput::kBytes ? 1 : 2;
    return kIsShortEntry | kLength << 24 | (kAscii == AsciiOutput::kBigUnits ? code << 8 : code);
  }
};

// Goes on over the characters that stand before the first without an entry, by what has been read
// from there already: there are no other escape sequences in between than the two.
template <AsciiOutput kAscii>
void takeKnownShifted(const ShiftedTables& run, BulkPosition& at, const ShiftedPiece& piece) {
  for (uint32_t i = 0; i < piece.count; ++i) {
    const ShortEntry entry = ShiftedEntries<kAscii>{run.pairs}(piece.values[i]);
    if (entry == kNoShortEntry) return;
    while (at.input[0] == 0x1B) {
      at.decoderState = at.input[1] == '$' ? run.pairGroup : run.singleGroup;
      at.input += 3;
    }
    at.take(entry);
    at.advance(at.decoderState == run.pairGroup ? 2 : 1, 1);
  }
}

template <AsciiOutput kAscii>
void runIso2022Jp(const ShiftedTables& run, BulkPosition& position, uint32_t wanted) {
  BulkPosition at = position;
  while (wanted - at.characters >= kLeastWanted) {
    if (at.decoderState == run.singleGroup) {
      const uint64_t others =
          whereInBlock(at.input, IsHigh()) | stopsInBlock(run.singles, at.input);
      if (takeLeadingAscii<kAscii>(at, others)) continue;
      if (takeLineEnd<false>(run.singles, at, at.input[0], 1)) continue;
    }
    ShiftedPiece piece;
    const BulkPosition start = at;
    piece.read(run, at, wanted - at.characters);
    if (piece.count == 0) break;
    if (!piece.putAll<false>(run.pairs, at, ShiftedEntries<kAscii>{run.pairs})) {
      at = start;
      takeKnownShifted<kAscii>(run, at, piece);
      break;
    }
    at.characters += piece.count;
    at.units += piece.count;
  }
  position = at;
}

}  // namespace
}  // namespace ksv::vector_runs::by_windows
