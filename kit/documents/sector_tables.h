// The sectors of a compound file, and the tables that chain them and the mini sectors ([MS-CFB]
// 2.3 to 2.5). Of a table only what a chain asks for is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "kit/documents/chain.h"
#include "kit/documents/damage.h"
#include "kit/documents/document_header.h"
#include "kit/documents/paged_bytes.h"
#include "kit/documents/sector_set.h"

namespace ksv_kit::documents {

class SectorTable : public LinkTable {
 public:
  // All have to stay.
  SectorTable(PagedBytes& bytes, const Header& header, DamageList& damages)
      : bytes_(bytes),
        header_(header),
        damages_(damages),
        nextDifat_(hasList(header) ? header.firstDifatSector : ksv::kEndOfChain),
        nextDifatNamedAt_(ksv::compound_header::kFirstDifatSector) {}

  std::optional<uint32_t> next(uint32_t sector) override;
  uint64_t placeOf(uint32_t sector) override;

  // Where a sector begins in the file, whether the file has it or not. The first stands behind the
  // header, which takes a sector, or 512 bytes where sectors are smaller.
  uint64_t offsetOf(uint32_t sector) const {
    const uint64_t size = header_.sectorSize();
    return (size < ksv::kHeaderSize ? ksv::kHeaderSize : size) + sector * size;
  }
  uint32_t linksPerSector() const { return static_cast<uint32_t>(header_.sectorSize() / 4); }

  // The sectors of the table, in its order, and those of the list of them behind the header; each
  // read to its end. One that is missing is kFreeSector.
  const std::vector<uint32_t>& tableSectors();
  const std::vector<uint32_t>& difatSectors();

 private:
  static bool hasList(const Header& header) {
    return header.difatSectors != 0 || header.fatSectors > ksv::kHeaderTableSectors;
  }

  std::optional<uint32_t> tableSector(size_t index);
  bool readOnInList();
  bool endList(const char* reason);
  std::optional<uint64_t> placeInTable(uint32_t sector);

  PagedBytes& bytes_;
  const Header& header_;
  DamageList& damages_;
  std::vector<uint32_t> listed_;  // of the table, beyond those of the header
  std::vector<uint32_t> difat_;
  SectorSet seenDifat_;
  uint32_t nextDifat_;
  uint64_t nextDifatNamedAt_;
  std::vector<uint32_t> all_;
  bool isComplete_ = false;
};

class MiniTable : public LinkTable {
 public:
  // All have to stay.
  MiniTable(PagedBytes& bytes, SectorTable& sectors, const Header& header, DamageList& damages)
      : bytes_(bytes),
        sectors_(sectors),
        chain_(sectors, damages,
               {header.miniFatSectors == 0 ? ksv::kEndOfChain : header.firstMiniFatSector,
                ksv::compound_header::kFirstMiniFatSector}) {}

  std::optional<uint32_t> next(uint32_t miniSector) override;
  uint64_t placeOf(uint32_t miniSector) override;

  Chain& chain() { return chain_; }

 private:
  std::optional<uint64_t> placeInTable(uint32_t miniSector);

  PagedBytes& bytes_;
  SectorTable& sectors_;
  Chain chain_;
};

}  // namespace ksv_kit::documents
