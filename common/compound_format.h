// Where things stand in a compound file ([MS-CFB] 2), for all who read or write one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ksv {

inline constexpr uint8_t kCompoundSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

inline constexpr uint32_t kEndOfChain = 0xFFFFFFFE;
inline constexpr uint32_t kFreeSector = 0xFFFFFFFF;  // no sector, and no directory entry
inline constexpr uint32_t kFatSector = 0xFFFFFFFD;
inline constexpr uint32_t kDifatSector = 0xFFFFFFFC;

inline constexpr uint32_t kHeaderSize = 512;
inline constexpr uint32_t kDirectoryEntrySize = 128;

// The sectors of the table that the header itself names.
inline constexpr size_t kHeaderTableSectors = 109;

// Offsets in the header.
namespace compound_header {
inline constexpr size_t kMinorVersion = 24;
inline constexpr size_t kMajorVersion = 26;
inline constexpr size_t kByteOrder = 28;
inline constexpr size_t kSectorShift = 30;
inline constexpr size_t kMiniSectorShift = 32;
inline constexpr size_t kDirectorySectorCount = 40;
inline constexpr size_t kFatSectorCount = 44;
inline constexpr size_t kFirstDirectorySector = 48;
inline constexpr size_t kTransaction = 52;
inline constexpr size_t kMiniStreamCutoff = 56;
inline constexpr size_t kFirstMiniFatSector = 60;
inline constexpr size_t kMiniFatSectorCount = 64;
inline constexpr size_t kFirstDifatSector = 68;
inline constexpr size_t kDifatSectorCount = 72;
inline constexpr size_t kDifat = 76;
}  // namespace compound_header

// Offsets in an entry of the directory.
namespace compound_entry {
inline constexpr size_t kNameLength = 64;
inline constexpr size_t kType = 66;
inline constexpr size_t kColour = 67;
inline constexpr size_t kLeft = 68;
inline constexpr size_t kRight = 72;
inline constexpr size_t kChild = 76;
inline constexpr size_t kClassId = 80;
inline constexpr size_t kStateBits = 96;
inline constexpr size_t kCreated = 100;
inline constexpr size_t kModified = 108;
inline constexpr size_t kStartingSector = 116;
inline constexpr size_t kStreamSize = 120;
}  // namespace compound_entry

// What an entry is.
namespace compound_type {
inline constexpr uint8_t kUnused = 0;
inline constexpr uint8_t kStorage = 1;
inline constexpr uint8_t kStream = 2;
inline constexpr uint8_t kRoot = 5;
}  // namespace compound_type

}  // namespace ksv
