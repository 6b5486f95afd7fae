// The tables by which runs by window shuffle bytes. They are data, and the same for all processors.
#pragma once

#include <cstdint>

namespace ksv::vector_runs {

// How the bytes or units of eight are kept of which a bit is set, the first ones in front.
struct KeptOfEight {
  alignas(8) uint8_t bytes[256][8];
  alignas(16) uint8_t units[256][16];
  uint8_t counts[256];
};
extern const KeptOfEight kKeptOfEight;

// Four short entries pushed together, by their lengths.
struct PushedFour {
  alignas(16) uint8_t places[256][16];
  uint8_t bytes[256];
};
extern const PushedFour kPushedFour;

// How the next four characters lie in the input, by which of seven bytes begin a pair.
struct FourCodes {
  // Of each of the four: its last byte, its first where it has two, and what makes a single byte
  // the index of its entry.
  alignas(16) uint8_t places[128][16];
  alignas(16) uint8_t singles[128][16];
};
extern const FourCodes kFourCodes;

// How eight bytes of two each are pushed together of which a bit tells that the second counts.
struct OneOrTwo {
  alignas(16) uint8_t places[256][16];
};
extern const OneOrTwo kOneOrTwo;

// A bit for each of eight bytes, as all the bits of the byte.
struct BitsAsBytes {
  uint64_t bytes[256];
};
extern const BitsAsBytes kBitsAsBytes;

}  // namespace ksv::vector_runs
