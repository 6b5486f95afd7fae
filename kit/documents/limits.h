// Bounds on what a foreign document may make its reader hold. Sizes and counts in a document are
// claims: nothing is allocated for them before its bytes are there, and what is held for tables and
// chains is a part of what was read of them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv_kit::documents::limits {

// Memory for the pages of an open file.
inline constexpr size_t kPageSize = 4096;
inline constexpr size_t kPages = 64;

// Streams whose chains are remembered.
inline constexpr size_t kOpenStreams = 8;

// Bytes that are read or copied at once.
inline constexpr size_t kBlock = 256 * 1024;

// Different damages that are told; the others are counted.
inline constexpr size_t kMostDamages = 10000;

// Sectors of 2^9 and 2^12 bytes are usual; others are read as far as they can hold an entry of the
// directory and a mini sector.
inline constexpr unsigned kLeastSectorShift = 7;
inline constexpr unsigned kMostSectorShift = 16;
inline constexpr unsigned kLeastMiniShift = 2;

}  // namespace ksv_kit::documents::limits
