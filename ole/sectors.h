// The sectors of a compound file and the table that chains them ([MS-CFB] 2.1 to
// 2.5). Whatever the shift of the sectors, the header has 512 bytes, and a sector of
// the table counts as 128 entries: this reader is made for sectors of 512 bytes, and
// callers rely on what it makes of others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "common/compound_format.h"
#include "ole/paged_file.h"

namespace ksv {

struct CompoundHeader {
  static constexpr size_t kDifatEntries = kHeaderTableSectors;

  uint32_t sectorSize;
  uint32_t miniSectorSize;
  uint32_t fatSectors;
  uint32_t firstDirectorySector;
  uint32_t miniStreamCutoff;
  uint32_t firstMiniFatSector;
  uint32_t miniFatSectors;
  uint32_t firstDifatSector;
  uint32_t difatSectors;
  uint32_t difat[kDifatEntries];

  // 0 when mini sectors are larger than sectors.
  uint32_t miniSectorsPerSector() const { return sectorSize / miniSectorSize; }
};

// Why a file is refused, for those who tell a person. offset is that of the value in
// the file that is wrong.
struct CompoundFault {
  const char* reason = "is not a compound document";
  int64_t offset = 0;
};

// Tells the fault; false, which is what whoever finds one returns.
inline bool refuse(CompoundFault& fault, const char* reason, int64_t offset) {
  fault = {reason, offset};
  return false;
}

// The header, or none when it is not one, or when it claims more than the file holds.
std::optional<CompoundHeader> readCompoundHeader(PagedFile& file, CompoundFault& fault);

// Follows a chain without remembering it, and tells when it has come back to where it
// was: such a chain never ends.
class LoopDetector {
 public:
  bool comesBackTo(uint32_t sector) {
    if (sector == mark_) return true;
    if (--left_ == 0) {
      stride_ *= 2;
      left_ = stride_;
      mark_ = sector;
    }
    return false;
  }
  // How many steps the last loop took.
  size_t length() const { return static_cast<size_t>(stride_ - left_ + 1); }

 private:
  uint64_t mark_ = ~uint64_t{0};  // no sector
  uint64_t stride_ = 1;
  uint64_t left_ = 1;
};

// The file allocation table. Only the places of its sectors are held; its entries are
// read when a chain asks for them.
class SectorTable {
 public:
  // Null when the table does not lie in the file whole.
  static std::unique_ptr<SectorTable> load(PagedFile& file, const CompoundHeader& header,
                                           CompoundFault& fault);

  // The sector behind this one in its chain; kFreeSector when the table does not
  // have it.
  uint32_t next(uint32_t sector) const;

  // Where a sector lies in the file. Offsets are signed 32-bit numbers that wrap;
  // what comes out negative is no place.
  std::optional<uint32_t> offsetOf(uint32_t sector, uint32_t offsetInSector = 0) const;

  // The same when the whole sector lies in the file.
  std::optional<uint32_t> offsetOfWhole(uint32_t sector) const;

 private:
  SectorTable(PagedFile& file, uint32_t sectorSize) : file_(file), sectorSize_(sectorSize) {}

  bool loadFromHeader(const CompoundHeader& header, CompoundFault& fault);
  bool loadFromDifat(const CompoundHeader& header, CompoundFault& fault);
  bool add(uint32_t sector, int64_t namedAt, CompoundFault& fault);

  PagedFile& file_;
  const uint32_t sectorSize_;
  std::vector<uint32_t> offsets_;  // of the table's sectors, as far as they can be asked for
};

}  // namespace ksv
