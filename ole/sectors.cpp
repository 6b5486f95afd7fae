#include "ole/sectors.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "common/little_endian.h"
#include "ole/limits.h"

namespace ksv {
namespace {

using namespace compound_header;

constexpr uint32_t kEntriesPerTableSector = 128;

// A chain reaches a sector of the table by a signed 16-bit number: those behind
// these are counted, and have to lie in the file, but are never asked for.
constexpr size_t kReachableTableSectors = 32768;

// A shift that no signed 32-bit size can have exceeds every file.
std::optional<uint32_t> sizeOfShift(uint16_t shift, int64_t fileSize) {
  if (shift >= 31) return std::nullopt;
  const uint32_t size = uint32_t{1} << shift;
  return size <= fileSize ? std::optional(size) : std::nullopt;
}

}  // namespace

std::optional<CompoundHeader> readCompoundHeader(PagedFile& file, CompoundFault& fault) {
  std::array<uint8_t, kHeaderSize> bytes;
  const size_t count = file.read(0, bytes.data(), bytes.size());
  if (count < sizeof kCompoundSignature ||
      std::memcmp(bytes.data(), kCompoundSignature, sizeof kCompoundSignature) != 0) {
    return std::nullopt;
  }
  if (count < bytes.size()) {
    refuse(fault, "ends inside the header", static_cast<int64_t>(count));
    return std::nullopt;
  }
  const auto sectorSize = sizeOfShift(wordAt(bytes.data() + kSectorShift), file.size());
  const auto miniSectorSize = sizeOfShift(wordAt(bytes.data() + kMiniSectorShift), file.size());
  if (!sectorSize || !miniSectorSize) {
    refuse(fault, "claims sectors that are larger than the file",
           sectorSize ? kMiniSectorShift : kSectorShift);
    return std::nullopt;
  }
  const auto dword = [&](size_t at) { return dwordAt(bytes.data() + at); };
  CompoundHeader header = {};
  header.sectorSize = *sectorSize;
  header.miniSectorSize = *miniSectorSize;
  header.fatSectors = dword(kFatSectorCount);
  header.firstDirectorySector = dword(kFirstDirectorySector);
  header.miniStreamCutoff = dword(kMiniStreamCutoff);
  header.firstMiniFatSector = dword(kFirstMiniFatSector);
  header.miniFatSectors = dword(kMiniFatSectorCount);
  header.firstDifatSector = dword(kFirstDifatSector);
  header.difatSectors = dword(kDifatSectorCount);
  for (size_t i = 0; i < CompoundHeader::kDifatEntries; ++i) {
    header.difat[i] = dword(kDifat + 4 * i);
  }
  if (header.fatSectors > file.size()) {
    refuse(fault, "claims a sector table that is larger than the file", kFatSectorCount);
    return std::nullopt;
  }
  return header;
}

std::unique_ptr<SectorTable> SectorTable::load(PagedFile& file, const CompoundHeader& header,
                                               CompoundFault& fault) {
  std::unique_ptr<SectorTable> table(new SectorTable(file, header.sectorSize));
  table->offsets_.reserve(std::min<size_t>(header.fatSectors, kReachableTableSectors));
  if (!table->loadFromHeader(header, fault)) return nullptr;
  if (header.fatSectors > CompoundHeader::kDifatEntries && !table->loadFromDifat(header, fault)) {
    return nullptr;
  }
  return table;
}

bool SectorTable::loadFromHeader(const CompoundHeader& header, CompoundFault& fault) {
  const size_t count = std::min<size_t>(header.fatSectors, CompoundHeader::kDifatEntries);
  for (size_t i = 0; i < count; ++i) {
    if (!add(header.difat[i], static_cast<int64_t>(kDifat + 4 * i), fault)) return false;
  }
  return true;
}

// The sectors of the list may come back to an earlier one: it ends when all sectors of
// the table are named, of which there are no more than the file has bytes.
bool SectorTable::loadFromDifat(const CompoundHeader& header, CompoundFault& fault) {
  const bool isNone = header.firstDifatSector >= kDifatSector;
  if (isNone || header.difatSectors == 0) {
    return refuse(fault, "lacks the rest of its sector table",
                  static_cast<int64_t>(isNone ? kFirstDifatSector : kDifatSectorCount));
  }
  // The number of entries is kept in 16 bits: none is left of the largest sectors.
  const uint32_t entries = static_cast<uint16_t>(sectorSize_ / 4);
  if (entries < 2) return refuse(fault, "has sectors of a size that is not read", kSectorShift);
  uint32_t left = header.fatSectors - static_cast<uint32_t>(CompoundHeader::kDifatEntries);
  uint32_t sector = header.firstDifatSector;
  int64_t namedAt = kFirstDifatSector;
  for (;;) {
    const std::optional<uint32_t> offset = offsetOfWhole(sector);
    if (!offset) return refuse(fault, "lacks a sector that lists its sector table", namedAt);
    for (uint32_t i = 0; i + 1 < entries; ++i, --left) {
      if (left == 0) return true;
      const int64_t at = int64_t{*offset} + 4 * int64_t{i};
      if (!add(file_.dword(at), at, fault)) return false;
    }
    if (left == 0) return true;
    namedAt = int64_t{*offset} + 4 * (int64_t{entries} - 1);
    const uint32_t next = file_.dword(namedAt);
    // Where there is no such sector the header is found; it must not name itself.
    if (next == sector && next == kFreeSector) {
      return refuse(fault, "lacks a sector that lists its sector table", namedAt);
    }
    sector = next;
  }
}

bool SectorTable::add(uint32_t sector, int64_t namedAt, CompoundFault& fault) {
  const std::optional<uint32_t> offset = offsetOfWhole(sector);
  if (!offset) return refuse(fault, "lacks a sector of its sector table", namedAt);
  if (offsets_.size() < kReachableTableSectors) offsets_.push_back(*offset);
  return true;
}

uint32_t SectorTable::next(uint32_t sector) const {
  const int16_t index = static_cast<int16_t>(sector / kEntriesPerTableSector);
  if (index < 0 || static_cast<size_t>(index) >= offsets_.size()) return kFreeSector;
  const uint32_t inSector = sector % kEntriesPerTableSector * 4;
  if (inSector >= sectorSize_) return kFreeSector;
  return file_.dword(int64_t{offsets_[static_cast<size_t>(index)]} + inSector);
}

std::optional<uint32_t> SectorTable::offsetOf(uint32_t sector, uint32_t offsetInSector) const {
  const uint32_t offset = sector * sectorSize_ + kHeaderSize + offsetInSector;
  if (offset > limits::kHighestOffset) return std::nullopt;
  return offset;
}

std::optional<uint32_t> SectorTable::offsetOfWhole(uint32_t sector) const {
  const std::optional<uint32_t> offset = offsetOf(sector);
  return offset && file_.holds(*offset, sectorSize_) ? offset : std::nullopt;
}

}  // namespace ksv
