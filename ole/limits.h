// Every bound of what a compound document may cost. Sizes and counts in a document are claims:
// nothing is allocated for them before the file is seen to have the bytes. docs/security.md
// measures what the worst shapes known cost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace ksv::limits {

// Offsets have 31 bits; what lies behind cannot be reached.
constexpr uint32_t kHighestOffset = std::numeric_limits<int32_t>::max();
// Entries of the directory on a path from its first one; more fail, as a cycle does.
constexpr size_t kMostLevels = 256;
// A directory, and the table of mini sectors, have at most the bytes that the file has, or 2 GB.
constexpr uint64_t kLargestMiniFat = kHighestOffset;

// Memory for the pages of an open file.
constexpr size_t kPageSize = 4096;
constexpr size_t kPages = 64;
// Memory for what has been read ahead of an open stream.
constexpr uint32_t kStreamBuffer = 1024;

// Bytes read of all sections of a property set, which may lie upon each other; more is malformed.
constexpr int64_t sectionBytes(int64_t fileSize) { return 256 * 1024 + 2 * fileSize; }
constexpr uint32_t kLargestSection = uint32_t{std::numeric_limits<int32_t>::max()} - 2;
// Bytes taken of a text, before it is cut between characters.
constexpr size_t kLongestText = 1026;

}  // namespace ksv::limits
