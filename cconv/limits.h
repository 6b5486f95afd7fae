// Every bound of what rule files, code tables and converters may cost a process. No charset
// directory, however it was made, costs more time or memory than in proportion to its bytes;
// what a process remembers for speed has an end. docs/security.md measures both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace ksv::limits {

// ---- Rule files. They nest nothing: elements are found by searching, entities name files and
// are never expanded, and the files named by a charset file name no further ones. ----

// Longest name of a charset, a subset or a table file, terminator included; a longer one refuses
// its file.
constexpr size_t kNameSize = 260;
// Larger files are not read. Files of the directory are counted in 31 bits.
constexpr int64_t kLargestFile = std::numeric_limits<int32_t>::max();
// What is searched for in a rule file; a longer entity name is declared nowhere.
constexpr size_t kLongestPattern = 511;
// Items of each list: the counts of the rule model have 16 bits.
constexpr size_t kMostItems = 65535;
// Characters compared in all to find where a charset file declares its entities: enough for 256
// that are searched for in all of the file, and in one of up to 32 Ki characters for as many as
// it can hold. A file that asks for more is refused as one that does not declare them.
constexpr uint64_t entityComparisons(size_t characters) {
  return (uint64_t{1} << 24) + 256 * uint64_t{characters};
}

// ---- Code tables. ----

// Digits of one number in a table's text; the next one begins another number.
constexpr int kMostDigits = 64;
// Blocks of keys, each of the same size.
constexpr uint32_t kMostBlocks = kMostItems;
// Lines of a table of a packed directory, where a few bytes can stand for many lines: four times as
// many as the largest shipped one has.
constexpr uint32_t kMostPackedLines = uint32_t{1} << 22;
// Values stand in pages of 16: a key far from all others costs 64 bytes and its place in the index.

// ---- What is remembered for speed, in a process. Behind these the engine converts. ----

// Names of charsets that are found in a few operations: twice as many slots as names keep a
// search short, and all of it takes 8 KB. Charsets of a large directory fill a quarter.
constexpr size_t kLongestQuickName = 16;
constexpr size_t kMostQuickNames = 128;
constexpr size_t kSlotsOfQuickNames = 256;
// What a charset writes for every code of Unicode: 8.9 MB a charset, when all are asked for, in
// pages of 256 codes.
constexpr uint32_t kRememberedCodes = 0x110000;
// A quarter of the places stay free. With up to 54 KB of page pointers each, 21 MB; all
// charsets of the directory with one set of options, and more than any process has been
// seen to use.
constexpr size_t kPlacesOfConverters = 512;
constexpr size_t kMostConverters = 384;
// Pages of direct tables: 16 MB.
constexpr uint32_t kMostPages = 8192;
// Short tables: 33 MB, of which only what is used takes memory.
constexpr uint32_t kMostShortTables = 128;
// Tables of character traces: 8 MB.
constexpr uint32_t kMostTraceTables = 64;

}  // namespace ksv::limits
